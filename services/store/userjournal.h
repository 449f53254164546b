// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "fileidentity.h"

#include <QFile>
#include <QHash>
#include <QJsonObject>
#include <QString>

#include <optional>

// What a person made of a video; it cannot be read from the file again.
struct UserData
{
    QString urn;
    QString url;
    FileIdentity identity;
    std::optional<QString> title; // when edited
    qint64 runTime = 0;
    int playCount = 0;
    QString lastPlayed; // ISO 8601

    friend bool operator==(const UserData &, const UserData &) = default;
};

// A file that did a worker harm or is no video, as long as it is not written to again.
struct BrokenFile
{
    qint64 size = 0;
    qint64 modifiedMs = 0;
    QString reason;
};

// A small file beside the database, one line of JSON a change, later lines replacing earlier ones. It
// outlives the database: a rebuilt one gets titles, positions and counts from here.
class UserJournal
{
public:
    explicit UserJournal(const QString &path);

    // Reads the file and writes it anew when most of its lines are outdated. Lines that cannot be read are
    // left out.
    bool open();

    [[nodiscard]] const QHash<QString, UserData> &entries() const { return m_entries; } // by urn
    [[nodiscard]] const UserData *find(const QString &urn) const;
    // The entry that belongs to a file whose video is not in the store; null when there is none.
    [[nodiscard]] const UserData *findForFile(const QString &url, const FileIdentity &identity) const;

    // It keeps something of a file of this size.
    [[nodiscard]] bool hasSize(qint64 size) const { return m_sizes.contains(size); }

    // On disk when this returns true.
    bool record(const UserData &data);
    bool forget(const QString &urn);

    [[nodiscard]] bool isBroken(const QString &path, const FileIdentity &identity) const;
    void recordBroken(const QString &path, const FileIdentity &identity, const QString &reason);
    void forgetBroken(const QString &path);

private:
    void applyLine(const QByteArray &line);
    void put(const UserData &data);
    void drop(const QString &urn);
    bool append(const QJsonObject &object, bool toDisk);
    bool compact();

    QFile m_file;
    QHash<QString, UserData> m_entries;
    QHash<QString, QString> m_urnByUrl;
    QHash<qint64, int> m_sizes; // of the files: how many have it
    QHash<QString, BrokenFile> m_broken; // by path
    int m_lines = 0;
};
