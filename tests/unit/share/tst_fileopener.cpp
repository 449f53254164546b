// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/fileopener.h"
#include "support/heartbeat.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <semaphore>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

QByteArray contentOf(const QDBusUnixFileDescriptor &descriptor)
{
    QFile file;
    return file.open(descriptor.fileDescriptor(), QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

int openDescriptors()
{
    return int(
        QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System).size());
}

} // namespace

class FileOpenerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void oddNamesAreOpenedAsThemselves();
    void readOnlyAndNotInherited();
    void whatCannotBeOpened_data();
    void whatCannotBeOpened();
    void oneOfSeveralIsMissing();
    void aPathThatStallsHoldsUpNobody();
    void deletedBeforeTheAnswer();

private:
    QString write(const QString &name, const QByteArray &content)
    {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            return {};
        return file.fileName();
    }
    // The descriptors of what opener says.
    static QList<QDBusUnixFileDescriptor> filesOf(FileOpener &opener)
    {
        QSignalSpy opened(&opener, &FileOpener::opened);
        opener.start();
        if (opened.isEmpty() && !opened.wait(TestPatience))
            return {};
        return opened.first().first().value<QList<QDBusUnixFileDescriptor>>();
    }

    QTemporaryDir m_dir;
};

void FileOpenerTest::oddNamesAreOpenedAsThemselves()
{
    // Somebody has both: the one with the odd name, and the one that its name means when it is decoded.
    const QString odd = write(u"a%20b#1?.mp4"_s, "odd");
    QVERIFY(!write(u"a b"_s, "decoded").isEmpty());
    FileOpener opener({odd, write(u"فيديو \n.mp4"_s, "second")});
    const auto files = filesOf(opener);
    QCOMPARE(files.size(), 2);
    QCOMPARE(contentOf(files.at(0)), QByteArray("odd"));
    QCOMPARE(contentOf(files.at(1)), QByteArray("second"));
}

void FileOpenerTest::readOnlyAndNotInherited()
{
    FileOpener opener({write(u"a.mp4"_s, "x")});
    const auto files = filesOf(opener);
    QCOMPARE(files.size(), 1);
    const int descriptor = files.first().fileDescriptor();
    QCOMPARE(fcntl(descriptor, F_GETFL) & O_ACCMODE, O_RDONLY);
    QCOMPARE(fcntl(descriptor, F_GETFL) & O_NONBLOCK, 0);
    QVERIFY(fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
}

void FileOpenerTest::whatCannotBeOpened_data()
{
    QTest::addColumn<QString>("path");
    const QString pipe = m_dir.filePath(u"pipe"_s);
    if (!QFile::exists(pipe))
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QTest::newRow("missing") << m_dir.filePath(u"missing.mp4"_s);
    QTest::newRow("a folder") << m_dir.path();
    QTest::newRow("a pipe that nobody writes to") << pipe;
    QTest::newRow("a device") << u"/dev/zero"_s;
    QTest::newRow("nothing") << QString();
    QTest::newRow("a name that is another file's up to a null")
        << write(u"a.mp4"_s, "x") + QChar(u'\0') + u".mp4"_s;
}

void FileOpenerTest::whatCannotBeOpened()
{
    QFETCH(QString, path);
    FileOpener opener({path});
    QSignalSpy failed(&opener, &FileOpener::failed);
    QSignalSpy opened(&opener, &FileOpener::opened);
    opener.start();
    QVERIFY(failed.isEmpty()); // never from within start()
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed.first().first().toString(), path);
    QVERIFY(!failed.first().last().toString().isEmpty());
    QCOMPARE(opened.size(), 0);
}

void FileOpenerTest::oneOfSeveralIsMissing()
{
    const int before = openDescriptors();
    FileOpener opener({write(u"a.mp4"_s, "x"), m_dir.filePath(u"missing.mp4"_s)});
    QSignalSpy failed(&opener, &FileOpener::failed);
    opener.start();
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed.first().first().toString(), m_dir.filePath(u"missing.mp4"_s));
    QTRY_COMPARE(openDescriptors(), before); // the other one is closed again
}

// The card sleeps, the network is gone: open() does not come back for minutes.
void FileOpenerTest::aPathThatStallsHoldsUpNobody()
{
    const auto gate = std::make_shared<std::binary_semaphore>(0);
    const auto left = std::make_shared<std::binary_semaphore>(0);
    auto opener = std::make_unique<FileOpener>(QStringList{u"/slow"_s});
    opener->setOpenFunction([gate, left](const char *) {
        gate->acquire();
        left->release();
        return ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    });
    opener->setDeadline(200);
    QSignalSpy failed(opener.get(), &FileOpener::failed);
    QSignalSpy opened(opener.get(), &FileOpener::opened);
    const Heartbeat heart;
    opener->start();
    QVERIFY2(heart.isSteady(), heart.report());
    QVERIFY(failed.wait(TestPatience));
    QCOMPARE(failed.first().first().toString(), u"/slow"_s);
    opener.reset();
    gate->release(); // the card is back, the opener gone
    left->acquire();
    QCOMPARE(opened.size(), 0);
}

void FileOpenerTest::deletedBeforeTheAnswer()
{
    const int before = openDescriptors();
    const QString path = write(u"a.mp4"_s, "x");
    for (int i = 0; i < 50; ++i) {
        FileOpener opener({path});
        opener.start();
        if (i % 2 == 0)
            QCoreApplication::processEvents();
    }
    QTRY_COMPARE(openDescriptors(), before);
}

QTEST_GUILESS_MAIN(FileOpenerTest)
#include "tst_fileopener.moc"
