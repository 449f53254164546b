// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/desktopdisplaywatcher.h"
#include "support/heartbeat.h"
#include "support/loglines.h"
#include "support/mockedbus.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <sys/socket.h>
#include <sys/un.h>
#include <xcb/xcb.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString Compositor = u"org.gnome.Mutter.DisplayConfig"_s;
const QString CompositorPath = u"/org/gnome/Mutter/DisplayConfig"_s;

// An X server whose screens the test switches, and a connection to it.
class PowerServer
{
public:
    [[nodiscard]] bool start(const QStringList &options = {})
    {
        const QString path = m_folder.filePath(u"x"_s);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(
            u"/usr/bin/python3"_s,
            QStringList{QStringLiteral(KESTREL_SOURCE_DIR "/tests/support/mocks/xserver.py"), path}
                + options);
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(20000))
                return false;
        }
        m_process.readLine(); // that it is ready
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0)
            return false;
        connection = xcb_connect_to_fd(descriptor, nullptr); // which owns it
        return xcb_connection_has_error(connection) == 0;
    }
    ~PowerServer()
    {
        if (connection)
            xcb_disconnect(connection);
        m_process.kill();
        m_process.waitForFinished();
    }
    void tell(const char *command)
    {
        m_process.write(QByteArray(command) + '\n');
        m_process.waitForBytesWritten();
    }
    // Questions so far.
    [[nodiscard]] int asked()
    {
        m_asked += int(m_process.readAllStandardOutput().count('\n'));
        return m_asked;
    }

    xcb_connection_t *connection = nullptr;

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    int m_asked = 0;
};

} // namespace

// The display as the compositor tells of it, or the X server.
class DeviceDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.isUp()); }
    void init() { m_compositor = m_bus.service(u"mutter"_s, Compositor, CompositorPath); }
    void cleanup();

    void withNobodyToTellItIsOn();
    void withoutABusItIsOn();
    void theCompositorsModes_data();
    void theCompositorsModes();
    void changesOfTheCompositorAreFollowed();
    void aCompositorThatComesLaterCounts();
    void aCompositorThatIsStartedAgainIsReadAgain();
    void aLateCompositorHoldsNobodyUp();
    void nonsenseOfTheCompositor();
    void aPropertyThatIsOnlyInvalidatedIsReadAgain();

    void theXServerTellsWhereNoCompositorDoes();
    void theXServersLevelsCountOnlyWhileEnabled();
    void theXServerIsAskedOnlyWhileSomebodyListens();
    void theCompositorGoesBeforeTheXServer();
    void anXServerWithoutPowerSavingIsLeftAlone();
    void aSilentXServerHoldsNobodyUp();
    void anXServerThatGoesLeavesTheDisplayOn();

private:
    void make(xcb_connection_t *xServer = nullptr);
    void setMode(const QVariant &mode)
    {
        m_compositor->setProperty(CompositorPath, Compositor, u"PowerSaveMode"_s, mode);
    }
    // The next question to the X server is due.
    void hurry();
    [[nodiscard]] QString told() const;

    MockedBus m_bus;
    std::unique_ptr<MockService> m_compositor;
    std::unique_ptr<DesktopDisplayWatcher> m_watcher;
    std::unique_ptr<QSignalSpy> m_spy;
};

void DeviceDisplay::cleanup()
{
    m_spy.reset();
    m_watcher.reset();
    m_compositor.reset();
}

void DeviceDisplay::make(xcb_connection_t *xServer)
{
    m_watcher = std::make_unique<DesktopDisplayWatcher>(m_bus.client, xServer, nullptr);
    m_spy = std::make_unique<QSignalSpy>(m_watcher.get(), &DisplayWatcher::stateChanged);
    QCOMPARE(m_watcher->state(), 1);
}

void DeviceDisplay::hurry()
{
    const auto *power = m_watcher->findChild<DpmsPower *>();
    QVERIFY(power);
    auto *timer = power->findChild<QTimer *>();
    QVERIFY(timer && timer->isActive());
    timer->start(0);
}

// "0 1": the state of every signal.
QString DeviceDisplay::told() const
{
    QStringList all;
    for (const QVariantList &signal : std::as_const(*m_spy))
        all.append(QString::number(signal.at(0).toInt()));
    return all.join(u' ');
}

