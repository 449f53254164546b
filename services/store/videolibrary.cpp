// SPDX-License-Identifier: GPL-3.0-or-later
#include "videolibrary.h"

#include "storelog.h"
#include "storepaths.h"
#include "videoresource.h"

#include <QDateTime>

using namespace Qt::Literals::StringLiterals;

namespace {

QStringList urnsOf(const std::vector<NewVideo> &videos)
{
    QStringList urns;
    for (const NewVideo &video : videos)
        urns.append(video.record.urn);
    return urns;
}

} // namespace

VideoLibrary::VideoLibrary(Database *database, UserJournal *journal, ChangeFeed *feed, QObject *parent)
    : QObject(parent),
      m_database(database),
      m_journal(journal),
      m_feed(feed)
{
    m_loadTimer.setInterval(0);
    connect(&m_loadTimer, &QTimer::timeout, this, &VideoLibrary::loadSome);
    m_noticeTimer.setSingleShot(true);
    m_noticeTimer.setInterval(0);
    connect(&m_noticeTimer, &QTimer::timeout, this, &VideoLibrary::rereadNoticed);
    connect(m_database, &Database::readerReady, this, &VideoLibrary::beginLoad);
    connect(m_database, &Database::movedAside, this, &VideoLibrary::onMovedAside);
    connect(m_database, &Database::writerReady, this, &VideoLibrary::onWriterReady);
    connect(m_database, &Database::writerClosing, this, &VideoLibrary::unwatchWriter);
}

VideoLibrary::~VideoLibrary()
{
    unwatchWriter();
}

void VideoLibrary::applyUpdate(const QStringList &texts, const Done &done)
{
    if (!m_loaded) {
        m_afterLoad.push_back([this, texts, done] { applyUpdate(texts, done); });
        return;
    }
    QList<ValueWrite> writes;
    for (const QString &text : texts)
        writes.append(valueWritesOf(text));
    QStringList urns;
    for (const ValueWrite &write : std::as_const(writes))
        urns.append(write.urn);
    StoreWrite write;
    write.texts = texts;
    write.urgent = true;
    write.done
        = [this, writes, done](const QString &error) { done(error.isEmpty() ? confirm(writes) : error); };
    this->write(urns, std::move(write));
}

// Reads back what an update set. Empty when all of it is there and kept.
QString VideoLibrary::confirm(const QList<ValueWrite> &writes)
{
    QHash<QString, QHash<ValueWrite::Property, QString>> expected; // the last value wins
    for (const ValueWrite &write : writes)
        expected[write.urn][write.property] = write.value;
    for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
        const auto stored = readRecord(it.key());
        if (!stored)
            return u"the video is not in the store"_s;
        const auto &values = it.value();
        const auto title = values.constFind(ValueWrite::Property::Title);
        const auto runTime = values.constFind(ValueWrite::Property::RunTime);
        if ((title != values.cend() && stored->title != *title)
            || (runTime != values.cend() && stored->runTime != runTime->toLongLong())) {
            m_database->reportTrouble(u"a value that was written cannot be read back"_s);
            return u"the value could not be stored"_s;
        }
        VideoRecord record = *stored;
        const VideoRecord *known = m_table.byUrn(record.urn);
        if (!known) {
            m_table.put(record);
            m_feed->videoAdded(record.id);
            continue;
        }
        record.arrival = known->arrival;
        record.identity = known->identity;
        m_table.put(record);
        remember(record, title != values.cend());
        if (title != values.cend())
            m_feed->titleChanged(record.id);
        if (runTime != values.cend())
            m_feed->runTimeChanged(record.id);
    }
    return {};
}

bool VideoLibrary::remember(const VideoRecord &record, bool titleEdited)
{
    UserData data{record.urn,     record.url,       record.identity,  {},
                  record.runTime, record.playCount, record.lastPlayed};
    if (record.identity.digest.isEmpty())
        Q_EMIT digestWanted(record.urn);
    const UserData *known = m_journal->find(record.urn);
    if (titleEdited)
        data.title = record.title;
    else if (known)
        data.title = known->title;
    return m_journal->record(data);
}

void VideoLibrary::recordPlay(const QString &urn)
{
    if (!m_loaded) {
        m_afterLoad.push_back([this, urn] { recordPlay(urn); });
        return;
    }
    const VideoRecord *known = m_table.byUrn(urn);
    if (!known)
        return;
    VideoRecord record = *known;
    ++record.playCount;
    record.lastPlayed = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    m_table.put(record);
    StoreWrite write;
    write.urgent = true;
    write.resources.push_back(playResource(record));
    write.done = [this, urn](const QString &error) {
        const auto stored = error.isEmpty() ? readRecord(urn) : std::nullopt;
        if (stored)
            remember(*stored, false);
    };
    this->write({urn}, std::move(write));
}

