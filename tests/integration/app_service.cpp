// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storesession.h"
#include "support/testclips.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QProcess>
#include <QTest>
#include <QUuid>

#include <signal.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString ServiceName = u"com.harrow.orlan.sorelkit.KestrelService"_s;
const QString InterfaceName = u"com.harrow.orlan.sorelkit.KestrelInterface"_s;
const QString InstanceName = u"com.harrow.Kestrel"_s;
constexpr int Patience = 20000; // ms

} // namespace

// The real program beside the real store, asked over the session bus as other programs ask it.
class AppServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void launchRaisesTheWindowAndIsAnnounced();
    void cancelEndsTheProgram();
    void playOfTwoAddressesPlaysTheFirst();
    void playResumesWhereTheStoreSaysOrWhereAsked();
    void secondStartOpensNoWindowAndPlaysNothing();
    void startAddressPlaysAndBackLeadsToTheLibrary();

public Q_SLOTS:
    void heard(const QDBusMessage &signal) { m_heard.append(signal.member()); }

private:
    void startProgram(const QStringList &arguments);
    [[nodiscard]] bool isServed(const QString &name) { return m_bus.interface()->isServiceRegistered(name); }
    [[nodiscard]] bool call(const QString &method, const QVariantList &arguments);
    [[nodiscard]] QStringList windows();
    void key(const QString &name);
    [[nodiscard]] QString address(const QString &name)
    {
        return u"file://"_s + m_session->videos() + u'/' + name;
    }
    [[nodiscard]] int plays(const QString &name)
    {
        const QString urn = urnOf(m_client.get(), name);
        return m_client->value(u"SELECT nie:usageCounter(<%1>) {}"_s.arg(urn)).toInt();
    }
    [[nodiscard]] QString place(const QString &name)
    {
        return valueOf(m_client.get(), name, u"nmm:runTime"_s);
    }

    std::unique_ptr<StoreSession> m_session;
    std::unique_ptr<StoreClient> m_client;
    std::unique_ptr<QProcess> m_program;
    QDBusConnection m_bus{u"none"_s};
    QStringList m_heard;
};

void AppServiceTest::init()
{
    m_heard.clear();
    m_session = std::make_unique<StoreSession>();
    QVERIFY(m_session->isValid());
    TestClips::Clip clip;
    clip.seconds = 30;
    QCOMPARE(TestClips::make(m_session->videos() + u"/a.mp4"_s, clip), QString());
    QVERIFY(QFile::copy(m_session->videos() + u"/a.mp4"_s, m_session->videos() + u"/b.mp4"_s));
    QVERIFY(m_session->start());
    m_client = m_session->connectClient();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 2, Patience);
    m_bus = QDBusConnection::connectToBus(m_session->environment().value(u"DBUS_SESSION_BUS_ADDRESS"_s),
                                          QUuid::createUuid().toString());
    for (const QString &signal : {u"playbackStarted"_s, u"launched"_s})
        QVERIFY(m_bus.connect(ServiceName, u"/"_s, InterfaceName, signal, this, SLOT(heard(QDBusMessage))));
}

void AppServiceTest::cleanup()
{
    if (m_program && m_program->state() == QProcess::Running) {
        m_program->terminate();
        if (!m_program->waitForFinished(Patience))
            m_program->kill();
    }
    m_program.reset();
    m_client.reset();
    // The program started it.
    const QDBusReply<uint> thumbnailer = m_bus.interface()->servicePid(u"com.harrow.Kestrel.Thumbnailer"_s);
    if (thumbnailer.isValid())
        ::kill(pid_t(thumbnailer.value()), SIGTERM);
    QDBusConnection::disconnectFromBus(m_bus.name());
    m_session.reset();
}

void AppServiceTest::startProgram(const QStringList &arguments)
{
    QTRY_VERIFY_WITH_TIMEOUT(!isServed(ServiceName), Patience); // by the one before
    m_program = std::make_unique<QProcess>();
    m_program->setProcessEnvironment(m_session->environment());
    m_program->setProcessChannelMode(QProcess::ForwardedChannels);
    m_program->start(QStringLiteral(KESTREL_BIN_DIR) + u"/kestrel"_s, arguments);
    QVERIFY(m_program->waitForStarted());
    QTRY_VERIFY_WITH_TIMEOUT(isServed(ServiceName), Patience);
}

bool AppServiceTest::call(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(ServiceName, u"/"_s, InterfaceName, method);
    message.setArguments(arguments);
    const QDBusPendingCall reply = m_bus.asyncCall(message);
    return QTest::qWaitFor([&reply] { return reply.isFinished(); }, Patience) && !reply.isError();
}

