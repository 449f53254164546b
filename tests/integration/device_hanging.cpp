// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/videowidget.h"
#include "platform/system/desktopidleinhibitor.h"
#include "platform/system/logindsleepwatcher.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "support/heartbeat.h"
#include "support/mockservice.h"
#include "support/privatebus.h"
#include "unit/app/controllerfixture.h"

#include <QDBusObjectPath>
#include <QTest>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {
const QString Logind = u"org.freedesktop.login1"_s;
const QString LogindPath = u"/org/freedesktop/login1"_s;
const QString SessionPath = u"/org/freedesktop/login1/session/c7"_s;
constexpr int Patience = 15000; // ms
} // namespace

// The whole program in its window while every service of the device hangs, comes back, lies and dies.
class DeviceHanging : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aVideoPlaysWhileEverythingHangs();
    void servicesThatHangInTheMiddle();
    void servicesThatComeAndGo();

private:
    [[nodiscard]] QList<MockService *> services() const
    {
        return {m_logind.get(), m_portal.get(), m_saver.get(), m_compositor.get()};
    }
    [[nodiscard]] bool startAll();
    void setLocked(bool locked);
    void freezeAll();
    void thawAll();
    [[nodiscard]] AvloRenderer::State state() const { return m_controller->playerController()->state(); }
    [[nodiscard]] const DesktopIdleInhibitor *idle() const
    {
        return m_controller->findChild<DesktopIdleInhibitor *>();
    }
    [[nodiscard]] const LogindSleepWatcher *sleepLock() const
    {
        return m_controller->findChild<LogindSleepWatcher *>();
    }

    std::unique_ptr<MockService> m_logind;
    std::unique_ptr<MockService> m_portal;
    std::unique_ptr<MockService> m_saver;
    std::unique_ptr<MockService> m_compositor;
};

void DeviceHanging::initTestCase()
{
    prepare();
    qputenv("XDG_SESSION_ID", "c7");
    DeviceStateOverrides onlyCalls;
    onlyCalls.call = [](QObject *parent) -> CallMonitor * { return new FakeCalls(parent); };
    setDeviceStateOverrides(onlyCalls);
}

void DeviceHanging::init()
{
    const QString systemAddress = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    const QString sessionAddress = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    const auto onSession = [&sessionAddress](const QString &kind, const QString &name, const QString &path) {
        const auto bus = QDBusConnection::connectToBus(sessionAddress, u"session control"_s);
        return std::make_unique<MockService>(sessionAddress, bus, kind, name, path);
    };
    m_logind = std::make_unique<MockService>(
        systemAddress, QDBusConnection::connectToBus(systemAddress, u"system control"_s), u"logind"_s, Logind,
        LogindPath);
    m_portal
        = onSession(u"portal"_s, u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s);
    m_saver
        = onSession(u"screensaver"_s, u"org.freedesktop.ScreenSaver"_s, u"/org/freedesktop/ScreenSaver"_s);
    m_compositor
        = onSession(u"mutter"_s, u"org.gnome.Mutter.DisplayConfig"_s, u"/org/gnome/Mutter/DisplayConfig"_s);
}

void DeviceHanging::cleanup()
{
    clean();
    m_logind.reset();
    m_portal.reset();
    m_saver.reset();
    m_compositor.reset();
}

bool DeviceHanging::startAll()
{
    for (MockService *service : services()) {
        if (!service->start())
            return false;
    }
    if (!m_logind->tell(u"AddSession"_s, {u"c7"_s, u"seat0"_s, uint(getuid()), u"somebody"_s, true}))
        return false;
    setLocked(false);
    m_logind->emitSignal(LogindPath, u"org.freedesktop.login1.Manager"_s, u"SessionNew"_s, u"so"_s,
                         {u"c7"_s, QVariant::fromValue(QDBusObjectPath(SessionPath))});
    return true;
}

void DeviceHanging::setLocked(bool locked)
{
    m_logind->setProperty(SessionPath, u"org.freedesktop.login1.Session"_s, u"LockedHint"_s, locked);
}

void DeviceHanging::freezeAll()
{
    for (MockService *service : services())
        service->freeze();
}

void DeviceHanging::thawAll()
{
    for (MockService *service : services())
        service->thaw();
}

// Locks, display, sleep and idleness are asked for, and none of them answers for seconds.
void DeviceHanging::aVideoPlaysWhileEverythingHangs()
{
    QVERIFY(startAll());
    freezeAll();
    start();
    const Heartbeat heart;
    tap(video(1));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    QVERIFY(idle()->isInhibited());
    QVERIFY(!idle()->isEffective());
    QVERIFY(!sleepLock()->isHolding());
    // Until the wait for the portal is over and the screen saver was asked, too.
    QTRY_VERIFY_WITH_TIMEOUT(idle()->findChild<PortalIdleHold *>()->isOfNoHelp(), Patience);
    thawAll();
    QTRY_VERIFY_WITH_TIMEOUT(idle()->isEffective(), Patience);
    QTRY_VERIFY_WITH_TIMEOUT(sleepLock()->isHolding(), Patience);
    QCOMPARE(state(), AvloRenderer::Playing);
    QVERIFY2(heart.isSteady(), heart.report());
}

void DeviceHanging::servicesThatHangInTheMiddle()
{
    QVERIFY(startAll());
    start();
    tap(video(1));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    QTRY_VERIFY(idle()->isEffective() && sleepLock()->isHolding());
    freezeAll();
    const Heartbeat heart;
    PlayerController *playing = m_controller->playerController();
    for (int round = 0; round < 20; ++round) {
        playing->pause();
        QTRY_COMPARE(state(), AvloRenderer::Paused);
        playing->resume();
        QTRY_COMPARE(state(), AvloRenderer::Playing);
        backend()->advance(1s);
    }
    QVERIFY2(heart.isSteady(), heart.report());
    thawAll();
    QTRY_COMPARE(m_portal->texts(u"Holders"_s).size() + m_saver->texts(u"Holders"_s).size(), 1);
}

// Three times everything dies and comes again, locked: the video pauses each time, and never by a death.
void DeviceHanging::servicesThatComeAndGo()
{
    start();
    tap(video(1));
    QTRY_COMPARE(state(), AvloRenderer::Playing);
    PlayerController *playing = m_controller->playerController();
    const Heartbeat heart;
    for (int round = 0; round < 3; ++round) {
        QVERIFY(startAll());
        QTRY_VERIFY_WITH_TIMEOUT(idle()->isEffective() && sleepLock()->isHolding(), Patience);
        setLocked(true);
        QTRY_COMPARE_WITH_TIMEOUT(state(), AvloRenderer::Paused, Patience);
        for (MockService *service : services())
            service->stop();
        QTRY_VERIFY(!sleepLock()->isHolding());
        QCOMPARE(state(), AvloRenderer::Paused);
        playing->resume();
        QTRY_COMPARE(state(), AvloRenderer::Playing);
    }
    QVERIFY2(heart.isSteady(), heart.report());
}

int main(int argc, char **argv)
{
    // Before anybody asks for the system's bus.
    PrivateBus system;
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", system.start().toUtf8());
    return runControllerTest<DeviceHanging>(argc, argv);
}
#include "device_hanging.moc"
