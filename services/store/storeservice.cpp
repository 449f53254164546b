// SPDX-License-Identifier: GPL-3.0-or-later
#include "storeservice.h"

#include "folderfollower.h"
#include "indexmirror.h"
#include "storelog.h"
#include "videoresource.h"

#include "platform/system/settingsmanager.h"
#include "platform/system/systeminformation.h"

#include <QDBusConnection>
#include <QDir>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr unsigned s_threadEndMs = 2000;
} // namespace

StoreService::StoreService(const StorePaths &paths, const ReaderFactory &makeReader, QObject *parent)
    : QObject(parent),
      m_paths(paths),
      m_journal(paths.journal),
      m_database(paths.database),
      m_library(&m_database, &m_journal, &m_feed),
      m_reader(makeReader()),
      m_indexer(std::make_unique<Indexer>(&m_library, m_reader.get(), &StoreService::equipmentOf)),
      m_facts(m_reader.get()),
      m_recorded(&m_database, &m_library),
      m_follower(new FolderFollower)
{
    qRegisterMetaType<QList<FoundFile>>();
    m_follower->moveToThread(&m_thread);
    connect(&m_thread, &QThread::started, m_follower, &FolderFollower::start);
    connect(&m_thread, &QThread::finished, m_follower, &QObject::deleteLater);
    connectParts();
    connectFollower();
}

StoreService::~StoreService()
{
    disconnect(m_follower, nullptr, m_indexer.get(), nullptr);
    m_thread.quit();
    if (!m_thread.wait(s_threadEndMs)) {
        qCWarning(lcStore, "a file system does not answer; leaving without waiting for it");
        m_thread.terminate();
        m_thread.wait();
    }
}

bool StoreService::start()
{
    if (!m_paths.prepare())
        return false;
    m_journal.open();
    if (!m_peers.listen(m_paths.socketFolder))
        return false;
    m_database.open();
    return true;
}

void StoreService::connectParts()
{
    connect(&m_database, &Database::readerReady, this, [this] {
        m_peers.serve(m_database.reader());
        answerWaiting();
    });
    connect(&m_database, &Database::movedAside, this, [this] { m_peers.serve(nullptr); });
    connect(&m_database, &Database::unavailable, this, &StoreService::answerWaiting);
    connect(&m_database, &Database::healthyChanged, this, &StoreService::announceHealth);
    connect(&m_feed, &ChangeFeed::changed, &m_peers, &PeerServer::sendChanges);
    connect(&m_library, &VideoLibrary::reset, &m_peers, &PeerServer::sendReset);
    connect(&m_peers, &PeerServer::updateReceived, this, [this](quint64 ticket, const QStringList &texts) {
        m_library.applyUpdate(texts, [this, ticket](const QString &error) { m_peers.answer(ticket, error); });
    });
    connect(m_indexer->progress(), &ScanProgress::changed, this, &StoreService::ProgressChanged);
}

void StoreService::connectFollower()
{
    connect(m_indexer.get(), &Indexer::digestWanted, m_follower, &FolderFollower::digest);
    connect(m_follower, &FolderFollower::scanStarted, m_indexer.get(), &Indexer::onScanStarted);
    connect(m_follower, &FolderFollower::found, m_indexer.get(), &Indexer::onFound);
    connect(m_follower, &FolderFollower::scanFinished, m_indexer.get(), &Indexer::onScanFinished);
    connect(m_follower, &FolderFollower::moved, m_indexer.get(), &Indexer::onMoved);
    connect(m_follower, &FolderFollower::gone, m_indexer.get(), &Indexer::onGone);
    connect(m_follower, &FolderFollower::missing, m_indexer.get(), &Indexer::onMissing);
    connect(m_follower, &FolderFollower::away, m_indexer.get(), &Indexer::onAway);
    connect(m_follower, &FolderFollower::digested, m_indexer.get(), &Indexer::onDigested);
    connect(this, &StoreService::rootAdded, m_follower, &FolderFollower::addRoot);
    // Files are compared with the store: not before all of that is known, and again when it is another.
    connect(&m_library, &VideoLibrary::loaded, this, &StoreService::followFolders);
}

void StoreService::followFolders()
{
    const auto setWaiting = [this](bool waiting) {
        QMetaObject::invokeMethod(m_follower,
                                  [follower = m_follower, waiting] { follower->setWaiting(waiting); });
    };
    if (m_mirror)
        setWaiting(true);
    if (m_thread.isRunning()) {
        QMetaObject::invokeMethod(m_follower, &FolderFollower::rescanAll);
    } else {
        m_thread.start();
        for (const QString &root : std::as_const(m_roots))
            Q_EMIT rootAdded(root);
    }
    if (m_mirror)
        m_mirror->tellAll();
}