void DeviceDisplay::withNobodyToTellItIsOn()
{
    const LogLines log("kestrel.system");
    make();
    QTRY_COMPARE(log.all(), QStringList{u"no compositor tells whether the display is on: it counts as on"_s});
    QCOMPARE(told(), QString());
}

void DeviceDisplay::withoutABusItIsOn()
{
    const DesktopDisplayWatcher watcher(MockedBus::nowhere(), nullptr, nullptr);
    QCOMPARE(watcher.state(), 1);
}

void DeviceDisplay::theCompositorsModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("expected");
    QTest::newRow("standby") << 1 << u"0"_s;
    QTest::newRow("suspended") << 2 << u"0"_s;
    QTest::newRow("off") << 3 << u"0"_s;
    QTest::newRow("unheard of") << 9 << u"0"_s;
}

void DeviceDisplay::theCompositorsModes()
{
    QFETCH(const int, mode);
    QFETCH(const QString, expected);
    QVERIFY(m_compositor->start({{u"mode"_s, mode}}));
    make();
    QTRY_COMPARE(told(), expected);
    setMode(-1); // it does not know: on
    QTRY_COMPARE(told(), expected + u" 1"_s);
}

void DeviceDisplay::changesOfTheCompositorAreFollowed()
{
    QVERIFY(m_compositor->start());
    make();
    setMode(3);
    QTRY_COMPARE(told(), u"0"_s);
    setMode(1); // another depth of off
    setMode(0);
    QTRY_COMPARE(told(), u"0 1"_s);
    QCOMPARE(m_watcher->state(), 1);
}

void DeviceDisplay::aCompositorThatComesLaterCounts()
{
    make();
    QVERIFY(m_compositor->start({{u"mode"_s, 3}}));
    QTRY_COMPARE(told(), u"0"_s);
}

void DeviceDisplay::aCompositorThatIsStartedAgainIsReadAgain()
{
    QVERIFY(m_compositor->start({{u"mode"_s, 3}}));
    make();
    QTRY_COMPARE(told(), u"0"_s);
    const LogLines log("kestrel.system");
    m_compositor->stop();
    QTRY_COMPARE(told(), u"0 1"_s);
    QCOMPARE(log.all(), QStringList{u"no compositor tells whether the display is on: it counts as on"_s});
    QVERIFY(m_compositor->start({{u"mode"_s, 2}}));
    QTRY_COMPARE(told(), u"0 1 0"_s);
    setMode(0);
    QTRY_COMPARE(told(), u"0 1 0 1"_s);
}

