// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "thumbnailfiles.h"

#include <QImage>
#include <QObject>
#include <QThreadPool>

// Encodes and writes thumbnails beside the event loop: waiting for a disk holds up no request.
class ThumbnailWriter : public QObject
{
    Q_OBJECT

public:
    explicit ThumbnailWriter(QObject *parent = nullptr);
    ~ThumbnailWriter() override;

    void write(const QString &uri, const ThumbnailFiles::Stamp &stamp, const QImage &picture);

Q_SIGNALS:
    // `error` is empty when the thumbnail is on the disk.
    void written(const QString &uri, const QString &error);

private:
    QThreadPool m_threads;
};

// At most as large as any page shows it on a screen of twice the usual density.
[[nodiscard]] QSize thumbnailSize(QSize picture);
// Replaces the thumbnail of `uri`; the message when that failed, else empty. Callable from any thread.
[[nodiscard]] QString writeThumbnail(const QString &uri, const ThumbnailFiles::Stamp &stamp,
                                     const QImage &picture);
