// SPDX-License-Identifier: GPL-3.0-or-later
// How the library learns what the database holds: all of it at start, and what others changed later.
#include "videolibrary.h"

#include "storelog.h"
#include "storepaths.h"
#include "videoresource.h"

#include <QElapsedTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

// How long a turn of the event loop may read: what a client asks meanwhile takes several turns.
constexpr int s_turnMs = 4;

const QString s_allRecords
    = u"SELECT ?video tracker:id(?video) ?url ?fileName ?title ?runTime ?count ?played ?file ?created WHERE "
      u"{ "
      "?video a nmm:Video ; nie:url ?url . OPTIONAL { ?video nfo:fileName ?fileName } "
      "OPTIONAL { ?video nie:title ?title } OPTIONAL { ?video nmm:runTime ?runTime } "
      "OPTIONAL { ?video nie:usageCounter ?count } OPTIONAL { ?video nie:contentAccessed ?played } "
      "OPTIONAL { ?video nie:identifier ?file } OPTIONAL { ?video nie:contentCreated ?created } }"_s;

// The same of one video, at once in a library of any size: the store copies a table as a whole for a question
// that names two properties of one class. %1: the urn.
const QString s_recordParts[] = {
    u"SELECT <%1> tracker:id(<%1>) nie:url(<%1>) nfo:fileName(<%1>) nie:title(<%1>) { <%1> a nmm:Video }"_s,
    u"SELECT nmm:runTime(<%1>) nie:usageCounter(<%1>) {}"_s, u"SELECT nie:contentAccessed(<%1>) {}"_s,
    u"SELECT nie:identifier(<%1>) {}"_s, u"SELECT nie:contentCreated(<%1>) {}"_s};

QStringList cellsOf(TrackerSparqlCursor *row)
{
    QStringList cells;
    for (int column = 0; column < tracker_sparql_cursor_get_n_columns(row); ++column)
        cells.append(columnText(row, column));
    return cells;
}

VideoRecord recordOf(const QStringList &cells)
{
    VideoRecord record;
    record.urn = cells.value(0);
    record.id = cells.value(1).toInt();
    record.url = cells.value(2);
    record.path = localPathOf(record.url);
    record.fileName = cells.value(3);
    record.title = cells.value(4);
    record.runTime = cells.value(5).toLongLong();
    record.playCount = cells.value(6).toInt();
    record.lastPlayed = cells.value(7);
    record.identity = FileIdentity::fromText(cells.value(8)).value_or(FileIdentity());
    record.created = QDateTime::fromString(cells.value(9), Qt::ISODate);
    return record;
}

} // namespace

std::optional<VideoRecord> VideoLibrary::readRecord(const QString &urn)
{
    if (!isPlainIri(urn))
        return {};
    QStringList cells;
    for (const QString &part : s_recordParts) {
        const qsizetype known = cells.size();
        m_database->read(part.arg(urn), [&](TrackerSparqlCursor *row) { cells += cellsOf(row); });
        if (cells.size() == known)
            return {};
    }
    VideoRecord record = recordOf(cells);
    if (record.url.isEmpty())
        return {};
    record.urn = urn;
    return record;
}

void VideoLibrary::beginLoad()
{
    StoreTerms terms;
    m_database->read(u"SELECT tracker:id(rdf:type) tracker:id(nmm:Video) tracker:id(nie:title) "
                     "tracker:id(nmm:runTime) tracker:id(nfo:fileName) {}"_s,
                     [&](TrackerSparqlCursor *row) {
                         const auto number = [&](int column) {
                             return int(tracker_sparql_cursor_get_integer(row, column));
                         };
                         terms = {number(0), number(1), number(2), number(3), number(4)};
                     });
    m_feed->setTerms(terms);
    m_loaded = false;
    m_loading.clear();
    GError *error = nullptr;
    m_cursor.reset(tracker_sparql_connection_query(m_database->reader(), s_allRecords.toUtf8().constData(),
                                                   nullptr, &error));
    if (!m_cursor) {
        const GErrorRef owned(error);
        m_database->reportTrouble(QString::fromUtf8(error->message));
        return;
    }
    m_loadTimer.start();
}

void VideoLibrary::loadSome()
{
    QElapsedTimer turn;
    turn.start();
    GError *error = nullptr;
    while (turn.elapsed() < s_turnMs) {
        if (tracker_sparql_cursor_next(m_cursor.get(), nullptr, &error)) {
            m_loading.put(recordOf(cellsOf(m_cursor.get())));
            continue;
        }
        m_loadTimer.stop();
        m_cursor.reset();
        if (!error) {
            finishLoad();
            return;
        }
        const GErrorRef owned(error);
        m_database->reportTrouble(QString::fromUtf8(error->message));
        return;
    }
}

