// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/logindsleepwatcher.h"
#include "support/heartbeat.h"
#include "support/loglines.h"
#include "support/mockedbus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString Logind = u"org.freedesktop.login1"_s;
const QString Manager = u"org.freedesktop.login1.Manager"_s;
const QString ManagerPath = u"/org/freedesktop/login1"_s;

// Python of the mock: as its own, but the sleep is announced first.
const QString AnnounceThenLock = uR"(
import os
from dbusmock import mockobject
from gi.repository import GLib
self.EmitSignal('org.freedesktop.login1.Manager', 'PrepareForSleep', 'b', [True])
read, write = os.pipe()
lock = tuple(args) + (dbus.UInt32(0), dbus.UInt32(0))
mockobject.inhibitors = [lock]
GLib.unix_fd_add_full(GLib.PRIORITY_HIGH, read, GLib.IO_HUP,
                      lambda fd, condition, os=os, held=mockobject.inhibitors: os.close(fd) or held.clear())
ret = dbus.types.UnixFd(write)
os.close(write)
)"_s;

} // namespace

// The moment before the device sleeps, as logind gives it.
class DeviceSleep : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.isUp()); }
    void init() { m_logind = m_bus.service(u"logind"_s, Logind, ManagerPath); }
    void cleanup();

    void theLockIsHeldFromTheStart();
    void theLockIsGivenBackAndTakenAgain();
    void withNobodyListeningNothingWaits();
    void aReleaseOutsideOfASleepIsNone();
    void twoAnnouncementsAreTwo();
    void aSleepThatIsCalledOff();
    void aLoginServiceThatIsMissingComesLater();
    void aLoginServiceThatIsStartedAgainIsAskedAgain();
    void aLoginServiceThatDiesWhileTheDeviceWaits();
    void aLockThatComesWhenTheWorkIsDoneIsGivenBack();
    void aLockThatComesWhileTheWorkIsDoneIsHeld();
    void aLateLoginServiceHoldsNobodyUp();
    void refusalIsOneLineAndTheSleepIsToldAllTheSame();
    void nonsenseIsNoLock_data();
    void nonsenseIsNoLock();
    void nonsenseIsNoAnnouncement();
    void theProgramsEndGivesTheLockBack();

private:
    void make(bool listen = true);
    void announce(bool sleep)
    {
        m_logind->emitSignal(ManagerPath, Manager, u"PrepareForSleep"_s, u"b"_s, {sleep});
    }
    // "what/who/why/mode" of every lock that logind knows.
    [[nodiscard]] QStringList locks();

    MockedBus m_bus;
    std::unique_ptr<MockService> m_logind;
    std::unique_ptr<LogindSleepWatcher> m_watcher;
    std::unique_ptr<QSignalSpy> m_sleeps;
    std::unique_ptr<QSignalSpy> m_wakes;
};

void DeviceSleep::cleanup()
{
    m_sleeps.reset();
    m_wakes.reset();
    m_watcher.reset();
    m_logind.reset();
}

void DeviceSleep::make(bool listen)
{
    m_watcher = std::make_unique<LogindSleepWatcher>(m_bus.client, u"a place is saved"_s, nullptr);
    QVERIFY(!m_watcher->isHolding());
    if (listen)
        m_sleeps = std::make_unique<QSignalSpy>(m_watcher.get(), &SleepWatcher::aboutToSleep);
    m_wakes = std::make_unique<QSignalSpy>(m_watcher.get(), &SleepWatcher::wokeUp);
}

QStringList DeviceSleep::locks()
{
    QStringList found;
    const auto reply = m_logind->callMethod(Manager, u"ListInhibitors"_s);
    if (!reply || reply->isEmpty())
        return {u"no answer"_s};
    const auto list = reply->constFirst().value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd()) {
        QString texts[4];
        uint user = 0;
        uint process = 0;
        list.beginStructure();
        list >> texts[0] >> texts[1] >> texts[2] >> texts[3] >> user >> process;
        list.endStructure();
        found.append(QStringList(std::begin(texts), std::end(texts)).join(u'/'));
    }
    list.endArray();
    return found;
}

void DeviceSleep::theLockIsHeldFromTheStart()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    QCOMPARE(locks(),
             QStringList{u"sleep/%1/a place is saved/delay"_s.arg(QCoreApplication::applicationName())});
}

void DeviceSleep::theLockIsGivenBackAndTakenAgain()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 1);
    QVERIFY(m_watcher->isHolding());
    QCOMPARE(locks().size(), 1);
    m_watcher->release();
    QVERIFY(!m_watcher->isHolding());
    QTRY_COMPARE(locks().size(), 0);
    announce(false);
    QTRY_COMPARE(m_wakes->count(), 1);
    QTRY_VERIFY(m_watcher->isHolding());
    QCOMPARE(locks().size(), 1);
}

void DeviceSleep::withNobodyListeningNothingWaits()
{
    QVERIFY(m_logind->start());
    make(false);
    QTRY_VERIFY(m_watcher->isHolding());
    announce(true);
    QTRY_COMPARE(locks().size(), 0);
    announce(false);
    QTRY_COMPARE(locks().size(), 1);
}

void DeviceSleep::aReleaseOutsideOfASleepIsNone()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    m_watcher->release();
    QVERIFY(m_watcher->isHolding());
    QCOMPARE(locks().size(), 1);
}

// The second announcement finds nothing held, and is told.
void DeviceSleep::twoAnnouncementsAreTwo()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 1);
    m_watcher->release();
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 2);
    announce(false);
    QTRY_VERIFY(m_watcher->isHolding());
    QCOMPARE(m_wakes->count(), 1);
}

