// SPDX-License-Identifier: GPL-3.0-or-later
#include "folderfollower.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {
std::atomic<bool> s_watchesRanOut = false;
// The file that somebody deletes just before the next watch is there.
QByteArray s_deletedBeforeWatch;
} // namespace

// In place of the C library's: the kernel may have no watch left.
extern "C" int inotify_add_watch(int descriptor, const char *path, uint32_t events)
{
    if (s_watchesRanOut) {
        errno = ENOSPC;
        return -1;
    }
    if (!s_deletedBeforeWatch.isEmpty())
        ::unlink(std::exchange(s_deletedBeforeWatch, {}).constData());
    return int(::syscall(SYS_inotify_add_watch, descriptor, path, events));
}

// What happens in the folders of a person, as the indexer hears of it. File systems are real; the follower
// has its thread.
class StoreFollower : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aFirstScanFindsAllButHiddenFolders();
    void linksThatGoInCirclesEnd();
    void aLinkedFolderIsKnownByItsOwnPath();
    void aFileIsReportedWhenItIsClosed();
    void aHardLinkIsReportedWithoutAnybodyWriting();
    void anEmptyFileIsNone();
    void aNewFolderIsFollowedWithAllBelowIt();
    void aFolderThatIsMovedInIsScanned();
    void renamesAreToldWithBothNames();
    void aRenamedFolderIsStillFollowed();
    void aFileMovedOutOfSightIsGone();
    void aDownloadThatGetsItsNameIsFound();
    void aRootThatIsNotThereIsFoundWhenItComes();
    void aRootThatIsTakenAwayIsAwayAndNotDeleted();
    void whatWasToldIsBelievedInTheStateThatWasTold();
    void aDroppedFileThatIsThereIsFollowed();
    void aDroppedFileThatGoesMeanwhileIsMissing();
    void aDroppedFileIsLookedAtAgainWhereWatchesRanOut();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_root + u'/' + name; }
    bool write(const QString &name, bool old = false);
    void start();
    [[nodiscard]] bool wasFound(const QString &name) const { return m_found.contains(at(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_root;
    std::unique_ptr<QThread> m_thread;
    FolderFollower *m_follower = nullptr;
    QStringList m_found;
    QStringList m_believed; // found with its facts
    QStringList m_missing;
    QStringList m_gone;
    QStringList m_moved;
    QStringList m_away;
    int m_finished = 0;
};

void StoreFollower::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_root = m_folder->filePath(u"Videos"_s);
    QVERIFY(QDir().mkpath(m_root));
    m_found.clear();
    m_believed.clear();
    m_missing.clear();
    m_gone.clear();
    m_moved.clear();
    m_away.clear();
    m_finished = 0;
    s_watchesRanOut = false;
    qRegisterMetaType<QList<FoundFile>>();
    m_thread = std::make_unique<QThread>();
    m_follower = new FolderFollower;
    m_follower->moveToThread(m_thread.get());
    connect(m_thread.get(), &QThread::started, m_follower, &FolderFollower::start);
    connect(m_thread.get(), &QThread::finished, m_follower, &QObject::deleteLater);
    connect(m_follower, &FolderFollower::found, this, [this](const QList<FoundFile> &files) {
        for (const FoundFile &file : files)
            (file.facts ? m_believed : m_found).append(file.path);
    });
    connect(m_follower, &FolderFollower::missing, this,
            [this](const QStringList &paths, bool) { m_missing += paths; });
    connect(m_follower, &FolderFollower::gone, this,
            [this](const QString &path, bool) { m_gone.append(path); });
    connect(m_follower, &FolderFollower::moved, this, [this](const QString &from, const QString &to, bool) {
        m_moved.append(from.section(u'/', -1) + u" -> "_s + to.section(u'/', -1));
    });
    connect(m_follower, &FolderFollower::away, this,
            [this](const QString &folder) { m_away.append(folder); });
    connect(m_follower, &FolderFollower::scanFinished, this, [this] { ++m_finished; });
}

void StoreFollower::cleanup()
{
    m_thread->quit();
    m_thread->wait();
}

bool StoreFollower::write(const QString &name, bool old)
{
    QFile file(at(name));
    if (!file.open(QIODevice::WriteOnly) || file.write("video") != 5 || !file.flush())
        return false;
    return !old
        || file.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime);
}

