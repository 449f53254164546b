// SPDX-License-Identifier: GPL-3.0-or-later
#include "folderfollower.h"

#include "storelog.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_settleCheckMs = 200;
constexpr int s_settledMs = 600; // unchanged for so long: complete
constexpr int s_oldMs = 3000; // not written to for so long: nobody is writing it
constexpr int s_rootCheckMs = 2000;
constexpr int s_rescanMs = 60000;
constexpr int s_filesAtOnce = 200;

std::pair<quint64, quint64> folderKey(const QString &folder)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(folder).constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return {0, 0};
    return {status.st_dev, status.st_ino};
}

void makeThreadQuiet()
{
    const auto thread = id_t(::syscall(SYS_gettid));
    ::setpriority(PRIO_PROCESS, thread, 10);
    constexpr int processClass = 1; // IOPRIO_WHO_PROCESS
    constexpr int bestEffortLast = (2 << 13) | 7;
    ::syscall(SYS_ioprio_set, processClass, thread, bestEffortLast);
}

} // namespace

FolderFollower::FolderFollower(QObject *parent) : QObject(parent) { }

FolderFollower::~FolderFollower()
{
    m_mountNotifier.reset();
    if (m_mountInfo >= 0)
        ::close(m_mountInfo);
}

void FolderFollower::start()
{
    makeThreadQuiet();
    m_inotify = std::make_unique<Inotify>();
    connect(m_inotify.get(), &Inotify::created, this, &FolderFollower::onCreated);
    connect(m_inotify.get(), &Inotify::movedIn, this, &FolderFollower::onCreated);
    connect(m_inotify.get(), &Inotify::written, this, &FolderFollower::onWritten);
    connect(m_inotify.get(), &Inotify::moved, this, &FolderFollower::onMoved);
    connect(m_inotify.get(), &Inotify::gone, this, &FolderFollower::onGone);
    connect(m_inotify.get(), &Inotify::folderLost, this, &FolderFollower::onFolderLost);
    connect(m_inotify.get(), &Inotify::overflowed, this, &FolderFollower::rescanAll);

    const auto timer = [this](int interval, bool singleShot, void (FolderFollower::*slot)()) {
        auto *made = new QTimer(this);
        made->setInterval(interval);
        made->setSingleShot(singleShot);
        connect(made, &QTimer::timeout, this, slot);
        return made;
    };
    m_stepTimer = timer(0, false, &FolderFollower::step);
    m_settleTimer = timer(s_settleCheckMs, false, &FolderFollower::checkSettling);
    m_rootTimer = timer(s_rootCheckMs, false, &FolderFollower::checkRoots);
    m_rescanTimer = timer(s_rescanMs, true, &FolderFollower::rescanAll);
    followMounts();
}

void FolderFollower::addRoot(const QString &root)
{
    if (m_roots.contains(root))
        return;
    m_roots.append(root);
    if (folderKey(root).second == 0) {
        qCInfo(lcStore, "the folder %s is not there yet", qUtf8Printable(root));
        m_absent.insert(root);
        m_rootTimer->start();
        Q_EMIT away(root);
        return;
    }
    scan(root, true);
}

void FolderFollower::scan(const QString &folder, bool isWhole)
{
    for (const Scan &waiting : m_scans) {
        if (waiting.root == folder && waiting.isWhole == isWhole && &waiting != &m_scans.front())
            return;
    }
    Scan scan;
    scan.root = folder;
    scan.isWhole = isWhole;
    scan.folders.push_back(folder);
    m_scans.push_back(std::move(scan));
    if (isWhole)
        Q_EMIT scanStarted(folder);
    m_stepTimer->start();
}

// One folder or one digest a turn, so that events are heard in between.
void FolderFollower::step()
{
    if (!m_digests.empty()) {
        const QString path = m_digests.front();
        m_digests.pop_front();
        Q_EMIT digested(path, contentDigest(path));
    } else if (!m_scans.empty() && !m_waiting) {
        Scan &scan = m_scans.front();
        auto &folders = scan.folders.empty() ? scan.links : scan.folders;
        if (folders.empty()) {
            finishScan();
            return;
        }
        const QString folder = folders.front();
        folders.pop_front();
        scanFolder(&scan, folder);
    } else {
        m_stepTimer->stop();
    }
}

void FolderFollower::scanFolder(Scan *scan, const QString &folder)
{
    const auto key = folderKey(folder);
    if (key.second == 0 || scan->visited.contains(key))
        return;
    scan->visited.insert(key);
    // Watched first: what comes while it is being read is then reported as an event.
    follow(folder);
    QDirIterator entries(folder, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QFileInfo info = entries.fileInfo();
        if (info.isDir()) {
            (info.isSymLink() ? scan->links : scan->folders).push_back(path);
        } else if (!reportTold(path) && mayBeVideo(path)) {
            if (const auto identity = FileIdentity::ofFile(path))
                consider(path, *identity, false);
        }
    }
}

