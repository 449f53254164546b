// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/heartbeat.h"
#include "support/loglines.h"
#include "support/modemmanagerpeer.h"
#include "support/privatebus.h"
#include "support/pythonpeer.h"

#include <data/mmcmonitor.h>
#include <platform/system/desktopnotifications.h>
#include <platform/system/devicestate.h>

#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString routeKey = u"/com/harrow/policy/video_route"_s;
const QStringList systemNames{u"org.freedesktop.ModemManager1"_s, u"com.sorel.usb_moded"_s};
const QStringList sessionNames{u"com.harrow.Policy"_s, u"org.freedesktop.Notifications"_s,
                               u"org.gtk.vfs.UDisks2VolumeMonitor"_s};

class Monitor : public MmcMonitor
{
};

} // namespace

// Services that hang, restart or talk without end: the window's thread never waits for one of them.
class BadPeersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString address = m_bus.start();
        QVERIFY(!address.isEmpty());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        QVERIFY(QDBusConnection::systemBus().isConnected());
    }

    // Everything that follows a service is made, used and taken down while none of them answers.
    void theyHang()
    {
        PythonPeer system;
        PythonPeer session;
        QVERIFY(system.start(u"mute.py"_s, QStringList{u"system"_s} + systemNames));
        QVERIFY(session.start(u"mute.py"_s, QStringList{u"session"_s} + sessionNames));
        Heartbeat heart;
        QTRY_VERIFY(heart.beats() > 0);
        {
            const LogLines log("kestrel.system");
            Sources sources;
            sources.notifications.publishDeviceError(u"Hello"_s);
            const auto told = [&log](const QString &words) { return log.all().filter(words).size() == 1; };
            QTRY_VERIFY_WITH_TIMEOUT(told(u"unseen message: Hello"_s), 30000);
            QTRY_VERIFY_WITH_TIMEOUT(told(u"USB mode daemon does not tell its mode"_s), 30000);
            QTRY_VERIFY_WITH_TIMEOUT(told(u"ModemManager does not tell its modems"_s), 30000);
            QTRY_VERIFY_WITH_TIMEOUT(told(u"policy service has no value"_s), 30000);
            QCOMPARE(sources.calls->getState(), 0);
            QVERIFY(MmcMonitor::isAvailable());
        }
        QVERIFY2(heart.isSteady(), heart.report());
    }

    void theyRestartAgainAndAgain()
    {
        Sources sources;
        QSignalSpy calls(sources.calls.get(), &CallMonitor::stateChanged);
        QSignalSpy card(&sources.card, &MmcMonitor::mmcStateChanged);
        QSignalSpy route(sources.route.get(), &ContextProperty::valueChanged);
        Heartbeat heart;
        for (int round = 0; round < 5; ++round) {
            ModemManagerPeer modemManager;
            PythonPeer daemon;
            PythonPeer policy;
            QVERIFY(modemManager.start(u"{\"call-state\": \"4\"}"_s));
            QVERIFY(daemon.start(u"usb_mode_daemon.py"_s, {u"mass_storage"_s}));
            QVERIFY(policy.start(u"policy_service.py"_s, {routeKey + u"=builtin"_s}));
            heart.restart(); // the starts above wait for their processes
            QTRY_COMPARE(sources.calls->getState(), 1);
            QTRY_VERIFY(!MmcMonitor::isAvailable());
            QTRY_COMPARE(sources.route->value().toString(), u"builtin"_s);
            QCOMPARE(card.size(), round + 1);
            QVERIFY2(heart.isSteady(), heart.report());
            modemManager.stop();
            daemon.stop();
            policy.stop();
            heart.restart();
            QTRY_COMPARE(sources.calls->getState(), 0);
            QTRY_VERIFY(MmcMonitor::isAvailable());
            QTRY_VERIFY(sources.route->value().toString() != u"builtin"_s);
            QVERIFY2(heart.isSteady(), heart.report());
        }
        QCOMPARE(calls.size(), 10);
        QCOMPARE(route.size(), 10);
    }

    void theyTalkWithoutEnd()
    {
        ModemManagerPeer modemManager;
        PythonPeer daemon;
        PythonPeer policy;
        QVERIFY(modemManager.start());
        QVERIFY(modemManager.tell(u"AddModem"_s, {u"0"_s}));
        QVERIFY(daemon.start(u"usb_mode_daemon.py"_s, {u"charging_only"_s}));
        QVERIFY(policy.start(u"policy_service.py"_s, {routeKey + u"=builtin"_s}));
        Sources sources;
        QTRY_COMPARE(sources.route->value().toString(), u"builtin"_s);
        QVERIFY(daemon.command(u"flood 5000"_s));
        QVERIFY(policy.command(u"flood %1 5000"_s.arg(routeKey)));
        QVERIFY(modemManager.tell(u"Flood"_s, {u"0"_s, u"5000"_s}));
        // What is true comes last, and is known at last.
        QVERIFY(daemon.command(u"mode mass_storage"_s));
        QVERIFY(daemon.command(u"state at last"_s));
        QVERIFY(policy.command(u"set %1 tvout"_s.arg(routeKey)));
        Heartbeat heart;
        QTRY_VERIFY(!MmcMonitor::isAvailable());
        QTRY_COMPARE(sources.route->value().toString(), u"tvout"_s);
        QCOMPARE(sources.calls->getState(), 0);
        QVERIFY(modemManager.tell(u"AddCall"_s, {u"0"_s, u"real"_s, u"4"_s}));
        QTRY_COMPARE(sources.calls->getState(), 1);
        QVERIFY2(heart.isSteady(), heart.report());
    }

    void cleanup()
    {
        for (const QString &name : systemNames)
            QTRY_VERIFY(!QDBusConnection::systemBus().interface()->isServiceRegistered(name));
        for (const QString &name : sessionNames)
            QTRY_VERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(name));
    }

private:
    struct Sources
    {
        Sources()
            : calls(CallMonitor::create(nullptr)),
              route(ContextProperty::create(routeKey, nullptr)),
              notifications(QDBusConnection::sessionBus())
        {
            route->subscribe();
        }
        std::unique_ptr<CallMonitor> calls;
        std::unique_ptr<ContextProperty> route;
        DesktopNotifications notifications;
        Monitor card; // with the USB mode
    };

    PrivateBus m_bus;
};

QTEST_MAIN(BadPeersTest)
#include "badpeers_test.moc"