void StoreFollower::start()
{
    m_thread->start();
    QMetaObject::invokeMethod(m_follower, [this] { m_follower->addRoot(m_root); });
    QTRY_COMPARE(m_finished, 1);
}

void StoreFollower::aFirstScanFindsAllButHiddenFolders()
{
    QVERIFY(QDir(m_root).mkpath(u"deep/er"_s) && QDir(m_root).mkpath(u".hidden"_s));
    QVERIFY(write(u"a.mp4"_s, true) && write(u"deep/er/b.mkv"_s, true) && write(u".hidden/c.mp4"_s, true)
            && write(u".d.mp4"_s, true) && write(u"e.txt"_s, true));
    start();
    m_found.sort();
    QCOMPARE(m_found, QStringList({at(u"a.mp4"_s), at(u"deep/er/b.mkv"_s)}));
}

void StoreFollower::linksThatGoInCirclesEnd()
{
    QVERIFY(QDir(m_root).mkpath(u"a/b"_s) && write(u"a/b/1.mp4"_s, true));
    QVERIFY(QFile::link(m_root, at(u"a/b/up"_s)) && QFile::link(at(u"a"_s), at(u"again"_s)));
    start();
    QCOMPARE(m_found, QStringList({at(u"a/b/1.mp4"_s)}));
}

void StoreFollower::aLinkedFolderIsKnownByItsOwnPath()
{
    const QString outside = m_folder->filePath(u"outside"_s);
    QVERIFY(QDir().mkpath(outside) && QDir(m_root).mkpath(u"z"_s) && write(u"z/1.mp4"_s, true));
    QVERIFY(QFile::link(at(u"z"_s), at(u"a"_s)) && QFile::link(outside, at(u"other"_s)));
    QVERIFY(QFile::copy(at(u"z/1.mp4"_s), outside + u"/2.mp4"_s));
    start();
    QTRY_COMPARE(m_found.size(), 2);
    m_found.sort();
    QCOMPARE(m_found, QStringList({at(u"other/2.mp4"_s), at(u"z/1.mp4"_s)}));
}

void StoreFollower::aFileIsReportedWhenItIsClosed()
{
    start();
    QVERIFY(write(u"a.mp4"_s));
    QTRY_VERIFY(wasFound(u"a.mp4"_s));
}

void StoreFollower::aHardLinkIsReportedWithoutAnybodyWriting()
{
    const QString outside = m_folder->filePath(u"b.mp4"_s);
    QFile file(outside);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("video") == 5);
    file.close();
    start();
    QCOMPARE(::link(qPrintable(outside), qPrintable(at(u"b.mp4"_s))), 0);
    QTRY_VERIFY_WITH_TIMEOUT(wasFound(u"b.mp4"_s), 3000);
}

void StoreFollower::anEmptyFileIsNone()
{
    start();
    QFile empty(at(u"empty.mp4"_s));
    QVERIFY(empty.open(QIODevice::WriteOnly));
    empty.close();
    QVERIFY(write(u"later.mp4"_s));
    QTRY_VERIFY(wasFound(u"later.mp4"_s));
    QVERIFY(!wasFound(u"empty.mp4"_s));
}

void StoreFollower::aNewFolderIsFollowedWithAllBelowIt()
{
    start();
    QVERIFY(QDir(m_root).mkpath(u"x/y/z"_s));
    QVERIFY(write(u"x/y/z/early.mp4"_s));
    QTRY_VERIFY(wasFound(u"x/y/z/early.mp4"_s));
    QVERIFY(write(u"x/y/z/late.mp4"_s));
    QTRY_VERIFY(wasFound(u"x/y/z/late.mp4"_s));
}

