// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileops/fileremoval.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <future>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

// One file is removed, and nothing else, whatever happens around it.
class TestFileRemoval : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void pathsOfAddresses_data();
    void pathsOfAddresses();
    void aFileIsRemoved();
    void aNameThatIsNoTextIsRemoved();
    void nothingHappensBeforeItIsStarted();
    void aFileThatIsGone();
    void aFileThatComesOnlyAfterTheQuestion();
    void aFolderStays();
    void aFileThatBecameAFolderStays();
    void aLinkIsRemovedAndItsTargetStays();
    void aFileThatBecameALinkStays();
    void anotherFileAtTheSamePlaceStays();
    void aFileBehindALinkThatCameMeanwhileStays();
    void aFileBehindALinkToItsOwnFolderStays();
    void aNewFileWithTheNumberOfTheOldStays();
    void aFileThatWasWrittenToMeanwhileIsRemoved();
    void aFileOfAFolderThatIsLinkedIsRemoved();
    void noPathIsNoFile();
    void aDiskThatDoesNotAnswer();
    void deletedWhileTheDiskDoesNotAnswer();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void make(const QString &name, const QByteArray &content = "film") const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    // Looks at it, as the question does: true once it knows which file it is.
    std::unique_ptr<FileRemoval> removal(const QString &name)
    {
        auto result = std::make_unique<FileRemoval>(QFile::encodeName(path(name)));
        (void)QTest::qWaitFor([&] { return result->isIdentified(); });
        return result;
    }
    // "removed", or the reason.
    static QString outcome(FileRemoval *removal)
    {
        QSignalSpy finished(removal, &FileRemoval::finished);
        removal->start();
        removal->start(); // once is enough
        if (!QTest::qWaitFor([&] { return !finished.isEmpty(); }))
            return u"no end"_s;
        if (finished.size() != 1)
            return u"more than one end"_s;
        return finished.first().at(0).toBool() ? u"removed"_s : finished.first().at(1).toString();
    }
    static QString reason(int error) { return QString::fromLocal8Bit(strerror(error)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestFileRemoval::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void TestFileRemoval::pathsOfAddresses_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("plain") << u"file:///videos/a.mp4"_s << QByteArray("/videos/a.mp4");
    QTest::newRow("a blank") << u"file:///videos/a%20b.mp4"_s << QByteArray("/videos/a b.mp4");
    QTest::newRow("decoded once") << u"file:///videos/a%2520b.mp4"_s << QByteArray("/videos/a%20b.mp4");
    QTest::newRow("letters") << u"file:///videos/%C3%A9.mp4"_s << QByteArray("/videos/\xC3\xA9.mp4");
    QTest::newRow("letters as they are") << u"file:///videos/é.mp4"_s << QByteArray("/videos/\xC3\xA9.mp4");
    QTest::newRow("no text") << u"file:///videos/%FF.mp4"_s << QByteArray("/videos/\xFF.mp4");
    QTest::newRow("number sign, question mark")
        << u"file:///videos/a%23b%3F.mp4"_s << QByteArray("/videos/a#b?.mp4");
    QTest::newRow("the same as they are") << u"file:///videos/a#b?.mp4"_s << QByteArray("/videos/a#b?.mp4");
    QTest::newRow("this machine") << u"file://localhost/videos/a.mp4"_s << QByteArray("/videos/a.mp4");
    QTest::newRow("another machine") << u"file://nas/videos/a.mp4"_s << QByteArray();
    QTest::newRow("a name of this machine's kind") << u"file://localhosts/videos/a.mp4"_s << QByteArray();
    QTest::newRow("a stream") << u"http://host/videos/a.mp4"_s << QByteArray();
    QTest::newRow("a null") << u"file:///videos/a.mp4%00.txt"_s << QByteArray();
    QTest::newRow("not from the root") << u"file://videos"_s << QByteArray();
    QTest::newRow("a path") << u"/videos/a.mp4"_s << QByteArray();
    QTest::newRow("nothing") << QString() << QByteArray();
}

void TestFileRemoval::pathsOfAddresses()
{
    QFETCH(QString, url);
    QFETCH(QByteArray, path);
    QCOMPARE(FileRemoval::pathOf(url), path);
}

void TestFileRemoval::aFileIsRemoved()
{
    make(u"a.mp4"_s);
    make(u"b.mp4"_s);
    QCOMPARE(outcome(removal(u"a.mp4"_s).get()), u"removed"_s);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{u"b.mp4"_s});
}

