// SPDX-License-Identifier: GPL-3.0-or-later
#include "pausedstills.h"

#include "medialog.h"

#include <platform/system/filereplacement.h>

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

#include <cerrno>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int PrefixLength = 32;

QString prefix(const QString &uri)
{
    const QByteArray hash = QCryptographicHash::hash(uri.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toHex().left(PrefixLength));
}

QString nameOf(const QString &uri, MediaTime time)
{
    return u"%1-%2.jpg"_s.arg(prefix(uri)).arg(time.count());
}

QFileInfo localFile(const QString &uri)
{
    const QUrl url = QUrl::fromEncoded(uri.toUtf8());
    return url.isLocalFile() ? QFileInfo(url.toLocalFile()) : QFileInfo();
}

} // namespace

PausedStills::PausedStills()
    : PausedStills(QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + u"/paused-stills"_s)
{
}

PausedStills::PausedStills(const QString &directory) : m_directory(directory) { }

void PausedStills::keep(const QString &uri, MediaTime time, const QString &imageFile,
                        const QStringList &recent)
{
    const QString name = nameOf(uri, time);
    const QString path = m_directory + u'/' + name;
    QFile image(imageFile);
    const QByteArray contents = image.open(QIODevice::ReadOnly) ? image.readAll() : QByteArray();
    // A still that a power failure takes away is decoded again.
    const int error = contents.isEmpty() ? EIO : replaceFile(path, contents, OnDisk::Nothing);
    if (error != 0 && !std::exchange(m_failing, true))
        qCWarning(lcMedia, "%s: %s", qUtf8Printable(path), qUtf8Printable(qt_error_string(error)));
    m_failing = error != 0;
    clean(recent, name);
}

QImage PausedStills::at(const QString &uri, MediaTime time) const
{
    const QFileInfo still(m_directory + u'/' + nameOf(uri, time));
    if (!still.exists() || localFile(uri).lastModified() > still.lastModified())
        return {};
    return QImage(still.filePath());
}

void PausedStills::clean(const QStringList &recent, const QString &newest) const
{
    removeUnfinished(m_directory);
    QStringList kept;
    for (const QString &uri : recent.first(std::min<qsizetype>(recent.size(), Capacity))) {
        const QFileInfo file = localFile(uri);
        if (file.filePath().isEmpty() || file.exists())
            kept.append(prefix(uri));
    }
    const QString ours = newest.left(PrefixLength);
    const QStringList names = QDir(m_directory).entryList({u"*.jpg"_s}, QDir::Files);
    for (const QString &name : names) {
        const QString owner = name.left(PrefixLength);
        if (name != newest && (owner == ours || !kept.contains(owner)))
            QFile::remove(m_directory + u'/' + name);
    }
}