// False where the kernel has no watch left: what happens there is found by looking again.
bool FolderFollower::follow(const QString &folder)
{
    if (m_inotify->watch(folder) != Inotify::Watch::Exhausted)
        return true;
    if (!m_rescanTimer->isActive()) {
        qCWarning(lcStore,
                  "too many folders to follow (fs.inotify.max_user_watches); looking again every minute");
        m_rescanTimer->start();
    }
    return false;
}

void FolderFollower::finishScan()
{
    flush();
    const Scan scan = std::move(m_scans.front());
    m_scans.pop_front();
    if (!scan.isWhole)
        return;
    reportRestOfTold();
    // What vanished while it was read says nothing of its files.
    if (folderKey(scan.root).second == 0)
        Q_EMIT away(scan.root);
    m_heldScans.append(scan.root);
    endHeldScans();
}

// A file that was found but not reported yet may be one that is missed elsewhere.
void FolderFollower::endHeldScans()
{
    const auto held = [this](const QString &root) {
        return std::any_of(m_settling.cbegin(), m_settling.cend(),
                           [](const Settling &file) { return file.holdsScan; })
            && !m_absent.contains(root);
    };
    for (auto it = m_heldScans.begin(); it != m_heldScans.end();) {
        if (held(*it)) {
            ++it;
            continue;
        }
        const QString root = *it;
        it = m_heldScans.erase(it);
        Q_EMIT scanFinished(root);
    }
}

void FolderFollower::consider(const QString &path, const FileIdentity &identity, bool fresh)
{
    const qint64 age = qAbs(QDateTime::currentMSecsSinceEpoch() - identity.modifiedMs);
    if (age > s_oldMs && !fresh) {
        report({path, identity, false});
        return;
    }
    Settling settling{identity, {}, fresh, !fresh};
    settling.unchanged.start();
    m_settling.insert(path, settling);
    if (!m_settleTimer->isActive())
        m_settleTimer->start();
}

void FolderFollower::report(const FoundFile &file)
{
    if (file.identity.size == 0)
        return;
    m_found.append(file);
    if (file.fresh || m_found.size() >= s_filesAtOnce)
        flush();
}

void FolderFollower::flush()
{
    if (m_found.isEmpty())
        return;
    QList<FoundFile> files;
    files.swap(m_found);
    Q_EMIT found(files);
}

void FolderFollower::checkSettling()
{
    for (auto it = m_settling.begin(); it != m_settling.end();) {
        const auto now = FileIdentity::ofFile(it.key());
        if (!now) {
            it = m_settling.erase(it);
        } else if (!now->sameState(it->seen)) {
            it->seen = *now;
            it->holdsScan = false; // somebody writes it
            it->unchanged.restart();
            ++it;
        } else if (it->unchanged.elapsed() >= s_settledMs) {
            const QString path = it.key();
            const bool fresh = it->fresh;
            it = m_settling.erase(it);
            if (mayBeVideo(path))
                report({path, *now, fresh});
        } else {
            ++it;
        }
    }
    flush();
    endHeldScans();
    if (m_settling.isEmpty())
        m_settleTimer->stop();
}

void FolderFollower::onCreated(const QString &path, bool isFolder)
{
    const QFileInfo info(path);
    if (isHiddenName(info.fileName()))
        return;
    if (isFolder || info.isDir())
        scan(path, false);
    else if (const auto identity = FileIdentity::ofFile(path))
        consider(path, *identity, true);
}

void FolderFollower::onWritten(const QString &path)
{
    m_settling.remove(path);
    const auto identity = FileIdentity::ofFile(path);
    if (identity && mayBeVideo(path))
        report({path, *identity, true});
}

void FolderFollower::onMoved(const QString &from, const QString &to, bool isFolder)
{
    if (isHiddenName(QFileInfo(to).fileName())) {
        if (isFolder)
            m_inotify->unwatch(to);
        Q_EMIT gone(from, isFolder);
        return;
    }
    if (isFolder) {
        Q_EMIT moved(from, to, true);
        // It may hold what was passed over while it had a hidden name, or what had not been read yet.
        scan(to, false);
        return;
    }
    m_settling.remove(from);
    if (!mayBeVideo(to)) {
        Q_EMIT gone(from, false);
        return;
    }
    Q_EMIT moved(from, to, false);
    onWritten(to);
}

void FolderFollower::onGone(const QString &path, bool isFolder)
{
    m_settling.remove(path);
    flush(); // in the order in which it happened
    Q_EMIT gone(path, isFolder);
}

void FolderFollower::onFolderLost(const QString &folder, bool unmounted)
{
    if (!unmounted && !isRoot(folder))
        return; // the parent folder tells the same
    m_inotify->unwatch(folder);
    Q_EMIT away(folder);
    if (isRoot(folder)) {
        m_absent.insert(folder);
        m_rootTimer->start();
    }
}

void FolderFollower::checkRoots()
{
    const QSet<QString> absent = m_absent;
    for (const QString &root : absent) {
        if (folderKey(root).second == 0)
            continue;
        m_absent.remove(root);
        scan(root, true);
    }
    if (m_absent.isEmpty())
        m_rootTimer->stop();
}

