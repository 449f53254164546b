// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileidentity.h"

#include <QCryptographicHash>
#include <QFile>
#include <QList>

#include <sys/stat.h>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr qint64 s_digestedBytes = 64 * 1024; // of the head and of the tail
}

std::optional<FileIdentity> FileIdentity::ofFile(const QString &path)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return FileIdentity{status.st_dev,
                        status.st_ino,
                        status.st_size,
                        qint64(status.st_mtim.tv_sec) * 1000 + status.st_mtim.tv_nsec / 1000000,
                        {}};
}

QString FileIdentity::toText() const
{
    return u"%1:%2:%3:%4:%5"_s.arg(device)
        .arg(inode)
        .arg(size)
        .arg(modifiedMs)
        .arg(QLatin1StringView(digest));
}

std::optional<FileIdentity> FileIdentity::fromText(QStringView text)
{
    const QList<QStringView> fields = text.split(u':');
    if (fields.size() != 5)
        return std::nullopt;
    bool ok[4] = {};
    const FileIdentity identity{fields[0].toULongLong(&ok[0]), fields[1].toULongLong(&ok[1]),
                                fields[2].toLongLong(&ok[2]), fields[3].toLongLong(&ok[3]),
                                fields[4].toLatin1()};
    if (!ok[0] || !ok[1] || !ok[2] || !ok[3])
        return std::nullopt;
    return identity;
}

QByteArray contentDigest(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(QByteArray::number(file.size()));
    hash.addData(file.read(s_digestedBytes));
    if (file.size() > s_digestedBytes) {
        file.seek(qMax(s_digestedBytes, file.size() - s_digestedBytes));
        hash.addData(file.read(s_digestedBytes));
    }
    return hash.result().toHex();
}

quint64 deviceOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? quint64(status.st_dev) : 0;
}