void StoreFollower::aFolderThatIsMovedInIsScanned()
{
    start();
    const QString outside = m_folder->filePath(u"film"_s);
    QVERIFY(QDir().mkpath(outside + u"/part"_s));
    QVERIFY(write(u"seed.mp4"_s));
    QTRY_VERIFY(wasFound(u"seed.mp4"_s));
    QVERIFY(QFile::copy(at(u"seed.mp4"_s), outside + u"/part/1.mp4"_s));
    QVERIFY(QDir().rename(outside, at(u"film"_s)));
    QTRY_VERIFY(wasFound(u"film/part/1.mp4"_s));
}

void StoreFollower::renamesAreToldWithBothNames()
{
    QVERIFY(write(u"a.mp4"_s, true));
    start();
    QVERIFY(QFile::rename(at(u"a.mp4"_s), at(u"b.mp4"_s)));
    QTRY_COMPARE(m_moved, QStringList({u"a.mp4 -> b.mp4"_s}));
    QVERIFY(m_gone.isEmpty());
}

void StoreFollower::aRenamedFolderIsStillFollowed()
{
    QVERIFY(QDir(m_root).mkpath(u"old/deep"_s) && write(u"old/deep/1.mp4"_s, true));
    start();
    QVERIFY(QDir().rename(at(u"old"_s), at(u"new"_s)));
    QTRY_COMPARE(m_moved, QStringList({u"old -> new"_s}));
    QVERIFY(write(u"new/deep/2.mp4"_s));
    QTRY_VERIFY(wasFound(u"new/deep/2.mp4"_s));
    QVERIFY(QFile::remove(at(u"new/deep/1.mp4"_s)));
    QTRY_COMPARE(m_gone, QStringList({at(u"new/deep/1.mp4"_s)}));
}

void StoreFollower::aFileMovedOutOfSightIsGone()
{
    QVERIFY(write(u"a.mp4"_s, true) && write(u"b.mp4"_s, true) && write(u"c.mp4"_s, true));
    QVERIFY(QDir(m_root).mkpath(u".trash"_s));
    start();
    QVERIFY(QFile::rename(at(u"a.mp4"_s), m_folder->filePath(u"a.mp4"_s)));
    QTRY_COMPARE(m_gone, QStringList({at(u"a.mp4"_s)}));
    QVERIFY(QFile::rename(at(u"b.mp4"_s), at(u".trash/b.mp4"_s)));
    QTRY_COMPARE(m_gone.size(), 2);
    QVERIFY(QFile::rename(at(u"c.mp4"_s), at(u".c.mp4"_s)));
    QTRY_COMPARE(m_gone.size(), 3);
    QVERIFY(m_moved.isEmpty());
}

void StoreFollower::aDownloadThatGetsItsNameIsFound()
{
    start();
    QVERIFY(write(u"film.mp4.part"_s));
    QVERIFY(QFile::rename(at(u"film.mp4.part"_s), at(u"film.mp4"_s)));
    QTRY_VERIFY(wasFound(u"film.mp4"_s));
    QVERIFY(!wasFound(u"film.mp4.part"_s));
}

void StoreFollower::aRootThatIsNotThereIsFoundWhenItComes()
{
    const QString later = m_folder->filePath(u"later"_s);
    start();
    QMetaObject::invokeMethod(m_follower, [this, later] { m_follower->addRoot(later); });
    QTRY_COMPARE(m_away, QStringList({later}));
    QVERIFY(QDir().mkpath(later) && write(u"a.mp4"_s));
    QVERIFY(QFile::copy(at(u"a.mp4"_s), later + u"/b.mp4"_s));
    QTRY_VERIFY_WITH_TIMEOUT(m_found.contains(later + u"/b.mp4"_s), 10000);
}