void FolderFollower::rescanAll()
{
    for (const QString &root : std::as_const(m_roots)) {
        if (!m_absent.contains(root))
            scan(root, true);
    }
    // Files outside of these folders.
    const QHash<QString, bool> unfollowed = std::exchange(m_unfollowed, {});
    for (auto it = unfollowed.cbegin(); it != unfollowed.cend(); ++it)
        checkDropped({it.key()}, it.value());
}

void FolderFollower::setWaiting(bool waiting)
{
    m_waiting = waiting;
    if (!m_scans.empty())
        m_stepTimer->start();
}

bool FolderFollower::awaitsScan(const QString &path) const
{
    return std::any_of(m_scans.cbegin(), m_scans.cend(),
                       [&](const Scan &scan) { return scan.isWhole && path.startsWith(scan.root + u'/'); });
}

void FolderFollower::takeTold(const QList<ToldFile> &files)
{
    for (const ToldFile &file : files) {
        if (isHiddenName(file.path.section(u'/', -1)))
            continue;
        if (awaitsScan(file.path))
            m_told.insert(file.path, file);
        else
            lookAt(file);
    }
    flush();
}

// What the index read of another state of the file says nothing of this one. It will tell again; and in a
// folder that is followed the file is read here.
void FolderFollower::lookAt(const ToldFile &file)
{
    const auto identity = FileIdentity::ofFile(file.path);
    if (identity && file.agreesWith(*identity))
        report({file.path, *identity, file.fresh, !file.isRead, file.facts});
}

// True when the file at the path needs no further look.
bool FolderFollower::reportTold(const QString &path)
{
    const auto told = m_told.constFind(path);
    if (told == m_told.cend())
        return false;
    const ToldFile file = *told;
    m_told.erase(told);
    const auto identity = FileIdentity::ofFile(path);
    if (!file.facts || !identity || !file.agreesWith(*identity))
        return false;
    report({path, *identity, false, false, file.facts});
    return true;
}

// Told while the folders were being read, or in a folder that cannot be reached from the root.
void FolderFollower::reportRestOfTold()
{
    for (auto it = m_told.begin(); it != m_told.end();) {
        if (awaitsScan(it.key())) {
            ++it;
            continue;
        }
        lookAt(*it);
        it = m_told.erase(it);
    }
    flush();
}

// A file that was replaced at once may be dropped for good by an index that saw the deletion last: what is
// there is read here.
void FolderFollower::checkDropped(const QStringList &paths, bool indexRuns)
{
    QStringList absent;
    for (const QString &path : paths) {
        const bool isVideo = FileIdentity::ofFile(path) && mayBeVideo(path);
        const bool isFollowed = isVideo && follow(QFileInfo(path).path());
        // Looked for once more when it is followed: nobody would tell that it went in between.
        const auto identity = FileIdentity::ofFile(path);
        if (!identity) {
            absent.append(path);
        } else if (isVideo) {
            if (!isFollowed)
                m_unfollowed.insert(path, indexRuns);
            consider(path, *identity, false);
        }
    }
    flush(); // what came first: it may be one of these under another name
    if (!absent.isEmpty())
        Q_EMIT missing(absent, indexRuns);
}

void FolderFollower::release(const QString &folder)
{
    m_inotify->unwatch(folder);
    const auto below = [&](const QString &path) { return path == folder || path.startsWith(folder + u'/'); };
    std::erase_if(m_scans, [&](const Scan &scan) { return below(scan.root); });
    for (Scan &scan : m_scans) {
        std::erase_if(scan.folders, below);
        std::erase_if(scan.links, below);
    }
    m_settling.removeIf([&](const auto &entry) { return below(entry.key()); });
    Q_EMIT away(folder);
}

void FolderFollower::digest(const QString &path, bool urgent)
{
    if (urgent)
        m_digests.push_front(path);
    else
        m_digests.push_back(path);
    m_stepTimer->start();
}

// Mounting over a folder makes no inotify event; the kernel flags this file when the mounts change.
void FolderFollower::followMounts()
{
    m_mountInfo = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    if (m_mountInfo < 0)
        return;
    m_mountNotifier = std::make_unique<QSocketNotifier>(m_mountInfo, QSocketNotifier::Exception);
    connect(m_mountNotifier.get(), &QSocketNotifier::activated, this, &FolderFollower::readMounts);
}

void FolderFollower::readMounts()
{
    Q_EMIT mountsChanged();
    QFile file(u"/proc/self/mountinfo"_s);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QStringList mounts;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        // Blanks in the mount point are written as \040.
        const QList<QByteArray> fields = line.split(' ');
        const QString point = QFile::decodeName(fields.value(4).replace("\\040", " "));
        const QString device = QString::fromLatin1(fields.value(2));
        for (const QString &root : std::as_const(m_roots)) {
            if (point == root || point.startsWith(root + u'/'))
                mounts.append(point + u' ' + device);
        }
    }
    if (mounts == m_mounts)
        return;
    m_mounts = mounts;
    rescanAll();
}
