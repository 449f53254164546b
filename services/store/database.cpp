// SPDX-License-Identifier: GPL-3.0-or-later
#include "database.h"

#include "librarylog.h"
#include "storelog.h"

#include <QDateTime>
#include <QFile>
#include <QPointer>
#include <QUuid>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_firstReopenMs = 1000;
constexpr int s_lastReopenMs = 30000;
constexpr int s_asideKept = 3;

struct PendingWrite
{
    QPointer<Database> database;
    StoreWrite write;
};

GRef<GFile> fileOf(const QString &path)
{
    return GRef<GFile>(g_file_new_for_path(QFile::encodeName(path).constData()));
}

GRef<GFile> ontology()
{
    return GRef<GFile>(tracker_sparql_get_ontology_nepomuk());
}

// The library's threads may still be at work for a connection that nobody uses any more. Closing it, or
// dropping the last reference, under their hands ends the process: both are done here, later.
constexpr guint s_closeDelayMs = 150;
constexpr guint s_releaseDelayMs = 5000;

gboolean releaseRetired(gpointer connection)
{
    g_object_unref(connection);
    return G_SOURCE_REMOVE;
}

int s_closing = 0;

gboolean closeRetired(gpointer connection)
{
    tracker_sparql_connection_close(TRACKER_SPARQL_CONNECTION(connection));
    --s_closing;
    g_timeout_add(s_releaseDelayMs, &releaseRetired, connection);
    return G_SOURCE_REMOVE;
}

QString textOf(const GError *error)
{
    return error ? QString::fromUtf8(error->message) : QString();
}

bool tellsIoTrouble(const GError *error)
{
    if (!error || error->domain != TRACKER_SPARQL_ERROR)
        return false;
    return error->code == TRACKER_SPARQL_ERROR_NO_SPACE || error->code == TRACKER_SPARQL_ERROR_INTERNAL
        || error->code == TRACKER_SPARQL_ERROR_OPEN_ERROR || LibraryLog::tellsDamage(textOf(error));
}

} // namespace

Database::Database(const QString &folder, QObject *parent)
    : QObject(parent),
      m_folder(folder),
      m_cancellable(g_cancellable_new())
{
    m_reopenTimer.setSingleShot(true);
    m_reopenTimer.setInterval(s_firstReopenMs);
    connect(&m_reopenTimer, &QTimer::timeout, this, &Database::openWriter);
    connect(LibraryLog::instance(), &LibraryLog::trouble, this, &Database::reportTrouble);
}

Database::~Database()
{
    g_cancellable_cancel(m_cancellable.get());
    closeWriter();
    if (m_reader)
        g_timeout_add(s_releaseDelayMs, &releaseRetired, m_reader.release());
}

void Database::open()
{
    if (m_folder.exists(u"meta.db"_s) && !openReader())
        moveAside(u"it cannot be read"_s);
    openWriter();
}

bool Database::openReader()
{
    GError *error = nullptr;
    const auto store = fileOf(m_folder.path());
    m_reader.reset(tracker_sparql_connection_new(TRACKER_SPARQL_CONNECTION_FLAGS_READONLY, store.get(),
                                                 ontology().get(), nullptr, &error));
    const GErrorRef owned(error);
    if (!m_reader) {
        qCWarning(lcStore, "cannot read the database: %s", error->message);
        return false;
    }
    Q_EMIT readerReady();
    return true;
}

void Database::openWriter()
{
    if (m_opening || m_writer || m_ending)
        return;
    m_opening = true;
    QDir().mkpath(m_folder.path());
    const auto store = fileOf(m_folder.path());
    tracker_sparql_connection_new_async(
        TRACKER_SPARQL_CONNECTION_FLAGS_NONE, store.get(), ontology().get(), m_cancellable.get(),
        [](GObject *, GAsyncResult *result, gpointer data) {
            const std::unique_ptr<QPointer<Database>> database(static_cast<QPointer<Database> *>(data));
            if (*database)
                (*database)->writerOpened(result);
        },
        new QPointer<Database>(this));
}

