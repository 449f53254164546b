// SPDX-License-Identifier: GPL-3.0-or-later
#include "filecopyfixture.h"
#include "platform/saveas/filecopy.h"
#include "support/heartbeat.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using Kind = HiddenFile::Kind;

Q_DECLARE_METATYPE(Kind)
Q_DECLARE_METATYPE(CopyFault)

namespace {

constexpr qint64 Large = 1024LL * 1024 * 1024;

} // namespace

// A copy is there whole, or not at all.
class TestFileCopy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { f = std::make_unique<FileCopyFixture>(); }
    void theCopyIsTheSame_data() { kinds(); }
    void theCopyIsTheSame();
    void theDateIsKept();
    void anEmptyFile();
    void progressGrowsToTheWhole();
    void cancelledItLeavesNothing_data() { kinds(); }
    void cancelledItLeavesNothing();
    void deletedItLeavesNothing_data() { kinds(); }
    void deletedItLeavesNothing();
    void killedItLeavesNothingForLong_data();
    void killedItLeavesNothingForLong();
    void aNameThatIsTakenIsKept_data() { kinds(); }
    void aNameThatIsTakenIsKept();
    void aNameThatIsTakenMeanwhileIsKept_data() { kinds(); }
    void aNameThatIsTakenMeanwhileIsKept();
    void whatThePersonGaveUpIsReplaced_data() { kinds(); }
    void whatThePersonGaveUpIsReplaced();
    void anotherFileThanTheOneGivenUpIsKept();
    void theSourceIsNeverReplaced();
    void aFolderIsNeverReplaced();
    void aLinkAtTheDestinationIsReplacedItself();
    void aLinkAtTheSourceIsFollowed();
    void whatIsNoFileIsRefused_data();
    void whatIsNoFileIsRefused();
    void aSourceThatIsGone();
    void aSourceThatIsReplacedMeanwhileIsCopiedAsItWas();
    void aSourceThatChangesMeanwhile_data();
    void aSourceThatChangesMeanwhile();
    void namesThatAreNone_data();
    void namesThatAreNone();
    void namesThatAreNoText();
    void aNameThatIsTooLong();
    void aFolderThatIsMissingIsMade();
    void aFolderThatVanishes();
    void aFileThatIsTooLarge();

private:
    void kinds()
    {
        QTest::addColumn<Kind>("kind");
        QTest::newRow("unnamed") << Kind::Unnamed;
        QTest::newRow("hidden") << Kind::Hidden;
    }
    FileCopy::Request requestOf(Kind kind) const
    {
        FileCopy::Request request = f->request();
        request.kind = kind;
        return request;
    }
    // In steps, also where blocks can be shared.
    FileCopy::Request slowRequestOf(Kind kind) const
    {
        FileCopy::Request request = requestOf(kind);
        request.ways = {ByteCopier::Way::ReadWrite};
        return request;
    }

    std::unique_ptr<FileCopyFixture> f;
};

void TestFileCopy::theCopyIsTheSame()
{
    QFETCH(Kind, kind);
    const QByteArray content = QByteArray("film").repeated(1234567);
    QVERIFY(f->make("from/a.mp4", content));
    FileCopy copy(requestOf(kind));
    QSignalSpy finished(&copy, &FileCopy::finished);
    copy.start();
    copy.start(); // once is enough
    QVERIFY(finished.wait(TestPatience));
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QVERIFY(f->read("to/b.mp4") == content);
    QVERIFY(f->read("from/a.mp4") == content);
    QCOMPARE(finished.size(), 1);
}

void TestFileCopy::theDateIsKept()
{
    QVERIFY(f->make("from/a.mp4"));
    const struct timespec times[] = {{0, UTIME_NOW}, {981173106, 123456789}};
    QCOMPARE(::utimensat(AT_FDCWD, f->path("from/a.mp4").constData(), times, 0), 0);
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::None);
    struct stat from = {};
    struct stat to = {};
    QCOMPARE(::stat(f->path("from/a.mp4").constData(), &from), 0);
    QCOMPARE(::stat(f->path("to/b.mp4").constData(), &to), 0);
    QCOMPARE(to.st_mtim.tv_sec, from.st_mtim.tv_sec);
    QCOMPARE(to.st_mtim.tv_nsec, from.st_mtim.tv_nsec);
}

