// SPDX-License-Identifier: GPL-3.0-or-later
#include "filecopyfixture.h"

#include <QSignalSpy>
#include <QTest>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using Kind = HiddenFile::Kind;
using Way = ByteCopier::Way;

Q_DECLARE_METATYPE(Kind)
Q_DECLARE_METATYPE(QList<Way>)

// What the disks do, and what is asked of them: this program's own calls of the system go through here.
namespace disks {

constexpr qint64 Step = 1 << 20;

ino_t unreadable = 0; // a file that cannot be read any more, its first step excepted
bool filesFail = false;
bool foldersFail = false;
QByteArray folder;
QStringList log; // "file" or "folder" for what is brought to the disk, with what can be seen in the folder

bool isRefused(int descriptor, off_t place)
{
    struct stat status = {};
    if (unreadable == 0 || ::fstat(descriptor, &status) != 0 || status.st_ino != unreadable || place < Step)
        return false;
    errno = EIO;
    return true;
}

off_t placeIn(int descriptor)
{
    return ::lseek(descriptor, 0, SEEK_CUR);
}

} // namespace disks

extern "C" {

int fsync(int descriptor)
{
    struct stat status = {};
    ::fstat(descriptor, &status);
    const bool isFolder = S_ISDIR(status.st_mode);
    disks::log.append((isFolder ? u"folder: "_s : u"file: "_s)
                      + QDir(QFile::decodeName(disks::folder)).entryList(QDir::Files).join(u' '));
    if (isFolder ? disks::foldersFail : disks::filesFail) {
        errno = EIO;
        return -1;
    }
    return int(::syscall(SYS_fsync, descriptor));
}

ssize_t read(int descriptor, void *buffer, size_t length)
{
    if (disks::isRefused(descriptor, disks::placeIn(descriptor)))
        return -1;
    return ::syscall(SYS_read, descriptor, buffer, length);
}

ssize_t pread(int descriptor, void *buffer, size_t length, off_t place)
{
    if (disks::isRefused(descriptor, place))
        return -1;
    return ::syscall(SYS_pread64, descriptor, buffer, length, place);
}

ssize_t pread64(int descriptor, void *buffer, size_t length, off64_t place)
{
    return pread(descriptor, buffer, length, place);
}

ssize_t sendfile(int to, int from, off_t *place, size_t length)
{
    if (disks::isRefused(from, disks::placeIn(from)))
        return -1;
    return ::syscall(SYS_sendfile, to, from, place, length);
}

ssize_t sendfile64(int to, int from, off64_t *place, size_t length)
{
    return sendfile(to, from, place, length);
}

ssize_t copy_file_range(int from, off64_t *fromPlace, int to, off64_t *toPlace, size_t length,
                        unsigned int flags)
{
    if (disks::isRefused(from, disks::placeIn(from)))
        return -1;
    return ::syscall(SYS_copy_file_range, from, fromPlace, to, toPlace, length, flags);
}
}

// Disks that fail, and two copies at a time.
class TestFileCopyFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void isOnTheDiskBeforeItHasItsName_data() { kinds(); }
    void isOnTheDiskBeforeItHasItsName();
    void aDiskThatDoesNotKeepIt_data() { kinds(); }
    void aDiskThatDoesNotKeepIt();
    void aFolderThatDoesNotKeepTheName_data() { kinds(); }
    void aFolderThatDoesNotKeepTheName();
    void aFolderThatDoesNotKeepTheNameOfAReplacement();
    void aSourceThatCannotBeReadAnyMore_data();
    void aSourceThatCannotBeReadAnyMore();
    void aSourceThatIsDeletedMeanwhile();
    void twoAtATime_data() { kinds(); }
    void twoAtATime();
    void twoOfOneNameAtATime_data() { kinds(); }
    void twoOfOneNameAtATime();
    void whatWasLeftIsClearedUp();

private:
    void kinds()
    {
        QTest::addColumn<Kind>("kind");
        QTest::newRow("unnamed") << Kind::Unnamed;
        QTest::newRow("hidden") << Kind::Hidden;
    }
    FileCopy::Request requestOf(Kind kind, const QByteArray &source = "from/a.mp4",
                                const QByteArray &name = "b.mp4") const
    {
        FileCopy::Request request = f->request(source, name);
        request.kind = kind;
        return request;
    }

    std::unique_ptr<FileCopyFixture> f;
};

void TestFileCopyFaults::init()
{
    f = std::make_unique<FileCopyFixture>();
    disks::unreadable = 0;
    disks::filesFail = false;
    disks::foldersFail = false;
    disks::folder = f->path("to");
    QVERIFY(f->make("from/a.mp4"));
    disks::log.clear();
}

void TestFileCopyFaults::isOnTheDiskBeforeItHasItsName()
{
    QFETCH(Kind, kind);
    QCOMPARE(FileCopyFixture::run(requestOf(kind)).fault, CopyFault::None);
    QCOMPARE(disks::log, (QStringList{u"file: "_s, u"folder: b.mp4"_s}));
}

