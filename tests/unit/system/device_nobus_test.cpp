// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/devicestate.h"
#include "platform/system/idleinhibitor.h"
#include "platform/system/nulldevicestate.h"
#include "platform/system/nullpower.h"
#include "platform/system/sleepwatcher.h"
#include "support/loglines.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// A machine without any bus and without an X server: every source of device state is there, says once what is
// missing, and goes on answering.
class DeviceNoBusTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySourceIsTheNullOne();
    void noSleepIsHeldUp();
    void idlenessIsAskedForInVain();
};

void DeviceNoBusTest::everySourceIsTheNullOne()
{
    const LogLines log("kestrel.system");
    QObject parent;
    const LockWatcher *lock = LockWatcher::create(&parent);
    QVERIFY(qobject_cast<const NullLockWatcher *>(lock));
    QCOMPARE(lock->state(0), 0);
    QCOMPARE(lock->state(1), 0);
    QCOMPARE(lock->state(2), 2);
    const DisplayWatcher *display = DisplayWatcher::create(&parent);
    QVERIFY(qobject_cast<const NullDisplayWatcher *>(display));
    QCOMPARE(display->state(), 1);
    QVERIFY(qobject_cast<NullSleepWatcher *>(SleepWatcher::create(u"why"_s, &parent)));
    QVERIFY(qobject_cast<NullIdleInhibitor *>(IdleInhibitor::create(&parent)));
    QCOMPARE(log.all().size(), 4);
    QCOMPARE(log.count(u"no system bus: nobody tells before the device sleeps"_s), 1);
    QCOMPARE(log.count(u"no session bus: the display cannot be kept on"_s), 1);
}

void DeviceNoBusTest::noSleepIsHeldUp()
{
    const std::unique_ptr<SleepWatcher> sleeping(SleepWatcher::create(u"why"_s, nullptr));
    QSignalSpy announced(sleeping.get(), &SleepWatcher::aboutToSleep);
    QVERIFY(!sleeping->isHolding());
    sleeping->release();
    QVERIFY(!sleeping->isHolding());
    QCOMPARE(announced.count(), 0);
}

void DeviceNoBusTest::idlenessIsAskedForInVain()
{
    const std::unique_ptr<IdleInhibitor> idle(IdleInhibitor::create(nullptr));
    QVERIFY(!idle->isInhibited());
    idle->setInhibited(true, u"a film"_s);
    QVERIFY(idle->isInhibited());
    idle->setInhibited(false, u"a film"_s);
    QVERIFY(!idle->isInhibited());
}

int main(int argc, char **argv)
{
    // Before anybody asks for a bus.
    for (const char *bus : {"DBUS_SYSTEM_BUS_ADDRESS", "DBUS_SESSION_BUS_ADDRESS"})
        qputenv(bus, "unix:path=/nowhere");
    QCoreApplication application(argc, argv);
    DeviceNoBusTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "device_nobus_test.moc"
