// SPDX-License-Identifier: GPL-3.0-or-later
#include "filecopyfixture.h"
#include "support/mountnamespace.h"

#include <QTest>

#include <sys/mount.h>
#include <sys/statvfs.h>

using namespace Qt::Literals::StringLiterals;

Q_DECLARE_METATYPE(CopyFault)

// Disks that are full, locked, or pulled out in the middle.
class TestFileCopyDisks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void toAnotherFileSystem();
    void aDiskThatIsTooSmallIsToldAtOnce();
    void aDiskThatFillsUp_data();
    void aDiskThatFillsUp();
    void aDiskWithRoomForHoles();
    void aDiskThatMayNotBeWrittenTo();
    void aDiskThatIsPulledOut();
    void aDiskThatTellsNoRoom();

private:
    [[nodiscard]] bool mount(const char *type, const char *options)
    {
        m_mounted = ::mount("card", f->path("to").constData(), type, 0, options) == 0;
        return m_mounted;
    }
    [[nodiscard]] quint64 freeBlocks() const
    {
        struct statvfs space = {};
        return ::statvfs(f->path("to").constData(), &space) == 0 ? space.f_bavail : 0;
    }

    std::unique_ptr<FileCopyFixture> f;
    bool m_mounted = false;
};

void TestFileCopyDisks::init()
{
    f = std::make_unique<FileCopyFixture>();
}

void TestFileCopyDisks::cleanup()
{
    if (std::exchange(m_mounted, false))
        QCOMPARE(::umount2(f->path("to").constData(), MNT_DETACH), 0);
}

void TestFileCopyDisks::toAnotherFileSystem()
{
    QVERIFY(mount("tmpfs", "size=8m"));
    const QByteArray content = QByteArray("film").repeated(1234567);
    QVERIFY(f->make("from/a.mp4", content));
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::None);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QVERIFY(f->read("to/b.mp4") == content);
}

void TestFileCopyDisks::aDiskThatIsTooSmallIsToldAtOnce()
{
    QVERIFY(mount("tmpfs", "size=1m"));
    QVERIFY(f->make("from/a.mp4", QByteArray(4 << 20, 'x')));
    qint64 copied = 0;
    CopyJob job(f->request());
    CopyOutcome outcome;
    job.progress = [&copied](qint64 done, qint64) { copied = done; };
    job.ended = [&outcome](const CopyOutcome &end) { outcome = end; };
    runCopy(job);
    QCOMPARE(outcome.fault, CopyFault::NoSpace);
    QCOMPARE(copied, 0);
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopyDisks::aDiskThatFillsUp_data()
{
    QTest::addColumn<bool>("unnamed");
    QTest::newRow("unnamed") << true;
    QTest::newRow("hidden") << false;
}

// Somebody else writes to it as well, so that it had the room when the copy began.
void TestFileCopyDisks::aDiskThatFillsUp()
{
    QFETCH(bool, unnamed);
    QVERIFY(mount("tmpfs", "size=6m"));
    QVERIFY(f->make("from/a.mp4", QByteArray(4 << 20, 'x')));
    FileCopy::Request request = f->request();
    request.kind = unnamed ? HiddenFile::Kind::Unnamed : HiddenFile::Kind::Hidden;
    const CopyOutcome outcome = FileCopyFixture::run(
        request, [this] { QVERIFY(f->make("to/theirs.mp4", QByteArray(3 << 20, 'y'))); });
    QCOMPARE(outcome.fault, CopyFault::NoSpace);
    QCOMPARE(f->entries(), QStringList{u"theirs.mp4"_s});
    QVERIFY(freeBlocks() * 4096 > 2 << 20); // nothing holds the room
    // With room again it can be saved under the same name.
    QVERIFY(QFile::remove(QFile::decodeName(f->path("to/theirs.mp4"))));
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::None);
}

void TestFileCopyDisks::aDiskWithRoomForHoles()
{
    QVERIFY(mount("tmpfs", "size=1m"));
    QVERIFY(f->makeSparse("from/a.mp4", 4 << 20));
    // It may fit, by what its blocks say; it does not, since holes are filled.
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::NoSpace);
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopyDisks::aDiskThatMayNotBeWrittenTo()
{
    QVERIFY(mount("tmpfs", "size=1m,ro"));
    QCOMPARE(::mount(nullptr, f->path("to").constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    QVERIFY(f->make("from/a.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::ReadOnly);
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopyDisks::aDiskThatIsPulledOut()
{
    QVERIFY(mount("tmpfs", "size=8m"));
    QVERIFY(f->make("from/a.mp4", QByteArray(4 << 20, 'x')));
    const CopyOutcome outcome = FileCopyFixture::run(f->request(), [this] {
        m_mounted = false;
        QCOMPARE(::umount2(f->path("to").constData(), MNT_DETACH), 0);
    });
    QCOMPARE(outcome.fault, CopyFault::DestinationGone);
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopyDisks::aDiskThatTellsNoRoom()
{
    QVERIFY(mount("ramfs", nullptr));
    QVERIFY(f->make("from/a.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::None);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
}

int main(int argc, char **argv)
{
    if (!mounts::enterNamespace({})) {
        qCritical("no mount namespace");
        return 1;
    }
    QCoreApplication application(argc, argv);
    TestFileCopyDisks test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_filecopydisks.moc"