// A late release belongs to no sleep any more.
void DeviceSleep::aSleepThatIsCalledOff()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    announce(true);
    announce(false);
    QTRY_COMPARE(m_wakes->count(), 1);
    m_watcher->release();
    QVERIFY(m_watcher->isHolding());
    QCOMPARE(locks().size(), 1);
}

void DeviceSleep::aLoginServiceThatIsMissingComesLater()
{
    const LogLines log("kestrel.system");
    make();
    QTRY_COMPARE(log.all(), QStringList{u"no login service: nobody tells before the device sleeps"_s});
    QVERIFY(m_logind->start());
    QTRY_VERIFY(m_watcher->isHolding());
}

void DeviceSleep::aLoginServiceThatIsStartedAgainIsAskedAgain()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    m_logind->stop();
    QTRY_VERIFY(!m_watcher->isHolding());
    QVERIFY(m_logind->start());
    QTRY_VERIFY(m_watcher->isHolding());
    QCOMPARE(locks().size(), 1);
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 1);
}

void DeviceSleep::aLoginServiceThatDiesWhileTheDeviceWaits()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 1);
    m_logind->stop();
    QTRY_VERIFY(!m_watcher->isHolding());
    m_watcher->release();
    QVERIFY(m_logind->start());
    QTRY_VERIFY(m_watcher->isHolding());
}

// The sleep is announced after the lock was asked for and before it is given.
void DeviceSleep::aLockThatComesWhenTheWorkIsDoneIsGivenBack()
{
    QVERIFY(m_logind->start());
    m_logind->answerWith(Manager, u"Inhibit"_s, u"ssss"_s, u"h"_s, AnnounceThenLock);
    make();
    connect(m_watcher.get(), &SleepWatcher::aboutToSleep, m_watcher.get(), &SleepWatcher::release);
    QTRY_COMPARE(m_sleeps->count(), 1);
    QTRY_COMPARE(locks().size(), 0);
    QVERIFY(!m_watcher->isHolding());
}

void DeviceSleep::aLockThatComesWhileTheWorkIsDoneIsHeld()
{
    QVERIFY(m_logind->start());
    m_logind->answerWith(Manager, u"Inhibit"_s, u"ssss"_s, u"h"_s, AnnounceThenLock);
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    QCOMPARE(m_sleeps->count(), 1);
    QCOMPARE(locks().size(), 1);
    m_watcher->release();
    QTRY_COMPARE(locks().size(), 0);
}

void DeviceSleep::aLateLoginServiceHoldsNobodyUp()
{
    QVERIFY(m_logind->start());
    m_logind->freeze();
    const Heartbeat heartbeat;
    make();
    QTimer::singleShot(2000, m_watcher.get(), [this] { m_logind->thaw(); });
    QTRY_VERIFY_WITH_TIMEOUT(m_watcher->isHolding(), 15000);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceSleep::refusalIsOneLineAndTheSleepIsToldAllTheSame()
{
    QVERIFY(m_logind->start());
    m_logind->answerWith(Manager, u"Inhibit"_s, u"ssss"_s, u"h"_s,
                         u"raise dbus.exceptions.DBusException('not you', name='org.example.No')"_s);
    const LogLines log("kestrel.system");
    make();
    QTRY_COMPARE(log.all(), QStringList{u"sleep cannot be delayed: not you"_s});
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 1);
    QVERIFY(!m_watcher->isHolding());
    m_watcher->release();
}

void DeviceSleep::nonsenseIsNoLock_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("value");
    QTest::newRow("a text") << u"s"_s << u"'lock'"_s;
    QTest::newRow("a number") << u"u"_s << u"7"_s;
    QTest::newRow("nothing") << QString() << u"None"_s;
}

void DeviceSleep::nonsenseIsNoLock()
{
    QFETCH(const QString, type);
    QFETCH(const QString, value);
    QVERIFY(m_logind->start());
    m_logind->answerWith(Manager, u"Inhibit"_s, u"ssss"_s, type, u"ret = "_s + value);
    const LogLines log("kestrel.system");
    make();
    QTRY_COMPARE(log.all(), QStringList{u"sleep cannot be delayed: an answer of type \"%1\""_s.arg(type)});
    QVERIFY(!m_watcher->isHolding());
}

void DeviceSleep::nonsenseIsNoAnnouncement()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    m_logind->emitSignal(ManagerPath, Manager, u"PrepareForSleep"_s, u"s"_s, {u"true"_s});
    m_logind->emitSignal(ManagerPath, Manager, u"PrepareForSleep"_s, QString(), {});
    m_logind->addObject(u"/elsewhere"_s, Manager);
    m_logind->emitSignal(u"/elsewhere"_s, Manager, u"PrepareForSleep"_s, u"b"_s, {true});
    announce(false);
    announce(true);
    QTRY_COMPARE(m_sleeps->count(), 1);
    QCOMPARE(m_wakes->count(), 0);
}

void DeviceSleep::theProgramsEndGivesTheLockBack()
{
    QVERIFY(m_logind->start());
    make();
    QTRY_VERIFY(m_watcher->isHolding());
    QCOMPARE(locks().size(), 1);
    m_sleeps.reset();
    m_watcher.reset();
    QTRY_COMPARE(locks().size(), 0);
}

QTEST_GUILESS_MAIN(DeviceSleep)
#include "device_sleep.moc"
