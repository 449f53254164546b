// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "recordedtimes.h"
#include "videorecord.h"

#include <QHash>
#include <QMap>
#include <QMultiHash>
#include <QStringList>

// Every video that the store holds, found by identifier, path or file identity.
class VideoTable
{
public:
    // Adds the record or replaces the one of the same urn.
    void put(const VideoRecord &record);
    void remove(const QString &urn);
    void clear();

    [[nodiscard]] int size() const { return int(m_records.size()); }
    // Valid until the next put(), remove() or clear(); null when unknown.
    [[nodiscard]] const VideoRecord *byUrn(const QString &urn) const;
    [[nodiscard]] const VideoRecord *byPath(const QString &path) const;
    [[nodiscard]] const VideoRecord *byId(int id) const;
    // All videos below a folder, by path.
    [[nodiscard]] QStringList urnsUnder(const QString &folder) const;
    [[nodiscard]] QStringList urnsOfInode(const FileIdentity &identity) const;
    [[nodiscard]] QStringList urnsOfContent(const FileIdentity &identity) const;
    // Some video whose digest is known has this size.
    [[nodiscard]] bool hasDigestOfSize(qint64 size) const { return m_digestsBySize.contains(size); }
    [[nodiscard]] const RecordedTimes &recordedTimes() const { return m_idsByCreation; }
    [[nodiscard]] QStringList urns() const { return m_records.keys(); }

private:
    using Inode = std::pair<quint64, quint64>;

    QHash<QString, VideoRecord> m_records;
    QMap<QString, QString> m_urnByPath;
    QHash<int, QString> m_urnById;
    RecordedTimes m_idsByCreation;
    QMultiHash<Inode, QString> m_urnsByInode;
    QMultiHash<QByteArray, QString> m_urnsByDigest;
    QHash<qint64, int> m_digestsBySize; // how many
};