void TestFileCopyFaults::aDiskThatDoesNotKeepIt()
{
    QFETCH(Kind, kind);
    disks::filesFail = true;
    const CopyOutcome outcome = FileCopyFixture::run(requestOf(kind));
    QCOMPARE(outcome.fault, CopyFault::Failed);
    QVERIFY2(outcome.reason.startsWith(u"fsync"_s), qPrintable(outcome.reason));
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopyFaults::aFolderThatDoesNotKeepTheName()
{
    QFETCH(Kind, kind);
    disks::foldersFail = true;
    const CopyOutcome outcome = FileCopyFixture::run(requestOf(kind));
    QCOMPARE(outcome.fault, CopyFault::Failed);
    QVERIFY2(outcome.reason.startsWith(u"fsync of the folder"_s), qPrintable(outcome.reason));
    QCOMPARE(f->entries(), QStringList());
}

// The other one is gone by then: rather the copy than nothing.
void TestFileCopyFaults::aFolderThatDoesNotKeepTheNameOfAReplacement()
{
    QVERIFY(f->make("to/b.mp4", "theirs"));
    FileCopy::Request request = f->request();
    request.replaced = FileCopyFixture::run(request).taken;
    disks::foldersFail = true;
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::Failed);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
}

void TestFileCopyFaults::aSourceThatCannotBeReadAnyMore_data()
{
    QTest::addColumn<QList<Way>>("ways");
    QTest::newRow("copy_file_range") << QList<Way>{Way::CopyRange};
    QTest::newRow("sendfile") << QList<Way>{Way::SendFile};
    QTest::newRow("read and write") << QList<Way>{Way::ReadWrite};
}

// The card that it is on is pulled out. The person is told so, and not that the folder of films is gone.
void TestFileCopyFaults::aSourceThatCannotBeReadAnyMore()
{
    QFETCH(QList<Way>, ways);
    QVERIFY(f->make("from/a.mp4", QByteArray(4 * disks::Step, 'x')));
    FileCopy::Request request = f->request();
    request.ways = ways;
    struct stat status = {};
    QCOMPARE(::stat(request.source.constData(), &status), 0);
    const CopyOutcome outcome = FileCopyFixture::run(request, [&] { disks::unreadable = status.st_ino; });
    QCOMPARE(outcome.fault, CopyFault::SourceGone);
    QVERIFY2(outcome.reason.startsWith(u"copying: "_s), qPrintable(outcome.reason));
    QCOMPARE(f->entries(), QStringList());
}

// Its bytes are there as long as somebody has it open.
void TestFileCopyFaults::aSourceThatIsDeletedMeanwhile()
{
    QVERIFY(f->make("from/a.mp4", QByteArray(4 * disks::Step, 'x')));
    const CopyOutcome outcome = FileCopyFixture::run(
        f->request(), [this] { QVERIFY(QFile::remove(QFile::decodeName(f->path("from/a.mp4")))); });
    QCOMPARE(outcome.fault, CopyFault::None);
    QVERIFY(f->read("to/b.mp4") == QByteArray(4 * disks::Step, 'x'));
}

// The second one begins in the midst of the first, and looks for what others have left.
void TestFileCopyFaults::twoAtATime()
{
    QFETCH(Kind, kind);
    QVERIFY(f->make("from/c.mp4", "another"));
    CopyOutcome second;
    const CopyOutcome first = FileCopyFixture::run(
        requestOf(kind), [&] { second = FileCopyFixture::run(requestOf(kind, "from/c.mp4", "d.mp4")); });
    QCOMPARE(first.fault, CopyFault::None);
    QCOMPARE(second.fault, CopyFault::None);
    QCOMPARE(f->entries(), (QStringList{u"b.mp4"_s, u"d.mp4"_s}));
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
    QCOMPARE(f->read("to/d.mp4"), QByteArray("another"));
}

void TestFileCopyFaults::twoOfOneNameAtATime()
{
    QFETCH(Kind, kind);
    QVERIFY(f->make("from/c.mp4", QByteArray(8 * disks::Step, 'c')));
    QVERIFY(f->make("from/a.mp4", QByteArray(8 * disks::Step, 'a')));
    FileCopy one(requestOf(kind, "from/a.mp4"));
    FileCopy other(requestOf(kind, "from/c.mp4"));
    QSignalSpy finished(&one, &FileCopy::finished);
    QSignalSpy otherFinished(&other, &FileCopy::finished);
    QSignalSpy failed(&one, &FileCopy::failed);
    QSignalSpy otherFailed(&other, &FileCopy::failed);
    one.start();
    other.start();
    QTRY_COMPARE(finished.size() + failed.size(), 1);
    QTRY_COMPARE(otherFinished.size() + otherFailed.size(), 1);
    QCOMPARE(finished.size() + otherFinished.size(), 1);
    const QList<QVariant> &fault = failed.isEmpty() ? otherFailed.first() : failed.first();
    QCOMPARE(fault.first().value<CopyFault>(), CopyFault::NameTaken);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QVERIFY(f->read("to/b.mp4") == QByteArray(8 * disks::Step, finished.isEmpty() ? 'c' : 'a'));
}

void TestFileCopyFaults::whatWasLeftIsClearedUp()
{
    QVERIFY(f->make("to/.save-as-0123456789abcdef.part", "half a film"));
    QVERIFY(f->make("to/.hidden.mp4", "theirs"));
    QVERIFY(f->make("to/film.mp4.part", "theirs"));
    const CopyOutcome running = FileCopyFixture::run(requestOf(Kind::Hidden), [this] {
        FileCopy::clearUp(f->path("to"));
        QTRY_VERIFY(!f->entries().contains(u".save-as-0123456789abcdef.part"_s));
    });
    QCOMPARE(running.fault, CopyFault::None);
    QCOMPARE(f->entries(), (QStringList{u".hidden.mp4"_s, u"b.mp4"_s, u"film.mp4.part"_s}));
    FileCopy::clearUp(f->path("nowhere")); // and nothing happens
}

QTEST_GUILESS_MAIN(TestFileCopyFaults)
#include "tst_filecopyfaults.moc"