void TestFileCopy::anEmptyFile()
{
    QVERIFY(f->make("from/a.mp4", {}));
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::None);
    QCOMPARE(f->read("to/b.mp4"), QByteArray());
}

void TestFileCopy::progressGrowsToTheWhole()
{
    QVERIFY(f->makeSparse("from/a.mp4", Large / 8));
    FileCopy copy(slowRequestOf(Kind::Unnamed));
    QSignalSpy finished(&copy, &FileCopy::finished);
    QSignalSpy progress(&copy, &FileCopy::progress);
    copy.start();
    QVERIFY(finished.wait(60000));
    QVERIFY(progress.size() >= 2);
    QCOMPARE(progress.first().at(0).toLongLong(), 0);
    QCOMPARE(progress.last().at(0).toLongLong(), Large / 8);
    qint64 last = 0;
    for (const QList<QVariant> &news : std::as_const(progress)) {
        QVERIFY(news.at(0).toLongLong() >= last);
        last = news.at(0).toLongLong();
        QCOMPARE(news.at(1).toLongLong(), Large / 8);
    }
}

void TestFileCopy::cancelledItLeavesNothing()
{
    QFETCH(Kind, kind);
    QVERIFY(f->makeSparse("from/a.mp4", Large));
    FileCopy copy(slowRequestOf(kind));
    QSignalSpy progress(&copy, &FileCopy::progress);
    QSignalSpy finished(&copy, &FileCopy::finished);
    QSignalSpy failed(&copy, &FileCopy::failed);
    copy.start();
    QVERIFY(progress.wait(TestPatience));
    QElapsedTimer clock;
    clock.start();
    const Heartbeat heart;
    QVERIFY(copy.cancel());
    QVERIFY2(heart.isSteady(), heart.report());
    QTRY_COMPARE(f->entries(), QStringList());
    qInfo() << "nothing was left after" << clock.elapsed() << "ms";
    const qsizetype told = progress.size();
    QCoreApplication::processEvents();
    QCOMPARE(progress.size(), told);
    QCOMPARE(finished.size() + failed.size(), 0);
}

void TestFileCopy::deletedItLeavesNothing()
{
    QFETCH(Kind, kind);
    QVERIFY(f->makeSparse("from/a.mp4", Large));
    auto copy = std::make_unique<FileCopy>(slowRequestOf(kind));
    QSignalSpy progress(copy.get(), &FileCopy::progress);
    copy->start();
    QVERIFY(progress.wait(TestPatience));
    copy.reset();
    QTRY_COMPARE(f->entries(), QStringList());
}

void TestFileCopy::killedItLeavesNothingForLong_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<bool>("atTheNextStart");
    QTest::newRow("unnamed") << Kind::Unnamed << true;
    QTest::newRow("hidden, until the next copy") << Kind::Hidden << false;
    QTest::newRow("hidden, until the next start") << Kind::Hidden << true;
}

// The battery ends, the system needs the memory: the program is not asked.
void TestFileCopy::killedItLeavesNothingForLong()
{
    QFETCH(Kind, kind);
    QVERIFY(f->makeSparse("from/a.mp4", Large));
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(),
                  {u"--copy"_s, QFile::decodeName(f->path("from/a.mp4")), QFile::decodeName(f->path("to")),
                   kind == Kind::Hidden ? u"hidden"_s : u"unnamed"_s});
    QTRY_VERIFY(program.canReadLine()); // it is in the midst of it
    program.kill();
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::CrashExit);
    QVERIFY(!QFile::exists(QFile::decodeName(f->path("to/b.mp4"))));
    QCOMPARE(f->entries().size(), kind == Kind::Hidden ? 1 : 0);
    QFETCH(bool, atTheNextStart);
    if (atTheNextStart) {
        FileCopy::clearUp(f->path("to"));
        QTRY_COMPARE(f->entries(), QStringList());
    }
    QVERIFY(f->make("from/c.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request("from/c.mp4", "c.mp4")).fault, CopyFault::None);
    QCOMPARE(f->entries(), QStringList{u"c.mp4"_s});
}

void TestFileCopy::aNameThatIsTakenIsKept()
{
    QFETCH(Kind, kind);
    QVERIFY(f->make("from/a.mp4"));
    QVERIFY(f->make("to/b.mp4", "theirs"));
    FileCopy copy(requestOf(kind));
    QSignalSpy failed(&copy, &FileCopy::failed);
    QSignalSpy progress(&copy, &FileCopy::progress);
    copy.start();
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed.first().first().value<CopyFault>(), CopyFault::NameTaken);
    QCOMPARE(copy.taken().size, 6);
    QCOMPARE(progress.size(), 0); // nothing was copied in vain
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QCOMPARE(f->read("to/b.mp4"), QByteArray("theirs"));
}

