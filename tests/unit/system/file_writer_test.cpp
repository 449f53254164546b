// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/filewriter.h"
#include "support/fulldisk.h"
#include "support/loglines.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

Q_LOGGING_CATEGORY(lcWriter, "test.writer")

namespace {

constexpr int Patience = 10000; // ms; a loaded machine

QStringList s_synchronised; // "contents" or "folder", as they came

} // namespace

// In place of the C library's, of which it tells.
extern "C" int fsync(int descriptor)
{
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0)
        s_synchronised.append(S_ISDIR(status.st_mode) ? u"folder"_s : u"contents"_s);
    return int(::syscall(SYS_fsync, descriptor));
}

namespace {

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

void put(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

// A disk that does not answer, for as long as this lives or until it is told to: the writer's thread is held
// where it says that it could not write.
class StuckDisk
{
public:
    StuckDisk() : m_previous(qInstallMessageHandler(&StuckDisk::take)) { s_used = {}; }
    ~StuckDisk()
    {
        answer();
        qInstallMessageHandler(m_previous);
    }
    Q_DISABLE_COPY_MOVE(StuckDisk)

    // True when the thread has come to it.
    [[nodiscard]] static bool isReached() { return s_reached.tryAcquire(1, Patience); }
    void answer()
    {
        if (!std::exchange(m_answered, true))
            s_answer.release();
    }

private:
    static void take(QtMsgType, const QMessageLogContext &, const QString &)
    {
        if (QThread::currentThread() == qApp->thread() || s_used.exchange(true))
            return;
        s_reached.release();
        s_answer.acquire();
    }

    static inline QSemaphore s_reached{0};
    static inline QSemaphore s_answer{0};
    static inline std::atomic<bool> s_used = false;
    QtMessageHandler m_previous;
    bool m_answered = false;
};

// Which files of a folder were put in place, one name a time.
class Placements
{
public:
    explicit Placements(const QString &folder) : m_descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        ::inotify_add_watch(m_descriptor, QFile::encodeName(folder).constData(), IN_MOVED_TO);
    }
    ~Placements() { ::close(m_descriptor); }
    Q_DISABLE_COPY_MOVE(Placements)

    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        alignas(inotify_event) char buffer[4096];
        const ssize_t size = ::read(m_descriptor, buffer, sizeof buffer);
        for (ssize_t at = 0; at < size;) {
            const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
            names.append(QFile::decodeName(event->name));
            at += ssize_t(sizeof(inotify_event)) + event->len;
        }
        return names;
    }

private:
    int m_descriptor;
};

} // namespace

class FileWriterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void aFileIsPutInPlaceOfTheOneBefore();
    void aReaderFindsAWholeFileAtAnyTime();
    void whatIsSynchronisedIsSaid_data();
    void whatIsSynchronisedIsSaid();
    void aFullDiskLeavesTheFileBefore();
    void whatIsLeftOverIsRemovedBeforeTheFirstWrite();
    void nothingIsMadeBeforeTheFirstOrder();
    void theLastOrderForAFileCounts();
    void aFileIsRemoved();
    void whatCannotBeWrittenIsToldOnceAFile();
    void whatWasOrderedIsThereAtTheEnd();
    void aStuckDiskDoesNotHoldUpTheEnd();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    // Something that no file can be put in the place of.
    [[nodiscard]] QString blockedPath() const
    {
        QDir(m_folder->path()).mkpath(u"blocked/inside"_s);
        return path(u"blocked"_s);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void FileWriterTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    s_synchronised.clear();
}

