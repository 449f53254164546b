// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>

// What tells that two paths, now and later, are the same file.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 modifiedMs = 0; // since the epoch
    QByteArray digest; // of size, head and tail; empty until it was read

    [[nodiscard]] static std::optional<FileIdentity> ofFile(const QString &path); // without digest
    // One word, as it is kept in the store and in the journal.
    [[nodiscard]] QString toText() const;
    [[nodiscard]] static std::optional<FileIdentity> fromText(QStringView text);

    // Nothing was written to it since.
    [[nodiscard]] bool sameState(const FileIdentity &other) const
    {
        return size == other.size && modifiedMs == other.modifiedMs;
    }
    [[nodiscard]] bool sameInode(const FileIdentity &other) const
    {
        return device == other.device && inode == other.inode;
    }
    [[nodiscard]] bool sameContent(const FileIdentity &other) const
    {
        return size == other.size && !digest.isEmpty() && digest == other.digest;
    }
    friend bool operator==(const FileIdentity &, const FileIdentity &) = default;
};

// Reads head and tail. Empty when the file cannot be read.
[[nodiscard]] QByteArray contentDigest(const QString &path);
// The device that a file or folder is on; 0 when it is not there.
[[nodiscard]] quint64 deviceOf(const QString &path);