void TestFileCopy::aNameThatIsTakenMeanwhileIsKept()
{
    QFETCH(Kind, kind);
    QVERIFY(f->make("from/a.mp4"));
    const CopyOutcome outcome
        = FileCopyFixture::run(requestOf(kind), [this] { QVERIFY(f->make("to/b.mp4", "theirs")); });
    QCOMPARE(outcome.fault, CopyFault::NameTaken);
    QCOMPARE(outcome.taken.size, 6);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QCOMPARE(f->read("to/b.mp4"), QByteArray("theirs"));
}

void TestFileCopy::whatThePersonGaveUpIsReplaced()
{
    QFETCH(Kind, kind);
    QVERIFY(f->make("from/a.mp4"));
    QVERIFY(f->make("to/b.mp4", "theirs"));
    FileCopy::Request request = requestOf(kind);
    const CopyOutcome outcome = FileCopyFixture::run(request);
    QCOMPARE(outcome.fault, CopyFault::NameTaken);
    request.replaced = outcome.taken;
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::None);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
    // Had it gone by itself meanwhile, the copy is there as well.
    QVERIFY(QFile::remove(QFile::decodeName(f->path("to/b.mp4"))));
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::None);
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
}

void TestFileCopy::anotherFileThanTheOneGivenUpIsKept()
{
    QVERIFY(f->make("from/a.mp4"));
    QVERIFY(f->make("to/b.mp4", "theirs"));
    FileCopy::Request request = f->request();
    request.replaced = FileCopyFixture::run(request).taken;
    const CopyOutcome outcome = FileCopyFixture::run(request, [this] {
        QVERIFY(f->make("to/other.mp4", "another"));
        QVERIFY(::rename(f->path("to/other.mp4").constData(), f->path("to/b.mp4").constData()) == 0);
    });
    QCOMPARE(outcome.fault, CopyFault::NameTaken);
    QCOMPARE(outcome.taken.size, 7);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
    QCOMPARE(f->read("to/b.mp4"), QByteArray("another"));
}

void TestFileCopy::theSourceIsNeverReplaced()
{
    QVERIFY(f->make("to/b.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request("to/b.mp4")).fault, CopyFault::SameFile);
    QVERIFY(f->make("from/a.mp4"));
    QVERIFY(QFile::remove(QFile::decodeName(f->path("to/b.mp4"))));
    QVERIFY(::link(f->path("from/a.mp4").constData(), f->path("to/b.mp4").constData()) == 0);
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::SameFile);
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
    QVERIFY(QFile::link(QFile::decodeName(f->path("to")), QFile::decodeName(f->path("link"))));
    QCOMPARE(FileCopyFixture::run(f->request("link/b.mp4")).fault, CopyFault::SameFile);
}

void TestFileCopy::aFolderIsNeverReplaced()
{
    QVERIFY(f->make("from/a.mp4"));
    QVERIFY(QDir().mkdir(QFile::decodeName(f->path("to/b.mp4"))));
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::FolderThere);
    QCOMPARE(f->entries(), QStringList{u"b.mp4"_s});
}

void TestFileCopy::aLinkAtTheDestinationIsReplacedItself()
{
    QVERIFY(f->make("from/a.mp4"));
    QVERIFY(f->make("from/target.mp4", "theirs"));
    QVERIFY(::symlink(f->path("from/target.mp4").constData(), f->path("to/b.mp4").constData()) == 0);
    FileCopy::Request request = f->request();
    const CopyOutcome outcome = FileCopyFixture::run(request);
    QCOMPARE(outcome.fault, CopyFault::NameTaken);
    request.replaced = outcome.taken;
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::None);
    QVERIFY(!QFileInfo(QFile::decodeName(f->path("to/b.mp4"))).isSymLink());
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
    QCOMPARE(f->read("from/target.mp4"), QByteArray("theirs"));
    QVERIFY(::symlink("nowhere", f->path("to/c.mp4").constData()) == 0);
    QCOMPARE(FileCopyFixture::run(f->request("from/a.mp4", "c.mp4")).fault, CopyFault::NameTaken);
}

