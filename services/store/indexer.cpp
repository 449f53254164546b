// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexer.h"

#include "storelog.h"
#include "storepaths.h"
#include "videoresource.h"

#include <QFileInfo>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int s_readAtOnce = 16;
constexpr size_t s_batchSize = 100;
constexpr int s_batchMs = 150;
} // namespace

Indexer::Indexer(VideoLibrary *library, MediaReader *reader, EquipmentOf equipmentOf, QObject *parent)
    : QObject(parent),
      m_library(library),
      m_reader(reader),
      m_equipmentOf(std::move(equipmentOf))
{
    m_batchTimer.setSingleShot(true);
    m_batchTimer.setInterval(s_batchMs);
    connect(&m_batchTimer, &QTimer::timeout, this, &Indexer::flush);
    connect(m_reader, &MediaReader::finished, this, &Indexer::onRead);
    connect(m_library, &VideoLibrary::digestWanted, this, &Indexer::keepDigest);
    connect(m_library, &VideoLibrary::loaded, this, &Indexer::digestKept);
}

void Indexer::onScanStarted(const QString &root)
{
    // What lies there when scans begin comes at once, however many folders they read.
    if (!m_progress.isScanning())
        m_scanArrival = ++m_arrivals;
    m_progress.scanStarted();
    m_away.removeIf([&](const QString &folder) { return folder == root || folder.startsWith(root + u'/'); });
    m_devices.clear();
}

void Indexer::onFound(const QList<FoundFile> &files)
{
    for (const FoundFile &file : files)
        consider(file);
    flushWhenIdle();
}

void Indexer::consider(const FoundFile &file)
{
    if (file.isPromised && m_library->table().urnsOfInode(file.identity).isEmpty()
        && !mayBeKnown(file.identity))
        return;
    if (const auto job = m_jobs.find(file.path); job != m_jobs.end()) {
        if (!job->identity.sameState(file.identity))
            job->newer = file.identity;
        else if (file.facts)
            takeFacts(file.path, file.facts);
        return;
    }
    // Found there, after it was away: nobody scans a file system that only the index follows.
    m_away.removeIf([&](const QString &folder) { return file.path.startsWith(folder + u'/'); });
    if (m_batched.contains(file.path))
        flush(); // told twice: the library has to know of the first time
    m_progress.fileSeen();
    const VideoRecord *known = m_library->table().byPath(file.path);
    if (known)
        m_devices.insert(known->identity.device);
    if (known && known->identity.sameState(file.identity)) {
        if (!known->identity.sameInode(file.identity))
            m_library->noteDevice(known->urn, file.identity);
        m_progress.fileDone();
        return;
    }
    if (m_library->journal()->isBroken(file.path, file.identity)) {
        m_progress.fileDone();
        return;
    }
    const quint64 arrival = file.fresh ? ++m_arrivals : m_scanArrival;
    m_jobs.insert(file.path, {file.path, file.identity, file.fresh, arrival, 0, {}, file.facts});
    if (file.facts && !mayBeKnown(file.identity)) {
        storeFacts(file.path);
        return;
    }
    m_undigested.insert(file.path);
    Q_EMIT digestWanted(file.path, file.fresh);
}

// A file need not be opened when another one has read it and nothing that is kept can be its earlier self.
bool Indexer::mayBeKnown(const FileIdentity &identity) const
{
    return m_library->table().hasDigestOfSize(identity.size) || m_library->journal()->hasSize(identity.size);
}

// The facts of a file that is waiting to be read.
void Indexer::takeFacts(const QString &path, const std::shared_ptr<const MediaReply> &facts)
{
    Job &job = m_jobs[path];
    if (job.request != 0)
        return;
    job.facts = facts;
    if (!m_undigested.contains(path))
        storeFacts(path);
}

void Indexer::storeFacts(const QString &path)
{
    const Job job = m_jobs.value(path);
    if (m_library->table().byPath(path) || !isMoved(job))
        store(job, *job.facts);
    finish(path);
}