void DeviceDisplay::aLateCompositorHoldsNobodyUp()
{
    QVERIFY(m_compositor->start({{u"mode"_s, 3}}));
    m_compositor->freeze();
    const Heartbeat heartbeat;
    make();
    QTimer::singleShot(2000, m_watcher.get(), [this] { m_compositor->thaw(); });
    QVERIFY(m_spy->wait(15000));
    QCOMPARE(told(), u"0"_s);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceDisplay::nonsenseOfTheCompositor()
{
    QVERIFY(m_compositor->start());
    make();
    setMode(3);
    QTRY_COMPARE(told(), u"0"_s);
    const LogLines log("kestrel.system");
    const QString properties = u"org.freedesktop.DBus.Properties"_s;
    m_compositor->emitSignal(CompositorPath, properties, u"PropertiesChanged"_s, u"s"_s, {Compositor});
    m_compositor->emitSignal(CompositorPath, properties, u"PropertiesChanged"_s, u"sa{sv}as"_s,
                             {Compositor, QVariantMap{{u"PowerSaveMode"_s, u"off"_s}}, QStringList()});
    QTRY_VERIFY(
        log.contains(u"the compositor does not tell whether the display is on (a value of type QString)"_s));
    QCOMPARE(told(), u"0"_s); // what was known holds
    setMode(0);
    QTRY_COMPARE(told(), u"0 1"_s);
}

void DeviceDisplay::aPropertyThatIsOnlyInvalidatedIsReadAgain()
{
    QVERIFY(m_compositor->start());
    make();
    setMode(3);
    QTRY_COMPARE(told(), u"0"_s);
    m_compositor->emitSignal(CompositorPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                             u"sa{sv}as"_s,
                             {Compositor, QVariantMap{{u"PowerSaveMode"_s, 0}}, QStringList()});
    QTRY_COMPARE(told(), u"0 1"_s);
    m_compositor->emitSignal(CompositorPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
                             u"sa{sv}as"_s, {Compositor, QVariantMap(), QStringList{u"PowerSaveMode"_s}});
    QTRY_COMPARE(told(), u"0 1 0"_s); // which it still has
}

void DeviceDisplay::theXServerTellsWhereNoCompositorDoes()
{
    PowerServer server;
    QVERIFY(server.start());
    make(server.connection);
    QTRY_VERIFY(server.asked() > 0);
    server.tell("level 3");
    QTRY_COMPARE_WITH_TIMEOUT(told(), u"0"_s, 10000); // by itself
    server.tell("level 0");
    hurry();
    QTRY_COMPARE(told(), u"0 1"_s);
}

void DeviceDisplay::theXServersLevelsCountOnlyWhileEnabled()
{
    PowerServer server;
    QVERIFY(server.start());
    server.tell("level 1");
    make(server.connection);
    QTRY_COMPARE(told(), u"0"_s);
    server.tell("enabled 0");
    hurry();
    QTRY_COMPARE(told(), u"0 1"_s);
}

void DeviceDisplay::theXServerIsAskedOnlyWhileSomebodyListens()
{
    PowerServer server;
    QVERIFY(server.start());
    make(server.connection);
    QTRY_VERIFY(server.asked() > 0);
    const auto *timer = m_watcher->findChild<DpmsPower *>()->findChild<QTimer *>();
    QVERIFY(timer->isActive());
    m_spy.reset();
    QTRY_VERIFY(!timer->isActive());
    QCOMPARE(m_watcher->state(), 1);
    const int before = server.asked();
    m_spy = std::make_unique<QSignalSpy>(m_watcher.get(), &DisplayWatcher::stateChanged);
    QTRY_VERIFY(server.asked() > before);
}

void DeviceDisplay::theCompositorGoesBeforeTheXServer()
{
    PowerServer server;
    QVERIFY(server.start());
    server.tell("level 3");
    make(server.connection);
    QTRY_COMPARE(told(), u"0"_s);
    QVERIFY(m_compositor->start({{u"mode"_s, 0}}));
    QTRY_COMPARE(told(), u"0 1"_s);
    const auto *timer = m_watcher->findChild<DpmsPower *>()->findChild<QTimer *>();
    QTRY_VERIFY(!timer->isActive());
    m_compositor->stop();
    QTRY_COMPARE(told(), u"0 1 0"_s);
}

void DeviceDisplay::anXServerWithoutPowerSavingIsLeftAlone()
{
    PowerServer server;
    QVERIFY(server.start({u"--without-dpms"_s}));
    const LogLines log("kestrel.system");
    make(server.connection);
    const QString line = u"the X server does not tell whether it switched the display off: it counts as on"_s;
    QTRY_COMPARE(log.count(line), 1);
    const auto *timer = m_watcher->findChild<DpmsPower *>()->findChild<QTimer *>();
    QVERIFY(!timer->isActive());
    QCOMPARE(server.asked(), 0);
    QCOMPARE(told(), QString());
}

void DeviceDisplay::aSilentXServerHoldsNobodyUp()
{
    PowerServer server;
    QVERIFY(server.start());
    server.tell("level 3");
    server.tell("silent");
    const Heartbeat heartbeat;
    make(server.connection);
    QTimer::singleShot(2000, m_watcher.get(), [&server] { server.tell("speak"); });
    QVERIFY(m_spy->wait(20000));
    QCOMPARE(told(), u"0"_s);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceDisplay::anXServerThatGoesLeavesTheDisplayOn()
{
    PowerServer server;
    QVERIFY(server.start());
    server.tell("level 3");
    make(server.connection);
    QTRY_COMPARE(told(), u"0"_s);
    server.tell("leave");
    hurry();
    QTRY_COMPARE_WITH_TIMEOUT(told(), u"0 1"_s, 10000);
    QVERIFY(!m_watcher->findChild<DpmsPower *>()->findChild<QTimer *>()->isActive());
}

QTEST_GUILESS_MAIN(DeviceDisplay)
#include "device_display.moc"