void TestFileCopy::aLinkAtTheSourceIsFollowed()
{
    QVERIFY(f->make("from/target.mp4"));
    QVERIFY(::symlink("target.mp4", f->path("from/a.mp4").constData()) == 0);
    QCOMPARE(FileCopyFixture::run(f->request()).fault, CopyFault::None);
    QVERIFY(!QFileInfo(QFile::decodeName(f->path("to/b.mp4"))).isSymLink());
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
    QVERIFY(::symlink("circle", f->path("from/circle").constData()) == 0);
    QCOMPARE(FileCopyFixture::run(f->request("from/circle", "c.mp4")).fault, CopyFault::SourceGone);
}

void TestFileCopy::whatIsNoFileIsRefused_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::newRow("a pipe that nobody writes to") << QByteArray("pipe");
    QTest::newRow("a folder") << QByteArray("from");
    QTest::newRow("an endless device") << QByteArray("/dev/zero");
    QTest::newRow("a file with a slash") << QByteArray("from/a.mp4/");
}

void TestFileCopy::whatIsNoFileIsRefused()
{
    QFETCH(QByteArray, source);
    QVERIFY(f->make("from/a.mp4"));
    QCOMPARE(::mkfifo(f->path("pipe").constData(), 0600), 0);
    FileCopy::Request request = f->request();
    request.source = source.startsWith('/') ? source : f->path(source);
    const CopyFault fault = FileCopyFixture::run(request).fault;
    QCOMPARE(fault, source.endsWith('/') ? CopyFault::SourceGone : CopyFault::NoFile);
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopy::aSourceThatIsGone()
{
    const CopyOutcome outcome = FileCopyFixture::run(f->request());
    QCOMPARE(outcome.fault, CopyFault::SourceGone);
    QVERIFY(!outcome.reason.isEmpty());
    QVERIFY(f->make("from/a.mp4"));
    for (const QByteArray &path : {QByteArray(), QByteArray("a.mp4"), f->path("from/a.mp4") + '\0' + "x"}) {
        FileCopy::Request request = f->request();
        request.source = path;
        QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::SourceGone);
    }
    QCOMPARE(f->entries(), QStringList());
}

// The name is another film's by the end; the person chose the one that had it.
void TestFileCopy::aSourceThatIsReplacedMeanwhileIsCopiedAsItWas()
{
    QVERIFY(f->make("from/a.mp4"));
    const CopyOutcome outcome = FileCopyFixture::run(f->request(), [this] {
        QVERIFY(f->make("from/other.mp4", "another film"));
        QVERIFY(::rename(f->path("from/other.mp4").constData(), f->path("from/a.mp4").constData()) == 0);
    });
    QCOMPARE(outcome.fault, CopyFault::None);
    QCOMPARE(f->read("to/b.mp4"), QByteArray("film"));
}

void TestFileCopy::aSourceThatChangesMeanwhile_data()
{
    QTest::addColumn<qint64>("size");
    QTest::newRow("grows") << qint64(8 << 20);
    QTest::newRow("shrinks") << qint64(1000);
    QTest::newRow("is written to") << qint64(4 << 20);
}

void TestFileCopy::aSourceThatChangesMeanwhile()
{
    QFETCH(qint64, size);
    QVERIFY(f->make("from/a.mp4", QByteArray(4 << 20, 'a')));
    const CopyOutcome outcome = FileCopyFixture::run(f->request(), [this, size] {
        QVERIFY(f->make("from/a.mp4", QByteArray(size, 'b')));
        const struct timespec later[] = {{0, UTIME_NOW}, {4102444800, 0}}; // the clock of the disk is coarse
        QCOMPARE(::utimensat(AT_FDCWD, f->path("from/a.mp4").constData(), later, 0), 0);
    });
    QCOMPARE(outcome.fault, CopyFault::SourceChanged);
    QCOMPARE(f->entries(), QStringList());
}

void TestFileCopy::namesThatAreNone_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("the folder") << QByteArray(".");
    QTest::newRow("the folder above") << QByteArray("..");
    QTest::newRow("of another folder") << QByteArray("../c.mp4");
    QTest::newRow("with a null") << QByteArray("a\0b", 3);
}