void VideoLibrary::finishLoad()
{
    m_table = std::move(m_loading);
    m_loading.clear();
    m_loaded = true;
    m_stale = false;
    restoreFromJournal();
    qCInfo(lcStore, "%d videos in the store", m_table.size());
    if (std::exchange(m_wasReset, false))
        Q_EMIT reset();
    const auto waiting = std::exchange(m_afterLoad, {});
    for (const auto &action : waiting)
        action();
    Q_EMIT loaded();
}

// The journal reaches the disk before an acknowledgement, the database perhaps not: after a power cut it may
// be behind.
void VideoLibrary::restoreFromJournal()
{
    StoreWrite write;
    QStringList urns;
    QList<int> retitled;
    QList<int> moved;
    for (const UserData &kept : m_journal->entries()) {
        const VideoRecord *known = m_table.byUrn(kept.urn);
        if (!known)
            continue;
        VideoRecord record = *known;
        record.runTime = kept.runTime;
        record.playCount = kept.playCount;
        record.lastPlayed = kept.lastPlayed;
        if (kept.title)
            record.title = *kept.title;
        if (record.runTime == known->runTime && record.playCount == known->playCount
            && record.title == known->title)
            continue;
        urns.append(record.urn);
        write.resources.push_back(userResource(record));
        if (record.title != known->title)
            retitled.append(record.id);
        if (record.runTime != known->runTime)
            moved.append(record.id);
        m_table.put(record);
    }
    if (urns.isEmpty())
        return;
    qCInfo(lcStore, "%d videos get values from the journal", int(urns.size()));
    write.done = [this, retitled, moved](const QString &error) {
        if (!error.isEmpty())
            return;
        for (const int id : retitled)
            m_feed->titleChanged(id);
        for (const int id : moved)
            m_feed->runTimeChanged(id);
    };
    this->write(urns, std::move(write));
}

void VideoLibrary::onMovedAside()
{
    m_loadTimer.stop();
    m_cursor.reset();
    unwatchWriter();
    m_table.clear();
    m_feed->clear();
    m_noticed.clear();
    m_loaded = false;
    m_wasReset = true;
}

void VideoLibrary::onWriterReady()
{
    watchWriter();
    if (m_stale && m_loaded) {
        m_wasReset = true;
        beginLoad();
    }
}

// Clients may change videos in ways that their texts do not show.
void VideoLibrary::watchWriter()
{
    unwatchWriter();
    m_notifier.reset(tracker_sparql_connection_create_notifier(m_database->writer()));
    g_signal_connect(m_notifier.get(), "events", G_CALLBACK(&VideoLibrary::noticed), this);
}

void VideoLibrary::unwatchWriter()
{
    if (m_notifier)
        g_signal_handlers_disconnect_by_data(m_notifier.get(), this);
    m_notifier.reset();
}

void VideoLibrary::noticed(TrackerNotifier *, const char *, const char *, GPtrArray *events, gpointer self)
{
    auto *library = static_cast<VideoLibrary *>(self);
    for (guint i = 0; i < events->len; ++i) {
        auto *event = static_cast<TrackerNotifierEvent *>(g_ptr_array_index(events, i));
        if (const char *urn = tracker_notifier_event_get_urn(event))
            library->m_noticed.insert(QString::fromUtf8(urn));
    }
    library->m_noticeTimer.start();
}

void VideoLibrary::rereadNoticed()
{
    if (!m_loaded) {
        m_noticed.clear(); // loading reads it all
        return;
    }
    QElapsedTimer turn;
    turn.start();
    while (!m_noticed.isEmpty() && turn.elapsed() < s_turnMs) {
        const QString urn = *m_noticed.cbegin();
        m_noticed.erase(m_noticed.cbegin());
        // What is written here is read back when it is done.
        if (!m_underWay.contains(urn))
            diff(urn);
    }
    if (!m_noticed.isEmpty())
        m_noticeTimer.start();
}

void VideoLibrary::diff(const QString &urn)
{
    const auto stored = readRecord(urn);
    const VideoRecord *entry = m_table.byUrn(urn);
    if (!stored && !entry)
        return;
    if (!stored) {
        const int id = entry->id;
        m_table.remove(urn);
        m_journal->forget(urn);
        m_feed->videoDeleted(id);
        return;
    }
    if (!entry) {
        m_table.put(*stored);
        m_feed->videoAdded(stored->id);
        return;
    }
    const VideoRecord known = *entry;
    VideoRecord record = *stored;
    record.arrival = known.arrival;
    // Kept here: the file's state may be ahead of what was stored.
    record.identity = known.identity;
    m_table.put(record);
    if (record.title != known.title)
        m_feed->titleChanged(record.id);
    if (record.runTime != known.runTime)
        m_feed->runTimeChanged(record.id);
    if (record.fileName != known.fileName)
        m_feed->fileNameChanged(record.id);
    if (record.title != known.title || record.runTime != known.runTime || record.playCount != known.playCount)
        remember(record, record.title != known.title);
}
