// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailpaths.h"

#include "videoconstants.h"

#include <platform/thumbs/thumbnailname.h>

#include <QDir>

QString ThumbnailPaths::defaultFolder(const QString &flavor)
{
    return QDir::homePath() + u'/' + THUMBNAIL_DIR + u'/' + flavor;
}

QString ThumbnailPaths::pauseFolder(const QString &flavor)
{
    const QString folder = QDir::homePath() + u'/' + PAUSE_THUMBNAIL_DIR + u'/' + flavor;
    if (!QDir(folder).exists())
        QDir().mkpath(folder);
    return folder;
}

QString ThumbnailPaths::defaultPath(const QString &url, const QString &flavor)
{
    return defaultFolder(flavor) + u'/' + QString::fromLatin1(thumbnailName(url)) + THUMBNAIL_SUFFIX;
}

QString ThumbnailPaths::pausePath(const QString &url, const QString &flavor)
{
    return pauseFolder(flavor) + u'/' + QString::fromLatin1(thumbnailName(url)) + PAUSE_THUMBNAIL_SUFFIX;
}