void TestFileCopy::namesThatAreNone()
{
    QFETCH(QByteArray, name);
    QVERIFY(f->make("from/a.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request("from/a.mp4", name)).fault, CopyFault::NameInvalid);
    QCOMPARE(f->entries(), QStringList());
    QVERIFY(!QFile::exists(QFile::decodeName(f->path("c.mp4"))));
}

void TestFileCopy::namesThatAreNoText()
{
    const QByteArray source = f->path("from/\xFF\xFE.mp4");
    const int file = ::open(source.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    QVERIFY(file >= 0);
    QCOMPARE(::write(file, "film", 4), 4);
    ::close(file);
    const FileCopy::Request request{source, f->path("to"), "\xFF copy.mp4"};
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::None);
    struct stat status = {};
    QCOMPARE(::stat(f->path("to/\xFF copy.mp4").constData(), &status), 0);
    QCOMPARE(status.st_size, 4);
    for (const QByteArray &path : {source, f->path("to/\xFF copy.mp4")})
        QCOMPARE(::unlink(path.constData()), 0); // QTemporaryDir cannot
}

void TestFileCopy::aNameThatIsTooLong()
{
    QVERIFY(f->makeSparse("from/a.mp4", Large));
    QCOMPARE(FileCopyFixture::run(f->request("from/a.mp4", QByteArray(256, 'x'))).fault,
             CopyFault::NameTooLong);
    QCOMPARE(f->entries(), QStringList());
    QVERIFY(f->make("from/c.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request("from/c.mp4", QByteArray(255, 'x'))).fault, CopyFault::None);
}

void TestFileCopy::aFolderThatIsMissingIsMade()
{
    QVERIFY(f->make("from/a.mp4"));
    FileCopy::Request request = f->request();
    request.folder = f->path("to/Videos");
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::None);
    QCOMPARE(f->read("to/Videos/b.mp4"), QByteArray("film"));
    // That of a card that is not there is not.
    request.folder = f->path("card/Videos");
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::DestinationGone);
    QVERIFY(!QFile::exists(QFile::decodeName(f->path("card"))));
    request.folder = f->path("from/a.mp4");
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::DestinationGone);
    request.folder = "Videos";
    QCOMPARE(FileCopyFixture::run(request).fault, CopyFault::DestinationGone);
}

void TestFileCopy::aFolderThatVanishes()
{
    QVERIFY(f->make("from/a.mp4"));
    QCOMPARE(FileCopyFixture::run(f->request(),
                                  [this] { QVERIFY(QDir().rmdir(QFile::decodeName(f->path("to")))); })
                 .fault,
             CopyFault::DestinationGone);
    QVERIFY(QDir().mkdir(QFile::decodeName(f->path("to"))));
    QCOMPARE(FileCopyFixture::run(
                 f->request(),
                 [this] { QVERIFY(::rename(f->path("to").constData(), f->path("moved").constData()) == 0); })
                 .fault,
             CopyFault::DestinationGone);
    QCOMPARE(f->entries(u"moved"_s), QStringList());
}

// As on a card that takes no file of more than 4 GB.
void TestFileCopy::aFileThatIsTooLarge()
{
    QVERIFY(f->makeSparse("from/a.mp4", 8 << 20));
    struct rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const struct rlimit small = {4 << 20, before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
    FileCopy copy(f->request());
    QSignalSpy failed(&copy, &FileCopy::failed);
    copy.start();
    const bool ended = failed.wait(TestPatience);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
    QVERIFY(ended);
    QCOMPARE(failed.first().first().value<CopyFault>(), CopyFault::TooLarge);
    QTRY_COMPARE(f->entries(), QStringList());
}

// What the test above kills: a program that copies and tells when it has begun.
int copyAsked(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    FileCopy copy({QByteArray(argv[2]),
                   QByteArray(argv[3]),
                   "b.mp4",
                   std::nullopt,
                   {ByteCopier::Way::ReadWrite},
                   qstrcmp(argv[4], "hidden") == 0 ? Kind::Hidden : Kind::Unnamed});
    QObject::connect(&copy, &FileCopy::progress, &application, [](qint64 copied, qint64) {
        if (copied == 0)
            return;
        puts("copying");
        fflush(stdout);
    });
    copy.start();
    return QCoreApplication::exec();
}

int main(int argc, char **argv)
{
    if (argc == 5 && qstrcmp(argv[1], "--copy") == 0)
        return copyAsked(argc, argv);
    QCoreApplication application(argc, argv);
    TestFileCopy test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_filecopy.moc"
