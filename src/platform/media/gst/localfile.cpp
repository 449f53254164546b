// SPDX-License-Identifier: GPL-3.0-or-later
#include "localfile.h"

#include "playableaddress.h"

#include <QFile>
#include <QUrl>

#include <sys/stat.h>

namespace {

constexpr qint64 HeadSize = 4096; // what may stand before the first element of a document included

} // namespace

LocalFile localFile(const QString &uri)
{
    const QString path = QUrl::fromEncoded(playableAddress(uri)).toLocalFile();
    struct stat facts = {};
    if (::stat(QFile::encodeName(path).constData(), &facts) != 0 || S_ISDIR(facts.st_mode))
        return LocalFile::Ordinary;
    if (!S_ISREG(facts.st_mode))
        return LocalFile::NoFile;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return LocalFile::Ordinary;
    const QByteArray head = file.read(HeadSize);
    const bool list = head.startsWith("#EXTM3U") || head.contains("<MPD");
    return list ? LocalFile::Playlist : LocalFile::Ordinary;
}