void VideoLibrary::add(std::vector<NewVideo> videos)
{
    const QStringList urns = urnsOf(videos);
    QList<VideoRecord> records;
    StoreWrite write;
    for (NewVideo &video : videos) {
        m_table.put(video.record);
        records.append(video.record);
        write.resources.push_back(std::move(video.resource));
    }
    // Kept for the case that one video of the transaction cannot be stored: the others must not suffer.
    auto resources = std::make_shared<std::vector<GRef<TrackerResource>>>();
    for (const auto &resource : write.resources)
        resources->push_back(shareGRef(resource.get()));
    write.done = [this, records, resources](const QString &error) {
        if (error.isEmpty()) {
            confirmAdded(records);
            return;
        }
        if (!m_database->isHealthy())
            return;
        qCWarning(lcStore, "cannot store %s: %s", qUtf8Printable(records.first().path),
                  qUtf8Printable(error));
        for (qsizetype i = 0; i < records.size(); ++i) {
            m_table.remove(records[i].urn);
            if (records.size() == 1)
                break;
            std::vector<NewVideo> single;
            single.push_back({records[i], std::move(resources->at(size_t(i)))});
            add(std::move(single));
        }
    };
    this->write(urns, std::move(write));
}

void VideoLibrary::confirmAdded(const QList<VideoRecord> &records)
{
    for (const VideoRecord &added : records) {
        const VideoRecord *known = m_table.byUrn(added.urn);
        if (!known)
            continue; // its file went meanwhile
        const auto stored = readRecord(added.urn);
        if (!stored) {
            m_stale = true;
            m_database->reportTrouble(u"a video that was written cannot be read back"_s);
            return;
        }
        VideoRecord record = *known;
        record.id = stored->id;
        m_table.put(record);
        m_feed->videoAdded(record.id);
    }
}

void VideoLibrary::relocate(const VideoRecord &record)
{
    const VideoRecord *known = m_table.byUrn(record.urn);
    const bool renamed = !known || known->fileName != record.fileName || known->url != record.url;
    m_table.put(record);
    StoreWrite write;
    write.resources.push_back(placeResource(record));
    write.done = [this, urn = record.urn, renamed](const QString &error) {
        const VideoRecord *moved = m_table.byUrn(urn);
        if (!error.isEmpty() || !moved)
            return;
        if (m_journal->find(urn))
            remember(*moved, false);
        if (renamed && moved->id != 0)
            m_feed->fileNameChanged(moved->id);
    };
    this->write({record.urn}, std::move(write));
}

void VideoLibrary::updateContent(const VideoRecord &record, GRef<TrackerResource> resource)
{
    const VideoRecord *known = m_table.byUrn(record.urn);
    const bool retitled = known && known->title != record.title;
    m_table.put(record);
    StoreWrite write;
    write.resources.push_back(std::move(resource));
    write.done = [this, urn = record.urn, retitled](const QString &error) {
        const VideoRecord *updated = m_table.byUrn(urn);
        if (!error.isEmpty() || !updated)
            return;
        if (m_journal->find(urn))
            remember(*updated, false);
        if (retitled && updated->id != 0)
            m_feed->titleChanged(updated->id);
    };
    this->write({record.urn}, std::move(write));
}

void VideoLibrary::remove(const QStringList &urns)
{
    QList<int> ids;
    StoreWrite write;
    for (const QString &urn : urns) {
        const VideoRecord *known = m_table.byUrn(urn);
        if (!known || !isPlainIri(urn))
            continue;
        ids.append(known->id);
        write.texts.append(u"DELETE WHERE { <%1> a rdfs:Resource }"_s.arg(urn));
        m_table.remove(urn);
    }
    if (write.texts.isEmpty())
        return;
    write.urgent = true;
    write.done = [this, urns, ids](const QString &error) {
        if (!error.isEmpty())
            return;
        for (const QString &urn : urns)
            m_journal->forget(urn);
        for (const int id : ids) {
            if (id != 0)
                m_feed->videoDeleted(id);
        }
    };
    this->write(urns, std::move(write));
}

void VideoLibrary::noteDevice(const QString &urn, const FileIdentity &identity)
{
    const VideoRecord *known = m_table.byUrn(urn);
    if (!known)
        return;
    VideoRecord record = *known;
    record.identity.device = identity.device;
    record.identity.inode = identity.inode;
    m_table.put(record);
}

UserData VideoLibrary::keptFor(const QString &url, const FileIdentity &identity) const
{
    const UserData *kept = m_journal->findForFile(url, identity);
    return kept && !m_table.byUrn(kept->urn) ? *kept : UserData();
}

bool VideoLibrary::hasUserTitle(const QString &urn) const
{
    const UserData *kept = m_journal->find(urn);
    return kept && kept->title;
}

void VideoLibrary::write(const QStringList &urns, StoreWrite write)
{
    for (const QString &urn : urns)
        ++m_underWay[urn];
    const bool ofClient = write.urgent && !write.texts.isEmpty() && write.resources.empty();
    write.done = [this, urns, ofClient, done = std::move(write.done)](const QString &error) {
        for (const QString &urn : urns) {
            if (--m_underWay[urn] <= 0)
                m_underWay.remove(urn);
        }
        if (!error.isEmpty() && (!ofClient || !m_database->isHealthy()))
            m_stale = true;
        done(error);
    };
    m_database->write(std::move(write));
}
