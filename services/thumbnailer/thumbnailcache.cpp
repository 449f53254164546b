// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailcache.h"

#include "thumbnailer.h"
#include "thumbnailfiles.h"
#include "thumbnailwriter.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace {

bool isBelow(const QString &uri, const QStringList &bases)
{
    const QString file = ThumbnailFiles::localFile(uri);
    return std::any_of(bases.begin(), bases.end(), [&file](const QString &base) {
        const QString folder = ThumbnailFiles::localFile(base);
        return !folder.isEmpty()
            && (file == folder || file.startsWith(folder.endsWith(u'/') ? folder : folder + u'/'));
    });
}

// A copy is the thumbnail of another file, and says so: it is written anew.
void copyThumbnail(const QString &from, const QString &to)
{
    const QImage picture(ThumbnailFiles::path(from));
    const ThumbnailFiles::Stamp stamp = ThumbnailFiles::stampOf(ThumbnailFiles::localFile(to));
    if (!picture.isNull())
        static_cast<void>(writeThumbnail(to, stamp, picture));
}

} // namespace

ThumbnailCache::ThumbnailCache(Thumbnailer &thumbnailer, QObject *parent)
    : QObject(parent),
      m_thumbnailer(thumbnailer)
{
}

void ThumbnailCache::Delete(const QStringList &uris)
{
    for (const QString &uri : uris) {
        QFile::remove(ThumbnailFiles::path(uri));
        m_thumbnailer.forgetFailure(uri);
    }
}

void ThumbnailCache::Copy(const QStringList &fromUris, const QStringList &toUris)
{
    for (qsizetype i = 0; i < qMin(fromUris.size(), toUris.size()); ++i)
        copyThumbnail(fromUris.at(i), toUris.at(i));
}

void ThumbnailCache::Move(const QStringList &fromUris, const QStringList &toUris)
{
    Copy(fromUris, toUris);
    Delete(fromUris.first(qMin(fromUris.size(), toUris.size())));
}

void ThumbnailCache::Cleanup(const QStringList &baseUris, uint since)
{
    const QFileInfoList thumbnails = QDir(ThumbnailFiles::folder()).entryInfoList({u"*.jpeg"_s}, QDir::Files);
    for (const QFileInfo &thumbnail : thumbnails) {
        if (thumbnail.lastModified().toSecsSinceEpoch() >= qint64(since))
            continue;
        const QString uri = ThumbnailFiles::originOf(thumbnail.filePath()).uri;
        if (!uri.isEmpty() && isBelow(uri, baseUris))
            Delete({uri});
    }
}
