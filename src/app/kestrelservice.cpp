// SPDX-License-Identifier: GPL-3.0-or-later
#include "kestrelservice.h"

void KestrelService::play(const QStringList &urlList)
{
    play(urlList, 0);
}

void KestrelService::play(const QStringList &urlList, uint position)
{
    if (!urlList.isEmpty())
        Q_EMIT startPlayFromPosition(urlList.constFirst(), position);
}

void KestrelService::launch()
{
    Q_EMIT raise();
    Q_EMIT launched();
}

void KestrelService::launch(const QStringList &urlList)
{
    if (urlList.isEmpty())
        return;
    play(urlList, 0);
    Q_EMIT launched();
}

void KestrelService::cancel()
{
    Q_EMIT cancelled();
}
