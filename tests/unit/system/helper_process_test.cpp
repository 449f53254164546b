// SPDX-License-Identifier: GPL-3.0-or-later
// The programs that this one starts as parts of itself: where they are found, what they are given, and that
// they never outlive it.
#include "platform/system/helperprocess.h"
#include "platform/system/ownprograms.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <memory>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_waitMs = 30000;

// A process that has ended but was not waited for by its parent counts as ended.
bool isRunning(qint64 process)
{
    QFile file(u"/proc/%1/stat"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = file.readAll();
    return line.mid(line.lastIndexOf(')') + 2, 1) != "Z";
}

} // namespace

class TestHelperProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isFoundWhereItLies();
    void anotherOneCanBeNamed();
    void getsNothingOfTheEnvironment();
    void isPreparedBeforeItBegins();
    void saysThatItDidNotStart();
    void endsWithItsObject();
    void endsWithWhoeverStartedIt();
};

void TestHelperProcess::isFoundWhereItLies()
{
    const QFileInfo self(QCoreApplication::applicationFilePath());
    QCOMPARE(helperProgram(self.fileName()), self.canonicalFilePath());
    QCOMPARE(installedProgram(self.fileName()), self.canonicalFilePath());
    // The programs of the build tree lie in another folder than its tests.
    QCOMPARE(helperProgram(u"kestrel-odbc"_s),
             QFileInfo(QStringLiteral(KESTREL_BIN_DIR "/kestrel-odbc")).canonicalFilePath());
    QCOMPARE(installedProgram(u"kestrel-odbc"_s), QString());
    // Whoever cannot start it says which file is not there.
    const QString missing = helperProgram(u"kestrel-nothing"_s);
    QVERIFY2(missing.startsWith(u'/') && missing.endsWith(u"/kestrel/kestrel-nothing"_s),
             qUtf8Printable(missing));
}

void TestHelperProcess::anotherOneCanBeNamed()
{
    qputenv("KESTREL_ODBC_PROGRAM", "/opt/other");
    QCOMPARE(helperProgram(u"kestrel-odbc"_s), u"/opt/other"_s);
    qunsetenv("KESTREL_ODBC_PROGRAM");
}

void TestHelperProcess::getsNothingOfTheEnvironment()
{
    qputenv("KESTREL_TEST_SECRET", "secret");
    qputenv("KESTREL_TEST_PASSED", "passed");
    HelperProcess process;
    QSignalSpy ended(&process, &HelperProcess::ended);
    process.passOn({u"KESTREL_TEST_PASSED"_s, u"KESTREL_TEST_ABSENT"_s});
    process.startHelper(u"/usr/bin/env"_s, {});
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, s_waitMs);
    QStringList lines = QString::fromLatin1(process.readAllStandardOutput().trimmed()).split(u'\n');
    lines.sort();
    QCOMPARE(lines, QStringList({u"KESTREL_TEST_PASSED=passed"_s, u"LANG=C.UTF-8"_s}));
    qunsetenv("KESTREL_TEST_SECRET");
    qunsetenv("KESTREL_TEST_PASSED");
}

void TestHelperProcess::isPreparedBeforeItBegins()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(folder.path());
    HelperProcess process;
    QSignalSpy ended(&process, &HelperProcess::ended);
    process.startHelper(u"/bin/pwd"_s, {u"-P"_s}, [path] {
        if (chdir(path.constData()) != 0)
            _exit(1);
    });
    QTRY_COMPARE_WITH_TIMEOUT(ended.size(), 1, s_waitMs);
    QCOMPARE(process.readAllStandardOutput().trimmed(),
             QFileInfo(folder.path()).canonicalFilePath().toUtf8());
}

void TestHelperProcess::saysThatItDidNotStart()
{
    HelperProcess process;
    QSignalSpy ended(&process, &HelperProcess::ended);
    process.startHelper(u"/no/such/program"_s, {});
    QTRY_VERIFY_WITH_TIMEOUT(!ended.isEmpty(), s_waitMs);
    QCOMPARE(process.error(), QProcess::FailedToStart);
}

void TestHelperProcess::endsWithItsObject()
{
    auto process = std::make_unique<HelperProcess>();
    process->startHelper(u"/bin/sleep"_s, {u"1000"_s});
    QVERIFY(process->waitForStarted(s_waitMs));
    const qint64 id = process->processId();
    QVERIFY(isRunning(id));
    process.reset();
    QTRY_VERIFY_WITH_TIMEOUT(!isRunning(id), s_waitMs);
}

// The one that started it is killed, and can do nothing more itself.
void TestHelperProcess::endsWithWhoeverStartedIt()
{
    QProcess starter;
    starter.start(QCoreApplication::applicationFilePath(), {u"--starter"_s});
    QTRY_VERIFY_WITH_TIMEOUT(starter.canReadLine(), s_waitMs);
    const qint64 helper = starter.readLine().trimmed().toLongLong();
    QVERIFY(isRunning(helper));
    starter.kill();
    QVERIFY(starter.waitForFinished(s_waitMs));
    QTRY_VERIFY_WITH_TIMEOUT(!isRunning(helper), s_waitMs);
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (application.arguments().contains(u"--starter"_s)) {
        HelperProcess process;
        process.startHelper(u"/bin/sleep"_s, {u"1000"_s});
        if (!process.waitForStarted(s_waitMs))
            return 1;
        printf("%lld\n", process.processId());
        fflush(stdout);
        return application.exec();
    }
    TestHelperProcess test;
    return QTest::qExec(&test, argc, argv);
}

#include "helper_process_test.moc"
