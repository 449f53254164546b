// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "journalfolder.h"
#include "trackerinterface.h"
#include "videoinfo.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

class RowTable;
class ThumbnailHelper;

// Where a video is, in a small file of the program's own, from the moment it has played for a while until the
// store has the place: a program that does not end in order, or a store that does not answer, costs no more
// than the time since the last note. What a program before this one left is given to the store, unless the
// store has a newer place.
class PositionJournal : public QObject
{
    Q_OBJECT

public:
    // $XDG_STATE_HOME/kestrel/places
    [[nodiscard]] static QString defaultFolder();

    // Neither of the two is owned. Reads what was left, and does nothing about it before restore().
    PositionJournal(TrackerInterface *store, ThumbnailHelper *thumbnails, const QString &folder,
                    QObject *parent = nullptr);
    ~PositionJournal() override;

    // Gives to the store what was left. What it cannot take now is kept and tried again when it answers.
    void restore();
    // What was left of the video and the store may not have yet.
    [[nodiscard]] std::optional<quint32> leftPlace(const QString &urn) const;

    // The video is playing, and is there.
    void note(const VideoInfo &video, quint32 position);
    // Saves the video's place in the store; the note is closed when that has it.
    void save(const VideoInfo &video);

    // On the disk by then, when that answers within the time.
    bool waitForDone(int milliseconds) { return m_folder.waitForDone(milliseconds); }

private:
    struct Entry
    {
        QString urn;
        QString url;
        quint32 duration = 0;
        quint32 position = 0;
        // Places that the store may have without having one that is newer than the note; empty: nothing is
        // known of it.
        QList<quint32> known;
        bool baseKnown = false; // what the store had before the note is one of them
        qint64 written = 0; // seconds since 1970
        QList<quint32> underWay; // given to the store, which has not answered
        bool isNewer = false; // than what was given to the store
        bool isLeft = false; // by a program before, or by a store that refused it
        bool isAsked = false; // the store, for what was left
        bool baseAsked = false; // the store, for what it had before the note
        bool isUnknown = false; // to the store
    };

    void load();
    [[nodiscard]] static std::optional<Entry> parse(const QByteArray &text);
    void write(Entry &entry);
    void close(const QString &urn);
    void askBase(const QString &urn);
    void give(Entry &entry);
    void acknowledged(const QString &urn, quint32 position, bool stored);
    void tryLeft();
    void tryLeft(const QString &urn);
    void compare(const QString &urn, const TrackerInterface::StoredPlace &place);
    [[nodiscard]] QHash<QString, QString> unknownUrns() const;
    void listLoaded(const RowTable &table);
    void storeAnswered(const QList<QStringList> &rows);

    TrackerInterface *m_store;
    ThumbnailHelper *m_thumbnails;
    JournalFolder m_folder;
    QHash<QString, Entry> m_entries; // by URN
    bool m_restores = false;
};
