// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailwriter.h"

#include <QDir>
#include <QImageWriter>
#include <QSaveFile>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int Quality = 85;
constexpr QSize LargestSize(960, 1080);
constexpr int Threads = 2;
} // namespace

QSize thumbnailSize(QSize picture)
{
    const bool fits = picture.width() <= LargestSize.width() && picture.height() <= LargestSize.height();
    return fits ? picture : picture.scaled(LargestSize, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

QString writeThumbnail(const QString &uri, const ThumbnailFiles::Stamp &stamp, const QImage &picture)
{
    QDir().mkpath(ThumbnailFiles::folder());
    QSaveFile file(ThumbnailFiles::path(uri));
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    const QSize size = thumbnailSize(picture.size());
    QImageWriter writer(&file, "jpeg");
    writer.setQuality(Quality);
    writer.setText(ThumbnailFiles::uriKey(), uri);
    writer.setText(ThumbnailFiles::stampKey(), stamp.toString());
    const bool encoded = writer.write(
        size == picture.size() ? picture
                               : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    if (!encoded)
        return writer.errorString();
    return file.commit() ? QString() : file.errorString();
}

ThumbnailWriter::ThumbnailWriter(QObject *parent) : QObject(parent)
{
    m_threads.setMaxThreadCount(Threads);
}

ThumbnailWriter::~ThumbnailWriter()
{
    m_threads.waitForDone();
}

void ThumbnailWriter::write(const QString &uri, const ThumbnailFiles::Stamp &stamp, const QImage &picture)
{
    m_threads.start([this, uri, stamp, picture] {
        const QString error = writeThumbnail(uri, stamp, picture);
        // The destructor waits for this thread, so the object is there.
        QMetaObject::invokeMethod(
            this, [this, uri, error] { Q_EMIT written(uri, error); }, Qt::QueuedConnection);
    });
}
