// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailfiles.h"

#include "platform/thumbs/thumbnailname.h"

#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

QString ThumbnailFiles::flavor()
{
    return u"video-grid"_s;
}

QString ThumbnailFiles::folder()
{
    return thumbnailFolder(flavor());
}

QString ThumbnailFiles::path(const QString &uri)
{
    return thumbnailPath(uri, flavor());
}

QString ThumbnailFiles::localFile(const QString &uri)
{
    const QUrl url = QUrl::fromEncoded(uri.toUtf8(), QUrl::TolerantMode);
    const bool local = url.isLocalFile() && (url.host().isEmpty() || url.host() == u"localhost"_s);
    return local ? url.path(QUrl::FullyDecoded) : QString();
}

QString ThumbnailFiles::Stamp::toString() const
{
    return u"%1 %2"_s.arg(size).arg(modifiedMs);
}

ThumbnailFiles::Stamp ThumbnailFiles::stampOf(const QString &file)
{
    const QFileInfo info(file);
    if (!info.exists())
        return {};
    return {info.size(), info.lastModified().toMSecsSinceEpoch()};
}

ThumbnailFiles::Origin ThumbnailFiles::originOf(const QString &thumbnail)
{
    if (!QFileInfo::exists(thumbnail))
        return {};
    const QImageReader reader(thumbnail);
    return {reader.text(uriKey()), reader.text(stampKey())};
}

// JPEG comments; a key cannot hold a colon there.
QString ThumbnailFiles::uriKey()
{
    return u"Thumb-URI"_s;
}

QString ThumbnailFiles::stampKey()
{
    return u"Thumb-Stamp"_s;
}