void TestFileRemoval::aNameThatIsNoTextIsRemoved()
{
    const QByteArray name = m_folder->path().toUtf8() + "/\xFF.mp4";
    FILE *file = fopen(name.constData(), "w");
    QVERIFY(file);
    fclose(file);
    make(QString(QChar(QChar::ReplacementCharacter)) + u".mp4"_s);
    FileRemoval removal(name);
    QCOMPARE(outcome(&removal), u"removed"_s);
    QVERIFY(access(name.constData(), F_OK) != 0);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 1);
}

void TestFileRemoval::nothingHappensBeforeItIsStarted()
{
    make(u"a.mp4"_s);
    removal(u"a.mp4"_s).reset();
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
}

void TestFileRemoval::aFileThatIsGone()
{
    QCOMPARE(outcome(removal(u"a.mp4"_s).get()), reason(ENOENT));
    make(u"b.mp4"_s);
    const auto asked = removal(u"b.mp4"_s);
    QVERIFY(QFile::remove(path(u"b.mp4"_s)));
    QCOMPARE(outcome(asked.get()), reason(ENOENT));
}

void TestFileRemoval::aFileThatComesOnlyAfterTheQuestion()
{
    const auto asked = removal(u"a.mp4"_s);
    make(u"a.mp4"_s);
    QCOMPARE(outcome(asked.get()), reason(ENOENT));
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
}

void TestFileRemoval::aFolderStays()
{
    QVERIFY(QDir(m_folder->path()).mkdir(u"a.mp4"_s));
    QCOMPARE(outcome(removal(u"a.mp4"_s).get()), reason(EISDIR));
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
    FileRemoval withSlash(QFile::encodeName(path(u"a.mp4/"_s)));
    QVERIFY(outcome(&withSlash) != "removed"_L1);
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
}

void TestFileRemoval::aFileThatBecameAFolderStays()
{
    make(u"a.mp4"_s);
    const auto asked = removal(u"a.mp4"_s);
    QVERIFY(QFile::remove(path(u"a.mp4"_s)));
    QVERIFY(QDir(m_folder->path()).mkdir(u"a.mp4"_s));
    QCOMPARE(outcome(asked.get()), reason(EISDIR));
    QVERIFY(QDir(path(u"a.mp4"_s)).exists());
}

void TestFileRemoval::aLinkIsRemovedAndItsTargetStays()
{
    make(u"a.mp4"_s);
    QVERIFY(QFile::link(path(u"a.mp4"_s), path(u"link.mp4"_s)));
    QCOMPARE(outcome(removal(u"link.mp4"_s).get()), u"removed"_s);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{u"a.mp4"_s});
}

void TestFileRemoval::aFileThatBecameALinkStays()
{
    make(u"a.mp4"_s);
    make(u"other.mp4"_s);
    const auto asked = removal(u"a.mp4"_s);
    QVERIFY(QFile::remove(path(u"a.mp4"_s)));
    QVERIFY(QFile::link(path(u"other.mp4"_s), path(u"a.mp4"_s)));
    QCOMPARE(outcome(asked.get()), u"another file lies there by now"_s);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files).size(), 2);
}

// The card's files were sorted while the question stood there: the name is another film's now.
void TestFileRemoval::anotherFileAtTheSamePlaceStays()
{
    make(u"a.mp4"_s);
    make(u"b.mp4"_s, "another film");
    const auto asked = removal(u"a.mp4"_s);
    QVERIFY(QFile::rename(path(u"a.mp4"_s), path(u"c.mp4"_s)));
    QVERIFY(QFile::rename(path(u"b.mp4"_s), path(u"a.mp4"_s)));
    QCOMPARE(outcome(asked.get()), u"another file lies there by now"_s);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), (QStringList{u"a.mp4"_s, u"c.mp4"_s}));
}

void TestFileRemoval::aFileBehindALinkThatCameMeanwhileStays()
{
    QVERIFY(QDir(m_folder->path()).mkpath(u"videos"_s));
    QVERIFY(QDir(m_folder->path()).mkpath(u"private"_s));
    make(u"videos/a.mp4"_s);
    make(u"private/a.mp4"_s, "a letter");
    const auto asked = removal(u"videos/a.mp4"_s);
    QVERIFY(QFile::rename(path(u"videos"_s), path(u"moved"_s)));
    QVERIFY(QFile::link(path(u"private"_s), path(u"videos"_s)));
    QCOMPARE(outcome(asked.get()), u"its folder is another by now"_s);
    QVERIFY(QFile::exists(path(u"private/a.mp4"_s)));
    QVERIFY(QFile::exists(path(u"moved/a.mp4"_s)));
}

