// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "thumbnailerclient.h"

// No thumbnailer: every request ends as an error, from the event loop as a service's answer would.
class NullThumbnailerClient : public ThumbnailerClient
{
    Q_OBJECT

public:
    using ThumbnailerClient::ThumbnailerClient;

    void request(const QList<QUrl> &urls, const QStringList &mimeTypes, const QString &flavor) override;
    void cancel() override;
    void remove(const QList<QUrl> &urls) override;

private:
    void answer();

    QList<QUrl> m_waiting;
};
