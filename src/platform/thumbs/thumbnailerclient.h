// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <memory>

// Client of a freedesktop thumbnailer (org.freedesktop.thumbnails.Thumbnailer1). Asynchronous throughout.
class ThumbnailerClient : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Asks for thumbnails of `urls` in `flavor`; `mimeTypes` has one entry a URL (empty when unknown).
    virtual void request(const QList<QUrl> &urls, const QStringList &mimeTypes, const QString &flavor) = 0;
    // Drops outstanding requests. Work that the service has begun is finished and still reported.
    virtual void cancel() = 0;
    // Removes the thumbnails of these URLs in every flavour.
    virtual void remove(const QList<QUrl> &urls) = 0;

    // The client that the process uses: the session's thumbnailer (started when it is missing), or what
    // setFactory() set (tests).
    [[nodiscard]] static std::unique_ptr<ThumbnailerClient> create();
    using Factory = std::unique_ptr<ThumbnailerClient> (*)();
    static void setFactory(Factory factory);

Q_SIGNALS:
    void thumbnail(QUrl resourceUrl, QUrl thumbnailUrl);
    void error(QString message, QUrl resourceUrl);
};