// A video of which the person made something must be known again wherever its file goes.
void Indexer::keepDigest(const QString &urn)
{
    const VideoRecord *known = m_library->table().byUrn(urn);
    if (!known || !known->identity.digest.isEmpty() || known->path.isEmpty())
        return;
    m_keeping.insert(known->path, urn);
    Q_EMIT digestWanted(known->path, false);
}

void Indexer::digestKept()
{
    const QStringList urns = m_library->journal()->entries().keys();
    for (const QString &urn : urns)
        keepDigest(urn);
}

void Indexer::onDigested(const QString &path, const QByteArray &digest)
{
    const QString urn = m_keeping.take(path);
    const VideoRecord *kept = urn.isEmpty() ? nullptr : m_library->table().byUrn(urn);
    if (kept && kept->path == path && kept->identity.digest.isEmpty() && !digest.isEmpty()) {
        const auto now = FileIdentity::ofFile(path);
        FileIdentity identity = kept->identity;
        identity.digest = digest;
        if (now && now->sameState(identity))
            relocateTo(urn, path, identity);
    }
    m_undigested.remove(path);
    decide(path, digest);
    flushWhenIdle();
    concludeScans();
}

void Indexer::decide(const QString &path, const QByteArray &digest)
{
    const auto job = m_jobs.find(path);
    if (job == m_jobs.end())
        return;
    if (digest.isEmpty()) { // gone, or not to be read
        finish(path);
        return;
    }
    job->identity.digest = digest;
    const VideoRecord *known = m_library->table().byPath(path);
    if (known && known->identity.sameContent(job->identity)) {
        relocateTo(known->urn, path, job->identity); // touched, no more
        finish(path);
    } else if (!known && isMoved(*job)) {
        finish(path);
    } else if (job->facts) {
        store(*job, *job->facts);
        finish(path);
    } else {
        if (job->fresh)
            m_waiting.push_front(path);
        else
            m_waiting.push_back(path);
        submitWaiting();
    }
}

// A stored video whose file is no longer in its place and is, by inode or by content, this one.
bool Indexer::isMoved(const Job &job)
{
    QStringList candidates;
    const VideoTable &table = m_library->table();
    const QStringList inodes = table.urnsOfInode(job.identity);
    for (const QString &urn : inodes) {
        if (table.byUrn(urn)->identity.sameState(job.identity))
            candidates.append(urn);
    }
    candidates.append(table.urnsOfContent(job.identity));
    for (const QString &urn : std::as_const(candidates)) {
        const QString old = table.byUrn(urn)->path;
        if (isAway(old) || FileIdentity::ofFile(old))
            continue;
        relocateTo(urn, job.path, job.identity);
        return true;
    }
    return false;
}

bool Indexer::isAway(const QString &path) const
{
    return std::any_of(m_away.cbegin(), m_away.cend(),
                       [&](const QString &folder) { return path.startsWith(folder + u'/'); });
}

void Indexer::relocateTo(const QString &urn, const QString &path, const FileIdentity &identity)
{
    VideoRecord record = *m_library->table().byUrn(urn);
    record.path = path;
    record.url = urlOf(path);
    record.fileName = QFileInfo(path).fileName();
    record.identity = identity;
    m_library->relocate(record);
}

void Indexer::submitWaiting()
{
    while (!m_waiting.empty() && m_requests.size() < s_readAtOnce) {
        const QString path = m_waiting.front();
        m_waiting.pop_front();
        const auto job = m_jobs.find(path);
        if (job == m_jobs.end() || job->request != 0)
            continue;
        job->request = m_reader->read(path, job->fresh);
        m_requests.insert(job->request, path);
    }
}

void Indexer::onRead(int request, const MediaReply &reply)
{
    const QString path = m_requests.take(request);
    submitWaiting();
    const auto found = m_jobs.constFind(path);
    if (path.isEmpty() || found == m_jobs.cend())
        return;
    const Job job = *found;
    const auto now = FileIdentity::ofFile(path);
    if (now && now->sameState(job.identity)) {
        if (reply.status == MediaReply::Status::Ok || reply.status == MediaReply::Status::NoPicture)
            store(job, reply);
        else
            markBroken(job, reply);
    }
    finish(path);
    // Written to while it was being read: another look, unless the watcher reported that already.
    if (now && !now->sameState(job.identity) && !job.newer)
        consider({path, *now, job.fresh});
}

