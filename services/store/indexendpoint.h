// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"
#include "indexquery.h"
#include "toldfile.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

class CursorStream;

// One SPARQL endpoint of the desktop's file index: its videos, and what it tells of changes to them. An
// endpoint that does not answer in time fails for good; whoever made it may try another time.
class IndexEndpoint : public QObject
{
    Q_OBJECT

public:
    // `bus` is shared; `owner` a unique name, so that nobody is started. `patienceMs`: how long it may be
    // silent while it owes an answer; longer before an answer about all videos, by their number.
    IndexEndpoint(GDBusConnection *bus, const QString &owner, const QString &path, int patienceMs,
                  QObject *parent = nullptr);
    ~IndexEndpoint() override;

    // Connects, follows the changes and asks for all videos.
    void open();
    // Asks for all videos again.
    void askAll();
    // True from open() and askAll() until everything was told.
    [[nodiscard]] bool owesAll() const { return m_owesAll; }

Q_SIGNALS:
    void told(const QList<ToldFile> &files);
    // Every video has been told since open() or askAll().
    void toldAll();
    // Local files that the index let go of. They may still be there, under this name or another.
    void dropped(const QStringList &paths);
    void failed(const QString &error);

private:
    struct Question
    {
        QString text;
        std::function<void(const QStringList &cells)> row;
        std::function<void()> done;
        bool isAboutAll = false;
    };

    void opened(GAsyncResult *result);
    void follow();
    void noteEvent(TrackerNotifierEvent *event);
    void askAboutChanges();
    void askVideos(const QList<IndexQuestion> &questions, bool fresh, const std::function<void()> &done);
    void ask(Question question);
    void askNext();
    [[nodiscard]] int patienceFor(qint64 files) const;
    void answered(GAsyncResult *result);
    void takeRows(const QList<QStringList> &rows);
    void end(const QString &error);
    void fail(const QString &error);
    // The calls of the library come back also after the object is gone.
    template <void (IndexEndpoint::*Method)(GAsyncResult *)>
    static void back(GObject *, GAsyncResult *result, gpointer data);
    [[nodiscard]] gpointer backData();
    static void noticed(TrackerNotifier *, const char *, const char *, GPtrArray *events, gpointer self);

    GRef<GDBusConnection> m_bus;
    QByteArray m_owner;
    QByteArray m_path;
    GRef<GCancellable> m_cancellable;
    GRef<TrackerSparqlConnection> m_connection;
    GRef<TrackerNotifier> m_notifier;
    std::deque<Question> m_questions; // the first is under way
    CursorStream *m_stream = nullptr;
    QList<ToldFile> m_files; // of the piece that is being read
    QSet<QString> m_changed; // resources
    QSet<QString> m_dropped; // paths
    QTimer m_changeTimer;
    QTimer m_dropTimer;
    QTimer m_patience;
    int m_patienceMs;
    int m_patienceForAllMs;
    bool m_owesAll = false;
    bool m_failed = false;
};