void Database::writerOpened(GAsyncResult *result)
{
    GError *error = nullptr;
    m_writer.reset(tracker_sparql_connection_new_finish(result, &error));
    const GErrorRef owned(error);
    m_opening = false;
    if (!m_writer || (!m_reader && !openReader())) {
        const bool full
            = error && error->domain == TRACKER_SPARQL_ERROR && error->code == TRACKER_SPARQL_ERROR_NO_SPACE;
        if (!m_rebuilt && !full && m_folder.exists(u"meta.db"_s)) {
            moveAside(textOf(error));
            openWriter();
            return;
        }
        closeWriter();
        qCWarning(lcStore, "cannot open the database for writing: %s", qUtf8Printable(textOf(error)));
        setHealthy(false);
        m_reopenTimer.setInterval(qMin(m_reopenTimer.interval() * 2, s_lastReopenMs));
        m_reopenTimer.start();
        if (!m_reader)
            Q_EMIT unavailable();
        return;
    }
    // What the library complained of while it opened has been dealt with by opening.
    m_trouble.clear();
    if (m_healthy) {
        Q_EMIT writerReady();
        startNext();
    } else {
        probe();
    }
}

void Database::moveAside(const QString &reason)
{
    m_rebuilt = true;
    // Closing would remove files by the names that those of the new database get. It happens once in a run:
    // what is left open goes with the process.
    (void)m_reader.release();
    Q_EMIT movedAside();
    if (m_writer) {
        Q_EMIT writerClosing();
        (void)m_writer.release();
    }
    const QString stamp = QDateTime::currentDateTimeUtc().toString(u"yyyyMMdd'T'HHmmsszzz"_s);
    const QString aside = m_folder.path() + u"-damaged-"_s + stamp;
    qCWarning(lcStore, "the database is moved to %s and made anew: %s", qUtf8Printable(aside),
              qUtf8Printable(reason));
    if (!QDir().rename(m_folder.path(), aside))
        qCWarning(lcStore, "cannot move %s", qUtf8Printable(m_folder.path()));

    const QDir parent = QFileInfo(m_folder.path()).dir();
    const QStringList old = parent.entryList({m_folder.dirName() + u"-damaged-*"_s}, QDir::Dirs, QDir::Name);
    for (qsizetype i = 0; i + s_asideKept < old.size(); ++i)
        QDir(parent.filePath(old[i])).removeRecursively();
}

void Database::end()
{
    m_ending = true;
    m_reopenTimer.stop();
    closeWriter();
}

void Database::closeWriter()
{
    if (!m_writer)
        return;
    Q_EMIT writerClosing();
    ++s_closing;
    g_timeout_add(s_closeDelayMs, &closeRetired, m_writer.release());
}

int Database::closing()
{
    return s_closing;
}

void Database::setHealthy(bool healthy)
{
    if (m_healthy == healthy)
        return;
    m_healthy = healthy;
    if (healthy)
        m_reopenTimer.setInterval(s_firstReopenMs);
    qCWarning(lcStore, healthy ? "the store can write again" : "the store cannot write; reading goes on");
    Q_EMIT healthyChanged(healthy);
}

void Database::reportTrouble(const QString &message)
{
    if (m_opening)
        return; // told by the result of opening
    if (m_trouble.isEmpty())
        m_trouble = message;
    if (m_writing || m_probing)
        return; // dealt with when that is done
    m_trouble.clear();
    qCWarning(lcStore, "trouble with the database: %s", qUtf8Printable(message));
    setHealthy(false);
    if (LibraryLog::tellsDamage(message) && !m_rebuilt)
        moveAside(message);
    closeWriter();
    if (!m_reopenTimer.isActive())
        m_reopenTimer.start();
}

void Database::write(StoreWrite write)
{
    (write.urgent ? m_urgent : m_ordinary).push_back(std::move(write));
    startNext();
}

int Database::pendingWrites() const
{
    return int(m_urgent.size() + m_ordinary.size()) + (m_writing ? 1 : 0);
}

