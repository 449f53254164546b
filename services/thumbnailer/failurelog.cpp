// SPDX-License-Identifier: GPL-3.0-or-later
#include "failurelog.h"

#include "thumbnailerlog.h"

#include "platform/thumbs/thumbnailname.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

FailureLog::FailureLog()
    : m_folder(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
               + u"/kestrel/failed-thumbnails"_s)
{
}

QString FailureLog::path(const QString &uri) const
{
    return m_folder + u'/' + QString::fromLatin1(thumbnailName(uri));
}

// The first line is the stamp, the second the message.
std::optional<QString> FailureLog::find(const QString &uri, const ThumbnailFiles::Stamp &stamp) const
{
    QFile file(path(uri));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QString text = QString::fromUtf8(file.read(4096));
    if (text.section(u'\n', 0, 0) != stamp.toString())
        return std::nullopt;
    return text.section(u'\n', 1, 1);
}

void FailureLog::add(const QString &uri, const ThumbnailFiles::Stamp &stamp, const QString &message)
{
    QDir().mkpath(m_folder);
    QSaveFile file(path(uri));
    if (!file.open(QIODevice::WriteOnly)
        || file.write((stamp.toString() + u'\n' + message + u'\n').toUtf8()) < 0 || !file.commit())
        qCWarning(thumbnailerLog, "%ls: %ls", qUtf16Printable(file.fileName()),
                  qUtf16Printable(file.errorString()));
}

void FailureLog::remove(const QString &uri)
{
    QFile::remove(path(uri));
}