void StoreService::followDesktopIndex()
{
    m_mirror = new IndexMirror(QDBusConnection::sessionBus(), IndexMirror::defaultPatienceMs, this);
    connect(m_mirror, &IndexMirror::told, m_follower, &FolderFollower::takeTold);
    connect(m_mirror, &IndexMirror::dropped, m_follower,
            [follower = m_follower](const QStringList &paths) { follower->checkDropped(paths, true); });
    connect(m_mirror, &IndexMirror::toldAll, this,
            [this](const QSet<QString> &paths) { checkOutsiders(paths, true); });
    connect(m_mirror, &IndexMirror::silent, this, [this] { checkOutsiders({}, false); });
    connect(m_mirror, &IndexMirror::settled, m_follower,
            [follower = m_follower] { follower->setWaiting(false); });
    connect(m_follower, &FolderFollower::mountsChanged, m_mirror, &IndexMirror::onMountsChanged);
}

// Videos of folders that only the index follows: what it does not have any more may have been deleted while
// nobody looked. Where there is no index, their folders are followed from here.
void StoreService::checkOutsiders(const QSet<QString> &told, bool indexRuns)
{
    const auto isFollowed = [this](const QString &path) {
        return std::any_of(m_roots.cbegin(), m_roots.cend(),
                           [&](const QString &root) { return path.startsWith(root + u'/'); });
    };
    QStringList paths;
    const QStringList urns = m_library.table().urns();
    for (const QString &urn : urns) {
        const QString path = m_library.table().byUrn(urn)->path;
        if (!path.isEmpty() && !told.contains(path) && !isFollowed(path))
            paths.append(path);
    }
    if (!paths.isEmpty())
        QMetaObject::invokeMethod(m_follower, [follower = m_follower, paths, indexRuns] {
            follower->checkDropped(paths, indexRuns);
        });
}

void StoreService::addRoot(const QString &path)
{
    const QString root = QDir::cleanPath(path);
    if (m_roots.contains(root))
        return;
    m_roots.append(root);
    if (m_thread.isRunning())
        Q_EMIT rootAdded(root);
}

void StoreService::releaseFolder(const QString &folder)
{
    m_reader->releaseFilesUnder(folder);
    QMetaObject::invokeMethod(m_follower, [follower = m_follower, folder] { follower->release(folder); });
}

void StoreService::answerWaiting()
{
    m_answerable = true;
    const QList<QDBusMessage> waiting = std::exchange(m_waitingForSocket, {});
    for (const QDBusMessage &message : waiting)
        QDBusConnection::sessionBus().send(message.createReply(m_peers.address()));
}

void StoreService::announceHealth(bool healthy)
{
    QDBusMessage signal = QDBusMessage::createSignal(
        u"/com/harrow/Kestrel/Store"_s, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s);
    signal << u"com.harrow.Kestrel.Store"_s << QVariantMap{{u"Healthy"_s, healthy}} << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

QString StoreService::Socket()
{
    if (!m_answerable && calledFromDBus()) {
        setDelayedReply(true);
        m_waitingForSocket.append(message());
    }
    return m_peers.address();
}

void StoreService::AddRoot(const QString &path)
{
    if (QDir::isAbsolutePath(path))
        addRoot(path);
    else if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, u"not an absolute path"_s);
}

void StoreService::RecordPlay(const QString &urn)
{
    m_library.recordPlay(urn);
}

QVariantMap StoreService::Facts(const QString &urn)
{
    if (!calledFromDBus())
        return {};
    const VideoRecord *video = m_library.table().byUrn(urn);
    if (!video) {
        sendErrorReply(QDBusError::InvalidArgs, u"no such video"_s);
        return {};
    }
    setDelayedReply(true);
    m_facts.ask(video->path, message());
    return {};
}

QList<int> StoreService::RecordedBetween(qlonglong from, qlonglong until, qlonglong around, uint most)
{
    if (!calledFromDBus())
        return {};
    setDelayedReply(true);
    const QDBusMessage question = message();
    const auto answer = [question](const QList<int> &ids) {
        QDBusConnection::sessionBus().send(question.createReply(QVariant::fromValue(ids)));
    };
    if (!m_recorded.ask({from, until, around, int(qMin(most, uint(RecordedDesk::mostRows)))}, answer))
        sendErrorReply(QDBusError::LimitsExceeded, u"too many questions wait"_s);
    return {};
}

bool StoreService::Progress(uint &seen, uint &done)
{
    const ScanProgress *progress = m_indexer->progress();
    seen = progress->seen();
    done = progress->done();
    return progress->isScanning();
}

// The library leaves out what this device's own camera made, so that equipment is only stored where that is
// wanted.
QString StoreService::equipmentOf(const MediaReply &reply)
{
    const QString equipment = equipmentUrn(reply.cameraMake, reply.cameraModel);
    const SystemInformation *device = SystemInformation::instance();
    // These names come encoded.
    const QString own = u"urn:equipment:%1:%2:"_s.arg(device->manufacturer(), device->model());
    if (equipment.compare(own, Qt::CaseInsensitive) == 0 && !SettingsManager::instance()->hideOwnRecordings())
        return {};
    return equipment;
}