void FileWriterTest::aFileIsPutInPlaceOfTheOneBefore()
{
    const QString name = path(u"made/on the way/ä.txt"_s);
    for (const QByteArray &contents : {QByteArray("first"), QByteArray(300'000, 'x'), QByteArray()}) {
        QCOMPARE(replaceFile(name, contents, OnDisk::Nothing), 0);
        QCOMPARE(contentsOf(name), contents);
        QCOMPARE(QFileInfo(name).dir().entryList(QDir::Files | QDir::Hidden), QStringList{u"ä.txt"_s});
    }
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(name).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777, mode_t(0600));
}

void FileWriterTest::aReaderFindsAWholeFileAtAnyTime()
{
    constexpr int Size = 100'000;
    const QString name = path(u"a"_s);
    QCOMPARE(replaceFile(name, QByteArray(Size, 'a'), OnDisk::Nothing), 0);
    std::atomic<bool> ends = false;
    const std::unique_ptr<QThread> writer(QThread::create([&] {
        for (char letter = 'a'; !ends; letter = letter == 'z' ? 'a' : char(letter + 1)) {
            if (replaceFile(name, QByteArray(Size, letter), OnDisk::Nothing) != 0)
                return;
        }
    }));
    writer->start();
    int torn = 0;
    for (int i = 0; i < 300; ++i) {
        const QByteArray contents = contentsOf(name);
        torn += contents == QByteArray(Size, contents.at(0)) ? 0 : 1;
    }
    QVERIFY(writer->isRunning());
    ends = true;
    QVERIFY(writer->wait(Patience));
    QCOMPARE(torn, 0);
}

void FileWriterTest::whatIsSynchronisedIsSaid_data()
{
    QTest::addColumn<OnDisk>("onDisk");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("nothing") << OnDisk::Nothing << QStringList();
    QTest::newRow("contents") << OnDisk::Contents << QStringList{u"contents"_s};
    QTest::newRow("contents and name") << OnDisk::ContentsAndName << QStringList{u"contents"_s, u"folder"_s};
}

void FileWriterTest::whatIsSynchronisedIsSaid()
{
    QFETCH(OnDisk, onDisk);
    QFETCH(QStringList, expected);
    FileWriter writer(lcWriter, onDisk);
    writer.write(path(u"a"_s), "text");
    QVERIFY(writer.waitForDone(Patience));
    QCOMPARE(s_synchronised, expected);
}

void FileWriterTest::aFullDiskLeavesTheFileBefore()
{
    QCOMPARE(replaceFile(path(u"a"_s), "before", OnDisk::Contents), 0);
    {
        const FullDisk full;
        QCOMPARE(replaceFile(path(u"a"_s), "after", OnDisk::Contents), EFBIG);
    }
    QCOMPARE(contentsOf(path(u"a"_s)), "before");
    QCOMPARE(files(), QStringList{u"a"_s});
}

// The program was killed while it wrote; another one writes beside it.
void FileWriterTest::whatIsLeftOverIsRemovedBeforeTheFirstWrite()
{
    const QString underWay = path(u"a.bbbbbb.new"_s);
    for (const QString &name :
         {path(u"a.aaaaaa.new"_s), underWay, path(u"ab.aaaaaa.new"_s), path(u"a.news"_s)})
        put(name, "half");
    const int other = ::open(QFile::encodeName(underWay).constData(), O_WRONLY | O_CLOEXEC);
    QCOMPARE(::flock(other, LOCK_EX), 0);
    FileWriter writer(lcWriter, OnDisk::Nothing);
    writer.write(path(u"a"_s), "whole");
    QVERIFY(writer.waitForDone(Patience));
    QCOMPARE(files(), (QStringList{u"a"_s, u"a.bbbbbb.new"_s, u"a.news"_s, u"ab.aaaaaa.new"_s}));
    ::close(other);
    removeUnfinished(m_folder->path());
    QCOMPARE(files(), (QStringList{u"a"_s, u"a.news"_s}));
}

void FileWriterTest::nothingIsMadeBeforeTheFirstOrder()
{
    const auto threads
        = [] { return QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(); };
    const qsizetype before = threads();
    FileWriter writer(lcWriter, OnDisk::Contents);
    QVERIFY(writer.waitForDone(0));
    QVERIFY(threads() <= before); // those of other tests may still be ending
    QCOMPARE(files(), QStringList());
}

void FileWriterTest::theLastOrderForAFileCounts()
{
    FileWriter writer(lcWriter, OnDisk::Nothing);
    const Placements placements(m_folder->path());
    StuckDisk disk;
    writer.write(blockedPath(), "never");
    QVERIFY(StuckDisk::isReached());
    for (const char *contents : {"1", "2", "3"}) {
        writer.write(path(u"b"_s), contents);
        writer.write(path(u"a"_s), contents);
    }
    writer.write(path(u"c"_s), "1");
    writer.remove(path(u"c"_s));
    QVERIFY(!writer.waitForDone(0));
    disk.answer();
    QVERIFY(writer.waitForDone(Patience));
    QCOMPARE(contentsOf(path(u"a"_s)), "3");
    QCOMPARE(contentsOf(path(u"b"_s)), "3");
    QCOMPARE(placements.names(), (QStringList{u"b"_s, u"a"_s}));
    QCOMPARE(files(), (QStringList{u"a"_s, u"b"_s}));
}

void FileWriterTest::aFileIsRemoved()
{
    put(path(u"a"_s), "text");
    LogLines lines("test.writer");
    FileWriter writer(lcWriter, OnDisk::ContentsAndName);
    writer.remove(path(u"a"_s));
    writer.remove(path(u"not there"_s));
    QVERIFY(writer.waitForDone(Patience));
    QCOMPARE(files(), QStringList());
    QCOMPARE(lines.all(), QStringList());
    writer.write(path(u"a"_s), QByteArray()); // empty, and there
    QVERIFY(writer.waitForDone(Patience));
    QCOMPARE(files(), QStringList{u"a"_s});
}

void FileWriterTest::whatCannotBeWrittenIsToldOnceAFile()
{
    const QString blocked = blockedPath();
    LogLines lines("test.writer");
    FileWriter writer(lcWriter, OnDisk::Nothing);
    for (int i = 0; i < 3; ++i) {
        writer.write(blocked, "text");
        writer.write(path(u"a"_s), "text"); // another file that can be written is no reason to say it again
        QVERIFY(writer.waitForDone(Patience));
    }
    QCOMPARE(lines.all(), QStringList{blocked + u": cannot be written: Is a directory"_s});
    QVERIFY(QDir(blocked).removeRecursively());
    writer.write(blocked, "text");
    QVERIFY(writer.waitForDone(Patience));
    QVERIFY(QFile::remove(blocked));
    QVERIFY(QDir(m_folder->path()).mkpath(u"blocked/inside"_s));
    writer.remove(blocked);
    QVERIFY(writer.waitForDone(Patience));
    QCOMPARE(lines.all().size(), 2);
    QCOMPARE(lines.all().last(), blocked + u": cannot be removed: Is a directory"_s);
}

void FileWriterTest::whatWasOrderedIsThereAtTheEnd()
{
    QStringList names;
    for (int i = 100; i < 200; ++i)
        names.append(QString::number(i));
    {
        FileWriter writer(lcWriter, OnDisk::Nothing);
        for (const QString &name : names)
            writer.write(path(name), "text");
    }
    QCOMPARE(files(), names);
}

void FileWriterTest::aStuckDiskDoesNotHoldUpTheEnd()
{
    auto writer = std::make_unique<FileWriter>(lcWriter, OnDisk::Nothing);
    StuckDisk disk;
    writer->write(blockedPath(), "never");
    QVERIFY(StuckDisk::isReached());
    writer->write(path(u"a"_s), "late");
    QElapsedTimer waited;
    waited.start();
    writer.reset();
    QVERIFY2(waited.elapsed() < FileWriter::FarewellLimit + Patience / 2,
             qPrintable(QString::number(waited.elapsed())));
    QCOMPARE(contentsOf(path(u"a"_s)), "none");
    disk.answer();
    QTRY_COMPARE(contentsOf(path(u"a"_s)), "late"); // what was left behind goes on, when it can
}

QTEST_GUILESS_MAIN(FileWriterTest)
#include "file_writer_test.moc"
