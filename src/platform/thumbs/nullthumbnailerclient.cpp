// SPDX-License-Identifier: GPL-3.0-or-later
#include "nullthumbnailerclient.h"

using namespace Qt::Literals::StringLiterals;

void NullThumbnailerClient::request(const QList<QUrl> &urls, const QStringList &, const QString &)
{
    if (m_waiting.isEmpty())
        QMetaObject::invokeMethod(this, &NullThumbnailerClient::answer, Qt::QueuedConnection);
    m_waiting += urls;
}

void NullThumbnailerClient::answer()
{
    const QList<QUrl> urls = std::exchange(m_waiting, {});
    for (const QUrl &url : urls)
        Q_EMIT error(u"no thumbnailer"_s, url);
}

void NullThumbnailerClient::cancel()
{
    m_waiting.clear();
}

void NullThumbnailerClient::remove(const QList<QUrl> &) { }
