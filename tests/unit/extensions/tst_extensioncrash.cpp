// SPDX-License-Identifier: GPL-3.0-or-later
// An extension ends the program, or keeps it from ever answering again. The next start leaves it out and says
// so.
#include "extensionplaces.h"
#include "hostingpage.h"

#include <platform/extensions/extensionarea.h>
#include <platform/extensions/extensionfailures.h>
#include <platform/toolkit/locale.h>

#include <QProcess>
#include <QTest>

#include <memory>

#include <signal.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString crashed = u"“The user one” is not used: Kestrel crashed in it the last time."_s;
const QString hung = u"“The user one” is not used: it stopped responding the last time."_s;

} // namespace

class TestExtensionCrash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aCrashIsRemembered_data();
    void aCrashIsRemembered();
    void aCallThatNeverReturnsIsRemembered();
    void aCallThatEndsTheProgramIsRemembered();
    void codeThatComputesForEverIsRemembered();
    void codeThatComputesLongIsForgiven();
    void codeThatNeverReturnsIsRememberedWhenTheProgramIsToEnd();
    void whatIsNotItsDoingIsNotBlamedOnIt_data();
    void whatIsNotItsDoingIsNotBlamedOnIt();
    void anotherLibraryIsAnotherExtension();
    void theSystemsStandsInForTheUsers();
    void whatTheUsersDidIsKeptWhileItIsAway();
    void thePersonMayTryItAgain();
    void whatRunsElsewhereIsNotTakenForDead();
    void aStateFolderThatCannotBeWritten();

private:
    void start(const char *fault, const QStringList &arguments = {});
    void load();
    // What the file of marks says: the end when there was one, else what is called.
    [[nodiscard]] QByteArray marker() const;
    [[nodiscard]] QStringList texts() const { return m_area->failures()->texts(); }

    toolkit::Locale m_locale;
    std::unique_ptr<ExtensionPlaces> m_places;
    std::unique_ptr<QProcess> m_program;
    std::unique_ptr<ExtensionArea> m_area;
    std::unique_ptr<HostingPage> m_page;
};

void TestExtensionCrash::initTestCase()
{
    m_locale.installTrCatalog(u"video"_s);
    toolkit::Locale::setDefault(&m_locale);
}

void TestExtensionCrash::init()
{
    m_places = std::make_unique<ExtensionPlaces>();
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_faulty"_s);
}

void TestExtensionCrash::cleanup()
{
    m_page.reset();
    m_area.reset();
    m_program.reset();
    m_places.reset();
}

// The program before.
void TestExtensionCrash::start(const char *fault, const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"FAULT"_s, QString::fromUtf8(fault));
    m_program = std::make_unique<QProcess>();
    m_program->setProcessEnvironment(environment);
    m_program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_program->start(QStringLiteral(KESTREL_BIN_DIR "/../tests/extensionhost"), arguments);
    QVERIFY(m_program->waitForStarted());
}

// The next one.
void TestExtensionCrash::load()
{
    m_area = std::make_unique<ExtensionArea>(u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s);
    m_area->setInProcessFilter(QRegularExpression(u"tested.desktop"_s));
    m_page = std::make_unique<HostingPage>(m_area.get());
    m_area->init();
}

QByteArray TestExtensionCrash::marker() const
{
    QFile file(m_places->marker(u"user"_s, u"tested.desktop"_s));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray call = file.readLine().trimmed();
    const QByteArray end = file.readLine().trimmed();
    return end.isEmpty() ? call : end;
}

void TestExtensionCrash::aCrashIsRemembered_data()
{
    QTest::addColumn<QByteArray>("where");
    QTest::newRow("crash in library") << QByteArray("its library's start");
    QTest::newRow("crash in destructor") << QByteArray("its destructor");
    QTest::newRow("crash in constructor") << QByteArray("its constructor");
    QTest::newRow("crash in content") << QByteArray("contentChanged()");
    QTest::newRow("abort in content") << QByteArray("contentChanged()");
    QTest::newRow("overflow in content") << QByteArray("contentChanged()");
    QTest::newRow("crash in paint") << QByteArray("code of its own");
    QTest::newRow("crash in timer") << QByteArray("code of its own");
    QTest::newRow("throw in timer") << QByteArray("code of its own");
    QTest::newRow("crash in thread") << QByteArray("code of its own");
}

void TestExtensionCrash::aCrashIsRemembered()
{
    QFETCH(QByteArray, where);
    start(QTest::currentDataTag(),
          QLatin1StringView(QTest::currentDataTag()) == "crash in destructor"_L1 ? QStringList(u"quit"_s)
                                                                                 : QStringList());
    QVERIFY(m_program->waitForFinished());
    QVERIFY(m_program->exitStatus() == QProcess::CrashExit || m_program->exitCode() != 0);
    QVERIFY2(marker().startsWith("crashed in "), marker().constData());
    if (QLatin1StringView(QTest::currentDataTag()) != "crash in thread"_L1) // may be while anything is called
        QCOMPARE(marker(), "crashed in " + where);
    load();
    QCOMPARE(m_page->extensions(), 0);
    QCOMPARE(texts(), QStringList(crashed));
    // It stays so.
    m_area->unload();
    m_area->init();
    QCOMPARE(texts(), QStringList(crashed));
}

void TestExtensionCrash::aCallThatNeverReturnsIsRemembered()
{
    start("hang in content");
    QTRY_COMPARE(marker(), QByteArray("in contentChanged()"));
    m_program->kill();
    QVERIFY(m_program->waitForFinished());
    load();
    QCOMPARE(m_page->extensions(), 0);
    QCOMPARE(texts(), QStringList(hung));
}