void Database::startNext()
{
    if (m_writing || m_probing || !m_writer || !m_healthy || (m_urgent.empty() && m_ordinary.empty()))
        return;
    auto &queue = m_urgent.empty() ? m_ordinary : m_urgent;
    auto *pending = new PendingWrite{this, std::move(queue.front())};
    queue.pop_front();
    m_writing = true;
    const GRef<TrackerBatch> batch(tracker_sparql_connection_create_batch(m_writer.get()));
    for (const QString &text : std::as_const(pending->write.texts))
        tracker_batch_add_sparql(batch.get(), text.toUtf8().constData());
    for (const auto &resource : pending->write.resources)
        tracker_batch_add_resource(batch.get(), nullptr, resource.get());
    tracker_batch_execute_async(
        batch.get(), nullptr,
        [](GObject *source, GAsyncResult *result, gpointer data) {
            const std::unique_ptr<PendingWrite> done(static_cast<PendingWrite *>(data));
            if (done->database) {
                done->database->executed(&done->write, result);
            } else {
                tracker_batch_execute_finish(TRACKER_BATCH(source), result, nullptr);
            }
        },
        pending);
}

void Database::executed(StoreWrite *write, GAsyncResult *result)
{
    GError *error = nullptr;
    const GRef<GObject> source(g_async_result_get_source_object(result));
    tracker_batch_execute_finish(TRACKER_BATCH(source.get()), result, &error);
    const GErrorRef owned(error);
    m_writing = false;
    QString failure = textOf(error);
    if (failure.isEmpty())
        failure = m_trouble;
    const QString trouble = tellsIoTrouble(error) ? textOf(error) : m_trouble;
    m_trouble.clear();
    if (!trouble.isEmpty())
        reportTrouble(trouble);
    if (write->done)
        write->done(failure);
    startNext();
}

// A connection that opens may still be unable to write: one value goes in and is read again before the queue
// goes on.
void Database::probe()
{
    const QString urn = u"urn:kestrel:probe:"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
    m_probing = true;
    const QByteArray insert
        = u"INSERT DATA { <%1> a rdfs:Resource ; rdfs:label \"probe\" }"_s.arg(urn).toUtf8();
    const QByteArray removal = u"DELETE WHERE { <%1> a rdfs:Resource }"_s.arg(urn).toUtf8();
    GError *error = nullptr;
    tracker_sparql_connection_update(m_writer.get(), insert.constData(), nullptr, &error);
    bool found = false;
    if (!error)
        read(u"SELECT ?label { <%1> rdfs:label ?label }"_s.arg(urn),
             [&](TrackerSparqlCursor *) { found = true; });
    if (!error && found)
        tracker_sparql_connection_update(m_writer.get(), removal.constData(), nullptr, &error);
    const GErrorRef owned(error);
    // The library's log lines come through the event loop: judge when they have arrived.
    QTimer::singleShot(0, this, [this, ok = !error && found, message = textOf(error)] {
        m_probing = false;
        if (ok && m_trouble.isEmpty() && m_writer) {
            setHealthy(true);
            Q_EMIT writerReady();
            startNext();
            return;
        }
        qCWarning(lcStore, "the store still cannot write: %s",
                  qUtf8Printable(message.isEmpty() ? m_trouble : message));
        m_trouble.clear();
        closeWriter();
        m_reopenTimer.setInterval(qMin(m_reopenTimer.interval() * 2, s_lastReopenMs));
        m_reopenTimer.start();
    });
}

bool Database::read(const QString &text, const std::function<void(TrackerSparqlCursor *)> &row)
{
    if (!m_reader)
        return false;
    GError *error = nullptr;
    const GRef<TrackerSparqlCursor> cursor(
        tracker_sparql_connection_query(m_reader.get(), text.toUtf8().constData(), nullptr, &error));
    while (!error && tracker_sparql_cursor_next(cursor.get(), nullptr, &error))
        row(cursor.get());
    const GErrorRef owned(error);
    if (!error)
        return true;
    qCWarning(lcStore, "a query failed: %s", error->message);
    if (LibraryLog::tellsDamage(textOf(error)))
        reportTrouble(textOf(error));
    return false;
}

QString columnText(TrackerSparqlCursor *cursor, int column)
{
    glong length = 0;
    const char *text = tracker_sparql_cursor_get_string(cursor, column, &length);
    return text ? QString::fromUtf8(text, length) : QString();
}

bool isPlainIri(const QString &iri)
{
    return !iri.isEmpty() && std::none_of(iri.cbegin(), iri.cend(), [](QChar c) {
        return c <= u' ' || u"<>\"{}|^`\\"_s.contains(c);
    });
}