void StoreFollower::aRootThatIsTakenAwayIsAwayAndNotDeleted()
{
    QVERIFY(write(u"a.mp4"_s, true));
    start();
    QVERIFY(QDir().rename(m_root, m_folder->filePath(u"elsewhere"_s)));
    QTRY_COMPARE(m_away, QStringList({m_root}));
    QVERIFY(m_gone.isEmpty());
    QVERIFY(QDir().rename(m_folder->filePath(u"elsewhere"_s), m_root));
    QTRY_COMPARE_WITH_TIMEOUT(m_finished, 2, 10000);
    QVERIFY(m_gone.isEmpty());
}

void StoreFollower::whatWasToldIsBelievedInTheStateThatWasTold()
{
    QVERIFY(write(u"a.mp4"_s, true) && write(u"b.mp4"_s, true) && write(u"c.mp4"_s, true));
    QVERIFY(write(u"../outside.mp4"_s, true));
    const auto tell = [this](const QString &name, qint64 size) {
        ToldFile file;
        file.path = QDir::cleanPath(at(name));
        file.size = size;
        file.modified = QFileInfo(file.path).lastModified().toSecsSinceEpoch();
        file.isRead = true;
        file.facts = std::make_shared<const MediaReply>();
        return file;
    };
    const QList<ToldFile> files{tell(u"a.mp4"_s, 5), tell(u"b.mp4"_s, 6), tell(u"gone.mp4"_s, 5),
                                tell(u"../outside.mp4"_s, 5)};
    m_thread->start();
    QMetaObject::invokeMethod(m_follower, [this, files] {
        m_follower->setWaiting(true);
        m_follower->addRoot(m_root);
        m_follower->takeTold(files);
        m_follower->setWaiting(false);
    });
    QTRY_COMPARE(m_finished, 1);
    m_believed.sort();
    m_found.sort();
    QCOMPARE(m_believed, QStringList({at(u"a.mp4"_s), QDir::cleanPath(at(u"../outside.mp4"_s))}));
    QCOMPARE(m_found, QStringList({at(u"b.mp4"_s), at(u"c.mp4"_s)}));
}

void StoreFollower::aDroppedFileThatIsThereIsFollowed()
{
    start();
    const QString outside = m_folder->filePath(u"outside.mp4"_s);
    QVERIFY(write(u"../outside.mp4"_s, true));
    QMetaObject::invokeMethod(m_follower, [this, outside] {
        m_follower->checkDropped({outside, at(u"gone.mp4"_s)}, true);
    });
    QTRY_COMPARE(m_missing, QStringList({at(u"gone.mp4"_s)}));
    QTRY_VERIFY(m_found.contains(outside));
    QVERIFY(QFile::remove(outside));
    QTRY_VERIFY(m_gone.contains(outside));
}

void StoreFollower::aDroppedFileThatGoesMeanwhileIsMissing()
{
    start();
    const QString outside = m_folder->filePath(u"outside/a.mp4"_s);
    QVERIFY(QDir(m_folder->path()).mkpath(u"outside"_s) && write(u"../outside/a.mp4"_s, true));
    QMetaObject::invokeMethod(m_follower, [this, outside] {
        s_deletedBeforeWatch = QFile::encodeName(outside);
        m_follower->checkDropped({outside}, true);
    });
    QTRY_COMPARE(m_missing, QStringList({outside}));
    QVERIFY(m_found.isEmpty());
}

void StoreFollower::aDroppedFileIsLookedAtAgainWhereWatchesRanOut()
{
    start();
    const QString outside = m_folder->filePath(u"outside.mp4"_s);
    QVERIFY(write(u"../outside.mp4"_s, true));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"too many folders to follow.*"_s));
    s_watchesRanOut = true;
    QMetaObject::invokeMethod(m_follower, [this, outside] { m_follower->checkDropped({outside}, true); });
    QTRY_VERIFY(m_found.contains(outside));
    QVERIFY(QFile::remove(outside));
    // What a minute brings.
    QMetaObject::invokeMethod(m_follower, &FolderFollower::rescanAll);
    QTRY_COMPARE(m_missing, QStringList({outside}));
    QVERIFY(m_gone.isEmpty());
}

QTEST_GUILESS_MAIN(StoreFollower)
#include "store_follower.moc"