// “Kestrel was gone at once, without a word.”
void TestExtensionCrash::aCallThatEndsTheProgramIsRemembered()
{
    start("exit in content");
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(marker(), QByteArray("in contentChanged()"));
    load();
    QCOMPARE(m_page->extensions(), 0);
    QCOMPARE(texts(), QStringList(hung));
}

// Somebody kills the program, since it stands still in a paint event.
void TestExtensionCrash::codeThatComputesForEverIsRemembered()
{
    start("compute for ever in paint");
    QTRY_COMPARE_WITH_TIMEOUT(marker(), QByteArray("in code of its own"), 30'000);
    m_program->kill();
    QVERIFY(m_program->waitForFinished());
    load();
    QCOMPARE(texts(), QStringList(hung));
}

void TestExtensionCrash::codeThatComputesLongIsForgiven()
{
    start("compute long in paint");
    QTRY_COMPARE_WITH_TIMEOUT(marker(), QByteArray("in code of its own"), 30'000);
    QTRY_COMPARE_WITH_TIMEOUT(marker(), QByteArray("idle"), 30'000);
    m_program->kill();
    QVERIFY(m_program->waitForFinished());
    load();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
}

// The alarm that the program sets itself when it is asked to end finds who holds it up.
void TestExtensionCrash::codeThatNeverReturnsIsRememberedWhenTheProgramIsToEnd()
{
    start("hang in timer");
    QByteArray said;
    QTRY_VERIFY((said += m_program->readAll()).contains("hangs"));
    kill(pid_t(m_program->processId()), SIGALRM);
    QVERIFY(m_program->waitForFinished());
    QCOMPARE(marker(), QByteArray("in code of its own"));
    load();
    QCOMPARE(texts(), QStringList(hung));
}

void TestExtensionCrash::whatIsNotItsDoingIsNotBlamedOnIt_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("crash") << 0;
    QTest::newRow("quit") << 0;
    QTest::newRow("killed") << SIGKILL;
    QTest::newRow("asked to end") << SIGTERM;
    QTest::newRow("a crash from outside") << SIGSEGV;
}

void TestExtensionCrash::whatIsNotItsDoingIsNotBlamedOnIt()
{
    QFETCH(int, signal);
    start("", {QString::fromUtf8(QTest::currentDataTag())});
    QVERIFY(m_program->waitForReadyRead());
    if (signal != 0)
        kill(pid_t(m_program->processId()), signal);
    QVERIFY(m_program->waitForFinished());
    load();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
}

void TestExtensionCrash::anotherLibraryIsAnotherExtension()
{
    start("crash in content");
    QVERIFY(m_program->waitForFinished());
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    load();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
    QCOMPARE(marker(), QByteArray("idle"));
}

// “The extension that I made crashed, and now there are no related videos at all, not even by the one that
// came with the program.”
void TestExtensionCrash::theSystemsStandsInForTheUsers()
{
    m_places->install(u"system"_s, u"tested.desktop"_s, u"ext_watched"_s);
    start("crash in content");
    QVERIFY(m_program->waitForFinished());
    load();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList(crashed));
    QVERIFY(QFile::exists(m_places->marker(u"system"_s, u"tested.desktop"_s)));
    // It is there once, also when the area looks again.
    m_area->init();
    QCOMPARE(m_page->extensions(), 1);
    m_area->tryAgain(m_area->failures()->list().constFirst().file);
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
    QCOMPARE(marker(), QByteArray("idle"));
    QVERIFY(!QFile::exists(m_places->marker(u"system"_s, u"tested.desktop"_s)));
}

void TestExtensionCrash::whatTheUsersDidIsKeptWhileItIsAway()
{
    m_places->install(u"system"_s, u"tested.desktop"_s, u"ext_watched"_s);
    start("crash in content");
    QVERIFY(m_program->waitForFinished());
    const QString user = m_places->folder(u"user"_s);
    QVERIFY(QFile::rename(user, user + u".away"_s));
    load();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
    m_page.reset();
    m_area.reset();
    QVERIFY(QFile::rename(user + u".away"_s, user));
    load();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList(crashed));
}

void TestExtensionCrash::thePersonMayTryItAgain()
{
    start("crash in content");
    QVERIFY(m_program->waitForFinished());
    load();
    const ExtensionFailure failure = m_area->failures()->list().constFirst();
    QVERIFY(failure.canBeTriedAgain());
    m_area->tryAgain(failure.file);
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(texts(), QStringList());
    QCOMPARE(marker(), QByteArray("idle"));
}

// It hangs, and a second program is started meanwhile.
void TestExtensionCrash::whatRunsElsewhereIsNotTakenForDead()
{
    start("hang in content");
    QTRY_COMPARE(marker(), QByteArray("in contentChanged()"));
    load();
    QCOMPARE(m_page->extensions(), 1);
    m_area->unload();
    QCOMPARE(marker(), QByteArray("in contentChanged()"));
    m_program->kill();
    QVERIFY(m_program->waitForFinished());
    m_area->init();
    QCOMPARE(texts(), QStringList(hung));
}

void TestExtensionCrash::aStateFolderThatCannotBeWritten()
{
    qputenv("XDG_STATE_HOME", "/proc/nobody/writes/here");
    load();
    QCOMPARE(m_page->extensions(), 1);
    m_page->show({});
    m_area->unload();
    QCOMPARE(texts(), QStringList());
}

QTEST_MAIN(TestExtensionCrash)
#include "tst_extensioncrash.moc"