void Indexer::store(const Job &job, const MediaReply &reply)
{
    const VideoRecord *known = m_library->table().byPath(job.path);
    if (!known) {
        storeNew(job, reply);
        return;
    }
    VideoRecord record = *known;
    record.identity = job.identity;
    record.created = createdOf(reply, job.identity);
    if (!m_library->hasUserTitle(record.urn) && !reply.title.isEmpty())
        record.title = reply.title;
    flush(); // a video that is not in the database yet goes in first
    m_library->updateContent(record, contentResource(record, reply, m_equipmentOf(reply)));
}

void Indexer::storeNew(const Job &job, const MediaReply &reply)
{
    VideoRecord record;
    record.path = job.path;
    record.url = urlOf(job.path);
    record.fileName = QFileInfo(job.path).fileName();
    record.identity = job.identity;
    record.created = createdOf(reply, job.identity);
    record.arrival = job.arrival;
    if (!reply.title.isEmpty())
        record.title = reply.title;
    const UserData kept = m_library->keptFor(record.url, record.identity);
    if (kept.urn.isEmpty()) {
        record.urn = u"urn:uuid:"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
    } else {
        record.urn = kept.urn;
        record.runTime = kept.runTime;
        record.playCount = kept.playCount;
        record.lastPlayed = kept.lastPlayed;
        if (kept.title)
            record.title = *kept.title;
    }
    m_batched.insert(record.path);
    m_batch.push_back({record, newVideoResource(record, reply, m_equipmentOf(reply))});
    // A lone file does not wait for others.
    if (m_batch.size() >= s_batchSize || (m_jobs.size() == 1 && !job.facts))
        flush();
    else if (!m_batchTimer.isActive())
        m_batchTimer.start();
}

// What is known already waits for no worker.
void Indexer::flushWhenIdle()
{
    if (m_jobs.isEmpty())
        flush();
}

void Indexer::flush()
{
    m_batchTimer.stop();
    if (m_batch.empty())
        return;
    std::vector<NewVideo> batch;
    batch.swap(m_batch);
    m_batched.clear();
    m_library->add(std::move(batch));
}

void Indexer::markBroken(const Job &job, const MediaReply &reply)
{
    qCWarning(lcStore, "%s is left out: %s", qUtf8Printable(job.path), qUtf8Printable(reply.error));
    // A file that could not be opened, or was not tried, may be better the next time.
    if (reply.status != MediaReply::Status::Unreadable && reply.status != MediaReply::Status::Cancelled)
        m_library->journal()->recordBroken(job.path, job.identity, reply.error);
}

void Indexer::finish(const QString &path)
{
    const Job job = m_jobs.take(path);
    m_requests.remove(job.request);
    m_progress.fileDone();
    if (job.newer)
        consider({path, *job.newer, true});
}

void Indexer::onMoved(const QString &from, const QString &to, bool isFolder)
{
    flush();
    QStringList urns;
    if (isFolder) {
        urns = m_library->table().urnsUnder(from);
    } else if (const VideoRecord *known = m_library->table().byPath(from)) {
        urns.append(known->urn);
    }
    for (const QString &urn : std::as_const(urns)) {
        const VideoRecord record = *m_library->table().byUrn(urn);
        const QString path = isFolder ? to + record.path.mid(from.size()) : to;
        // Something that lay in the new place was replaced.
        if (const VideoRecord *replaced = m_library->table().byPath(path); replaced && replaced->urn != urn)
            m_library->remove({replaced->urn});
        relocateTo(urn, path, record.identity);
    }
}

