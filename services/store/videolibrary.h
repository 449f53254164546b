// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "changefeed.h"
#include "database.h"
#include "updatetext.h"
#include "userjournal.h"
#include "videotable.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>
#include <vector>

// A video that the indexer read, ready to be stored.
struct NewVideo
{
    VideoRecord record;
    GRef<TrackerResource> resource;
};

// The videos of the store and everything that changes them. What is written is read back before it is
// believed: then the person's values go to the journal, the quads to the feed, and the acknowledgement to
// whoever asked. The table already shows what has been handed to the database.
class VideoLibrary : public QObject
{
    Q_OBJECT

public:
    // None of them is owned; all outlive the library.
    VideoLibrary(Database *database, UserJournal *journal, ChangeFeed *feed, QObject *parent = nullptr);
    ~VideoLibrary() override;

    // True once the table shows all that the database holds.
    [[nodiscard]] bool isLoaded() const { return m_loaded; }
    [[nodiscard]] const VideoTable &table() const { return m_table; }
    [[nodiscard]] UserJournal *journal() const { return m_journal; }

    using Done = std::function<void(const QString &error)>;
    // Texts of a client, in one transaction.
    void applyUpdate(const QStringList &texts, const Done &done);
    // A playback began: counts it and notes the time. Unknown identifiers are ignored.
    void recordPlay(const QString &urn);

    void add(std::vector<NewVideo> videos);
    // The file has another place or state, its content is the same.
    void relocate(const VideoRecord &record);
    // The content of the file is another; `resource` carries what follows it.
    void updateContent(const VideoRecord &record, GRef<TrackerResource> resource);
    void remove(const QStringList &urns);
    // Nothing to store: the device number of a file system changes from start to start.
    void noteDevice(const QString &urn, const FileIdentity &identity);

    // The person's values that the journal keeps for a file whose video is not in the store; empty urn: none.
    [[nodiscard]] UserData keptFor(const QString &url, const FileIdentity &identity) const;
    // The title was edited, so that the file's own does not replace it.
    [[nodiscard]] bool hasUserTitle(const QString &urn) const;

Q_SIGNALS:
    void loaded();
    // The person made something of a video whose file would not be known again elsewhere.
    void digestWanted(const QString &urn);
    // What clients know is about another database.
    void reset();

private:
    void beginLoad();
    void loadSome();
    void finishLoad();
    void onMovedAside();
    void onWriterReady();
    void restoreFromJournal();
    void watchWriter();
    void unwatchWriter();
    void rereadNoticed();
    void diff(const QString &urn);

    [[nodiscard]] std::optional<VideoRecord> readRecord(const QString &urn);
    [[nodiscard]] QString confirm(const QList<ValueWrite> &writes);
    void confirmAdded(const QList<VideoRecord> &records);
    void write(const QStringList &urns, StoreWrite write);
    bool remember(const VideoRecord &record, bool titleEdited);

    static void noticed(TrackerNotifier *, const char *, const char *, GPtrArray *events, gpointer self);

    Database *m_database;
    UserJournal *m_journal;
    ChangeFeed *m_feed;
    VideoTable m_table;
    VideoTable m_loading;
    GRef<TrackerSparqlCursor> m_cursor;
    GRef<TrackerNotifier> m_notifier;
    QTimer m_loadTimer;
    QTimer m_noticeTimer;
    QSet<QString> m_noticed;
    QHash<QString, int> m_underWay; // own writes by urn
    std::vector<std::function<void()>> m_afterLoad;
    bool m_loaded = false;
    bool m_wasReset = false;
    bool m_stale = false; // a write of the indexer failed: the table shows what is not there
};
