// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QDir>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <vector>

// One transaction: all of it is in the store or nothing.
struct StoreWrite
{
    QStringList texts; // run before the resources
    std::vector<GRef<TrackerResource>> resources;
    // Called once, through the event loop, with an empty error when the transaction was committed.
    std::function<void(const QString &error)> done;
    // Goes before what the indexer has waiting.
    bool urgent = false;
};

// The database folder: one connection that writes, in the order the writes came, and one that only reads.
// Readers are served while the writer is still opening (a check after a crash may take seconds) and while the
// store cannot write.
class Database : public QObject
{
    Q_OBJECT

public:
    explicit Database(const QString &folder, QObject *parent = nullptr);
    ~Database() override;

    // Closes the writer for good; done a moment after this returns (endMs), for which the event loop has to
    // run.
    void end();
    static constexpr int endMs = 300;
    // Writers of this process that are not closed yet. The library does not bear that one is opened while
    // another is being closed: it damages its own memory.
    [[nodiscard]] static int closing();

    // Begins to open. A database that cannot be opened is moved aside, once, and an empty one made.
    void open();

    // Null until readerReady().
    [[nodiscard]] TrackerSparqlConnection *reader() const { return m_reader.get(); }
    // Null while the store cannot write.
    [[nodiscard]] TrackerSparqlConnection *writer() const { return m_writer.get(); }
    [[nodiscard]] bool isHealthy() const { return m_healthy; }

    // Waits until the store can write.
    void write(StoreWrite write);
    [[nodiscard]] int pendingWrites() const;

    // Steps through the rows of a query; false, with a line in the log, when it fails. The strings are the
    // cursor's.
    bool read(const QString &text, const std::function<void(TrackerSparqlCursor *)> &row);

    // Somebody found the content damaged or the disk failing.
    void reportTrouble(const QString &message);

Q_SIGNALS:
    void readerReady();
    void writerReady();
    // Whoever listens to the writer lets go of it.
    void writerClosing();
    void healthyChanged(bool healthy);
    // The old database was moved aside; the one that readerReady() soon tells of is empty.
    void movedAside();
    // There is no database and none can be made for now.
    void unavailable();

private:
    bool openReader();
    void openWriter();
    void writerOpened(GAsyncResult *result);
    void moveAside(const QString &reason);
    void setHealthy(bool healthy);
    void startNext();
    void executed(StoreWrite *write, GAsyncResult *result);
    void probe();
    void closeWriter();

    QDir m_folder;
    GRef<TrackerSparqlConnection> m_reader;
    GRef<TrackerSparqlConnection> m_writer;
    std::deque<StoreWrite> m_urgent;
    std::deque<StoreWrite> m_ordinary;
    GRef<GCancellable> m_cancellable;
    QTimer m_reopenTimer;
    QString m_trouble; // heard while a write was under way
    bool m_healthy = true;
    bool m_opening = false;
    bool m_writing = false;
    bool m_rebuilt = false;
    bool m_probing = false;
    bool m_ending = false;
};

// The string at a column, null when unbound.
[[nodiscard]] QString columnText(TrackerSparqlCursor *cursor, int column);
// Whether it can stand between angle brackets as it is.
[[nodiscard]] bool isPlainIri(const QString &iri);
