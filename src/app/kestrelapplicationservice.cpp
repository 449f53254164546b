// SPDX-License-Identifier: GPL-3.0-or-later
#include "kestrelapplicationservice.h"

#include "platform/sparql/fileuri.h"

KestrelApplicationService::KestrelApplicationService(QObject *parent)
    : toolkit::ApplicationService(QStringLiteral("com.harrow.Kestrel"), parent)
{
    holdCalls();
}

void KestrelApplicationService::launch()
{
    Q_EMIT relaunch();
}

void KestrelApplicationService::open(const QStringList &uris)
{
    // Escaped already, by rules that differ from one program to the next.
    const QString address = canonicalFileUri(uris.value(0));
    if (address.isEmpty())
        launch();
    else
        Q_EMIT openRequested(address);
}