QStringList AppServiceTest::windows()
{
    QProcess search;
    search.start(u"xdotool"_s,
                 {u"search"_s, u"--onlyvisible"_s, u"--pid"_s, QString::number(m_program->processId())});
    search.waitForFinished(Patience);
    return QString::fromLatin1(search.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
}

void AppServiceTest::key(const QString &name)
{
    QCOMPARE(QProcess::execute(u"xdotool"_s, {u"key"_s, u"--clearmodifiers"_s, name}), 0);
}

void AppServiceTest::launchRaisesTheWindowAndIsAnnounced()
{
    startProgram({u"-servicefw"_s});
    QVERIFY(call(u"launch"_s, {1u, u"title"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(m_heard, QStringList(u"launched"_s), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!windows().isEmpty(), Patience);
    QCOMPARE(m_program->state(), QProcess::Running);
}

void AppServiceTest::cancelEndsTheProgram()
{
    startProgram({});
    QVERIFY(call(u"cancel"_s, {}));
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, Patience);
    QCOMPARE(m_program->exitStatus(), QProcess::NormalExit);
    QCOMPARE(m_program->exitCode(), 0);
}

void AppServiceTest::playOfTwoAddressesPlaysTheFirst()
{
    startProgram({u"-servicefw"_s});
    QVERIFY(call(u"play"_s, {QStringList{address(u"a.mp4"_s), address(u"b.mp4"_s)}}));
    QTRY_COMPARE_WITH_TIMEOUT(m_heard, QStringList(u"playbackStarted"_s), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(plays(u"a.mp4"_s), 1, Patience);
    QVERIFY(call(u"cancel"_s, {}));
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, Patience);
    QCOMPARE(plays(u"b.mp4"_s), 0);
}

void AppServiceTest::playResumesWhereTheStoreSaysOrWhereAsked()
{
    startProgram({u"-servicefw"_s});
    QVERIFY(call(u"play"_s, {QStringList{address(u"a.mp4"_s)}, 12u}));
    QTRY_COMPARE_WITH_TIMEOUT(plays(u"a.mp4"_s), 1, Patience);
    QVERIFY(call(u"cancel"_s, {}));
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, Patience);
    const int asked = place(u"a.mp4"_s).toInt();
    QVERIFY2(asked >= 12 && asked < 28, qPrintable(place(u"a.mp4"_s)));

    startProgram({u"-servicefw"_s});
    QVERIFY(call(u"play"_s, {1u, u"title"_s, QStringList{address(u"a.mp4"_s)}}));
    QTRY_COMPARE_WITH_TIMEOUT(plays(u"a.mp4"_s), 2, Patience);
    QVERIFY(call(u"cancel"_s, {}));
    QTRY_COMPARE_WITH_TIMEOUT(m_program->state(), QProcess::NotRunning, Patience);
    QVERIFY2(place(u"a.mp4"_s).toInt() >= asked, qPrintable(place(u"a.mp4"_s)));
}

void AppServiceTest::secondStartOpensNoWindowAndPlaysNothing()
{
    startProgram({});
    QVERIFY(isServed(InstanceName));
    QTRY_VERIFY_WITH_TIMEOUT(!windows().isEmpty(), Patience);
    const QStringList before = windows();
    QProcess second;
    second.setProcessEnvironment(m_session->environment());
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    second.start(QStringLiteral(KESTREL_BIN_DIR) + u"/kestrel"_s, {m_session->videos() + u"/b.mp4"_s});
    QTRY_COMPARE_WITH_TIMEOUT(second.state(), QProcess::NotRunning, Patience);
    QCOMPARE(second.exitStatus(), QProcess::NormalExit);
    QCOMPARE(second.exitCode(), 0);
    QCOMPARE(windows(), before);
    // What is asked over the bus afterwards is the first that plays.
    QVERIFY(call(u"play"_s, {QStringList{address(u"a.mp4"_s)}}));
    QTRY_COMPARE_WITH_TIMEOUT(plays(u"a.mp4"_s), 1, Patience);
    QCOMPARE(plays(u"b.mp4"_s), 0);
    // The count comes another way, and may be there before the signal was handed on.
    QTRY_COMPARE_WITH_TIMEOUT(m_heard, QStringList(u"playbackStarted"_s), Patience);
}

void AppServiceTest::startAddressPlaysAndBackLeadsToTheLibrary()
{
    startProgram({m_session->videos() + u"/a.mp4"_s});
    QTRY_COMPARE_WITH_TIMEOUT(plays(u"a.mp4"_s), 1, Patience);
    QCOMPARE(m_program->state(), QProcess::Running);
    QTRY_VERIFY_WITH_TIMEOUT(!windows().isEmpty(), Patience);
    key(u"BackSpace"_s);
    // The place is saved, and the program stays: the library is there.
    QTRY_VERIFY_WITH_TIMEOUT(!place(u"a.mp4"_s).isEmpty(), Patience);
    QCOMPARE(m_program->state(), QProcess::Running);
    QVERIFY(call(u"launch"_s, {1u, u"title"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(m_heard.count(u"launched"_s), 1, Patience);
}

QTEST_GUILESS_MAIN(AppServiceTest)
#include "app_service.moc"