void Indexer::onGone(const QString &path, bool isFolder)
{
    flush();
    if (isFolder) {
        lose(m_library->table().urnsUnder(path));
        return;
    }
    m_library->journal()->forgetBroken(path);
    if (const VideoRecord *known = m_library->table().byPath(path))
        lose({known->urn});
}

// A move between file systems is a copy and a deletion: the video goes on as the copy that was made of it.
// Two files with the same content that lay there side by side are two videos, and so are a file and its copy
// beside it: within a file system nobody needs to copy in order to move.
QString Indexer::copyOf(const VideoRecord &record) const
{
    const QStringList copies = m_library->table().urnsOfContent(record.identity);
    for (const QString &urn : copies) {
        const VideoRecord *copy = m_library->table().byUrn(urn);
        const bool untouched = copy->runTime == 0 && copy->playCount == 0 && !m_library->hasUserTitle(urn);
        const bool cameLater = copy->arrival > record.arrival;
        const bool isElsewhere = copy->identity.device != record.identity.device;
        if (cameLater && isElsewhere && untouched && FileIdentity::ofFile(copy->path))
            return urn;
    }
    return {};
}

void Indexer::lose(const QStringList &urns)
{
    QStringList lost;
    for (const QString &urn : urns) {
        const VideoRecord record = *m_library->table().byUrn(urn);
        const QString copy = copyOf(record);
        if (copy.isEmpty()) {
            lost.append(urn);
            continue;
        }
        const VideoRecord target = *m_library->table().byUrn(copy);
        m_library->remove({copy});
        relocateTo(urn, target.path, target.identity);
    }
    if (!lost.isEmpty())
        m_library->remove(lost);
}

// What may turn up again is forgotten only where the person made nothing of it.
void Indexer::onMissing(const QStringList &paths, bool surely)
{
    for (const QString &path : paths) {
        const VideoRecord *known = m_library->table().byPath(path);
        if (known && (surely || !m_library->journal()->find(known->urn)))
            m_missing.append(path);
    }
    concludeMissing();
}

// Not before it is known whether one of them came back under another name.
void Indexer::concludeMissing()
{
    if (m_missing.isEmpty() || !m_undigested.isEmpty())
        return;
    flush();
    QStringList lost;
    const QStringList paths = std::exchange(m_missing, {});
    for (const QString &path : paths) {
        const VideoRecord *known = m_library->table().byPath(path);
        // Which file systems are there now is asked, not remembered.
        if (known && !m_jobs.contains(path) && wasDeleted(*known, {}))
            lost.append(known->urn);
    }
    lose(lost);
}

void Indexer::onAway(const QString &folder)
{
    m_away.insert(folder);
    m_reader->releaseFilesUnder(folder);
}

void Indexer::onScanFinished(const QString &root)
{
    m_finishedScans.append(root);
    concludeScans();
}

// What is missing may be among the files that were found elsewhere: nothing is lost before all of them are
// known.
void Indexer::concludeScans()
{
    concludeMissing();
    if (m_finishedScans.isEmpty() || !m_undigested.isEmpty())
        return;
    flush();
    const QStringList roots = std::exchange(m_finishedScans, {});
    for (const QString &root : roots) {
        QStringList lost;
        const QStringList urns = m_library->table().urnsUnder(root);
        for (const QString &urn : urns) {
            const VideoRecord &record = *m_library->table().byUrn(urn);
            if (!m_jobs.contains(record.path) && wasDeleted(record, m_devices))
                lost.append(urn);
        }
        lose(lost);
        m_progress.scanEnded();
    }
}

// A file is missed although its folder could be read. When its file system is there it was deleted; otherwise
// the file system may be away, and what lies in its mount point now is another one.
bool Indexer::wasDeleted(const VideoRecord &record, const QSet<quint64> &devices) const
{
    if (isAway(record.path) || FileIdentity::ofFile(record.path))
        return false;
    if (devices.contains(record.identity.device))
        return true;
    QString folder = QFileInfo(record.path).path();
    while (!QFileInfo::exists(folder) && folder.size() > 1)
        folder = QFileInfo(folder).path();
    return deviceOf(folder) == record.identity.device;
}