// The folder went into a backup, with everything in it as it was, and the way to it is a link now.
void TestFileRemoval::aFileBehindALinkToItsOwnFolderStays()
{
    QVERIFY(QDir(m_folder->path()).mkpath(u"videos"_s));
    make(u"videos/a.mp4"_s);
    const auto asked = removal(u"videos/a.mp4"_s);
    QVERIFY(QFile::rename(path(u"videos"_s), path(u"backup"_s)));
    QVERIFY(QFile::link(path(u"backup"_s), path(u"videos"_s)));
    QCOMPARE(outcome(asked.get()), u"its folder is another by now"_s);
    QVERIFY(QFile::exists(path(u"backup/a.mp4"_s)));
}

// File systems give the number of a file that is gone to the next one.
void TestFileRemoval::aNewFileWithTheNumberOfTheOldStays()
{
    const auto number = [this] {
        struct statx status = {};
        (void)FileRemoval::lookAt(QFile::encodeName(path(u"a.mp4"_s)), &status);
        return status.stx_ino;
    };
    make(u"a.mp4"_s);
    const auto before = number();
    const auto asked = removal(u"a.mp4"_s);
    QVERIFY(QFile::remove(path(u"a.mp4"_s)));
    make(u"a.mp4"_s, "another film");
    if (before != number())
        qInfo("this file system did not give the number again");
    QCOMPARE(outcome(asked.get()), u"another file lies there by now"_s);
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
}

void TestFileRemoval::aFileThatWasWrittenToMeanwhileIsRemoved()
{
    make(u"a.mp4"_s);
    const auto asked = removal(u"a.mp4"_s);
    make(u"a.mp4"_s, "more of the same film");
    QCOMPARE(outcome(asked.get()), u"removed"_s);
}

// Many keep their films on a larger disk, with a link to it among their folders.
void TestFileRemoval::aFileOfAFolderThatIsLinkedIsRemoved()
{
    QVERIFY(QDir(m_folder->path()).mkpath(u"disk"_s));
    make(u"disk/a.mp4"_s);
    QVERIFY(QFile::link(path(u"disk"_s), path(u"videos"_s)));
    QCOMPARE(outcome(removal(u"videos/a.mp4"_s).get()), u"removed"_s);
    QVERIFY(!QFile::exists(path(u"disk/a.mp4"_s)));
}

void TestFileRemoval::noPathIsNoFile()
{
    FileRemoval removal{QByteArray()};
    QCOMPARE(outcome(&removal), reason(EINVAL));
}

// A network disk vanished: the person hears of it, and when it comes back hours later the film is still
// there.
void TestFileRemoval::aDiskThatDoesNotAnswer()
{
    make(u"a.mp4"_s);
    std::promise<void> comesBack;
    auto done = std::make_shared<std::promise<void>>();
    const std::shared_future<void> back = comesBack.get_future();
    FileRemoval removal(QFile::encodeName(path(u"a.mp4"_s)), nullptr,
                        [back, done](const QByteArray &file, struct statx *status) {
                            back.wait();
                            const int answer = FileRemoval::lookAt(file, status);
                            done->set_value();
                            return answer;
                        });
    removal.setDeadline(50);
    QCOMPARE(outcome(&removal), reason(ETIMEDOUT));
    QSignalSpy finished(&removal, &FileRemoval::finished);
    comesBack.set_value();
    done->get_future().wait();
    QCoreApplication::processEvents();
    QCOMPARE(finished.size(), 0);
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
}

void TestFileRemoval::deletedWhileTheDiskDoesNotAnswer()
{
    make(u"a.mp4"_s);
    std::promise<void> comesBack;
    auto done = std::make_shared<std::promise<void>>();
    const std::shared_future<void> back = comesBack.get_future();
    {
        FileRemoval removal(QFile::encodeName(path(u"a.mp4"_s)), nullptr,
                            [back, done](const QByteArray &file, struct statx *status) {
                                back.wait();
                                const int answer = FileRemoval::lookAt(file, status);
                                done->set_value();
                                return answer;
                            });
        removal.start();
    }
    comesBack.set_value();
    done->get_future().wait();
    QVERIFY(QFile::exists(path(u"a.mp4"_s)));
}

QTEST_GUILESS_MAIN(TestFileRemoval)
#include "tst_fileremoval.moc"
