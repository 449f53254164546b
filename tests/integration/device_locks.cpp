// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/desktoplockwatcher.h"
#include "support/heartbeat.h"
#include "support/loglines.h"
#include "support/mockedbus.h"

#include <QDBusObjectPath>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

enum Lock { DeviceLock = 0, KeyLock = 1 };
const QString Manager = u"org.freedesktop.login1.Manager"_s;
const QString Session = u"org.freedesktop.login1.Session"_s;
const QString ManagerPath = u"/org/freedesktop/login1"_s;
const QString SessionPath = u"/org/freedesktop/login1/session/c7"_s;
const QString ScreenSaver = u"org.freedesktop.ScreenSaver"_s;
const QString SignalOnly
    = u"org.freedesktop.ScreenSaver does not tell whether it is active: followed by its signal only"_s;

} // namespace

// The locks as logind and the screen savers tell of them.
class DeviceLocks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.isUp()); }
    void init();
    void cleanup();

    void withNobodyToTellItIsOpen();
    void withoutABusItIsOpen();
    void theSessionsHintIsTheDeviceLock();
    void theSessionIsFoundByWhateverTells_data();
    void theSessionIsFoundByWhateverTells();
    void aLoginServiceThatComesLaterCounts();
    void aLoginServiceThatIsStartedAgainIsReadAgain();
    void lockAndUnlockCountAtOnce();
    void aRequestThatNobodyFollowedIsForgotten();
    void anUnlockThatNobodyFollowedIsForgotten();
    void lockUnlockAndLateHints();
    void answersThatTakeSecondsHoldNobodyUp();
    void nonsenseIsNotTaken_data();
    void nonsenseIsNotTaken();
    void aSessionThatEndedIsSearchedAgain();
    void manySessionsAtOnceAreOneSearch();
    void aStormOfRequestsAndHints();

    void theScreenSaverIsTheKeyLock();
    void theGnomeScreenSaverIsTheKeyLock();
    void anActiveScreenSaverAtTheStart();
    void theKeysStayLockedUntilBothScreenSaversEnd();
    void aScreenSaverThatDiesUnlocksTheKeys();
    void aSignalIsNewerThanALateAnswer();
    void aScreenSaverAtItsOldPath();
    void nonsenseOfAScreenSaver();
    void aStormOfAScreenSaver();

private:
    [[nodiscard]] bool startLogind(bool locked = false);
    void make();
    void setHint(bool locked) { m_logind->setProperty(SessionPath, Session, u"LockedHint"_s, locked); }
    void request(const QString &member) { m_logind->emitSignal(SessionPath, Session, member, QString(), {}); }
    // The timer's time is up.
    void expireConfirmation();
    [[nodiscard]] QString told() const;

    MockedBus m_bus;
    std::unique_ptr<MockService> m_logind;
    std::unique_ptr<MockService> m_screenSaver;
    std::unique_ptr<MockService> m_gnome;
    std::unique_ptr<DesktopLockWatcher> m_watcher;
    std::unique_ptr<QSignalSpy> m_spy;
};

void DeviceLocks::init()
{
    qputenv("XDG_SESSION_ID", "c7");
    m_logind = m_bus.service(u"logind"_s, u"org.freedesktop.login1"_s, ManagerPath);
    m_screenSaver = m_bus.service(u"screensaver"_s, ScreenSaver, u"/org/freedesktop/ScreenSaver"_s);
    m_gnome = m_bus.service(u"gnome_screensaver"_s, u"org.gnome.ScreenSaver"_s, u"/org/gnome/ScreenSaver"_s);
}

void DeviceLocks::cleanup()
{
    m_watcher.reset();
    m_logind.reset();
    m_screenSaver.reset();
    m_gnome.reset();
}

bool DeviceLocks::startLogind(bool locked)
{
    if (!m_logind->start()
        || !m_logind->tell(u"AddSession"_s, {u"c7"_s, u"seat0"_s, uint(getuid()), u"somebody"_s, true}))
        return false;
    setHint(locked);
    // Who asked before there was the session is told of it, as by the real one.
    m_logind->emitSignal(ManagerPath, Manager, u"SessionNew"_s, u"so"_s,
                         {u"c7"_s, QVariant::fromValue(QDBusObjectPath(SessionPath))});
    return true;
}

void DeviceLocks::make()
{
    m_watcher = std::make_unique<DesktopLockWatcher>(m_bus.client, m_bus.client, nullptr);
    m_spy = std::make_unique<QSignalSpy>(m_watcher.get(), &LockWatcher::stateChanged);
    QCOMPARE(m_watcher->state(DeviceLock), 0);
    QCOMPARE(m_watcher->state(KeyLock), 0);
    QCOMPARE(m_watcher->state(7), 2);
}

void DeviceLocks::expireConfirmation()
{
    auto *timer = m_watcher->findChild<QTimer *>(u"lockConfirmation"_s);
    QVERIFY(timer && timer->isActive());
    timer->stop();
    QMetaObject::invokeMethod(timer, "timeout");
}

// "0:1 0:0": lock and state of every signal.
QString DeviceLocks::told() const
{
    QStringList all;
    for (const QVariantList &signal : std::as_const(*m_spy))
        all.append(u"%1:%2"_s.arg(signal.at(0).toInt()).arg(signal.at(1).toInt()));
    return all.join(u' ');
}

void DeviceLocks::withNobodyToTellItIsOpen()
{
    QTest::ignoreMessage(QtInfoMsg, "no login service: the device counts as unlocked");
    QTest::ignoreMessage(QtInfoMsg, "no screen saver service: the keys count as unlocked");
    QTest::failOnWarning(QRegularExpression(u".*"_s));
    make();
    BusPeer asked(m_bus.client, u"org.example.NotThere"_s); // its answer comes after those of the others
    QSignalSpy answered(&asked, &BusPeer::vanished);
    QVERIFY(answered.wait(TestPatience));
    QCOMPARE(told(), QString());
}

void DeviceLocks::withoutABusItIsOpen()
{
    const DesktopLockWatcher watcher(MockedBus::nowhere(), MockedBus::nowhere(), nullptr);
    QCOMPARE(watcher.state(DeviceLock), 0);
    QCOMPARE(watcher.state(KeyLock), 0);
}

void DeviceLocks::theSessionsHintIsTheDeviceLock()
{
    QVERIFY(startLogind(true));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    QCOMPARE(m_watcher->state(DeviceLock), 1);
    QCOMPARE(m_watcher->state(KeyLock), 0);
    setHint(false);
    QTRY_COMPARE(told(), u"0:1 0:0"_s);
    QCOMPARE(m_watcher->state(DeviceLock), 0);
}

void DeviceLocks::theSessionIsFoundByWhateverTells_data()
{
    QTest::addColumn<QString>("telling");
    QTest::newRow("the session of the caller") << u"auto"_s;
    QTest::newRow("the session of the process") << u"pid"_s;
    QTest::newRow("the environment") << u"environment"_s;
}

void DeviceLocks::theSessionIsFoundByWhateverTells()
{
    QFETCH(const QString, telling);
    qputenv("XDG_SESSION_ID", telling == u"environment"_s ? "c7" : "");
    QVERIFY(startLogind(true));
    const QString none = u"raise dbus.exceptions.DBusException('no', name='org.example.NoSession')"_s;
    const QString ours = u"ret = dbus.ObjectPath('%1')"_s.arg(SessionPath);
    const QString byId = u"if args[0] == 'auto':\n    %1\nret = '%2'"_s.arg(
        telling == u"auto"_s ? u"pass"_s : none, SessionPath);
    m_logind->answerWith(Manager, u"GetSession"_s, u"s"_s, u"o"_s, byId);
    m_logind->answerWith(Manager, u"GetSessionByPID"_s, u"u"_s, u"o"_s,
                         telling == u"pid"_s ? u"if args[0] == %1:\n    %2"_s.arg(getpid()).arg(ours) : none);
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
}

void DeviceLocks::aLoginServiceThatComesLaterCounts()
{
    make();
    QVERIFY(startLogind(true));
    QTRY_COMPARE(told(), u"0:1"_s);
}

// Nobody tells while it is away; then it is asked anew.
void DeviceLocks::aLoginServiceThatIsStartedAgainIsReadAgain()
{
    QVERIFY(startLogind(true));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    QTest::ignoreMessage(QtInfoMsg, "no login service: the device counts as unlocked");
    m_logind->stop();
    QTRY_COMPARE(told(), u"0:1 0:0"_s);
    QVERIFY(startLogind(true));
    QTRY_COMPARE(told(), u"0:1 0:0 0:1"_s);
    setHint(false);
    QTRY_COMPARE(told(), u"0:1 0:0 0:1 0:0"_s);
}

void DeviceLocks::lockAndUnlockCountAtOnce()
{
    QVERIFY(startLogind());
    make();
    setHint(true);
    QTRY_COMPARE(told(), u"0:1"_s);
    request(u"Unlock"_s);
    QTRY_COMPARE(told(), u"0:1 0:0"_s);
    setHint(false);
    request(u"Lock"_s);
    QTRY_COMPARE(told(), u"0:1 0:0 0:1"_s);
    setHint(true);
    setHint(false);
    QTRY_COMPARE(told(), u"0:1 0:0 0:1 0:0"_s);
}

// A session without a locker is asked to lock: its videos are not refused for ever.
void DeviceLocks::aRequestThatNobodyFollowedIsForgotten()
{
    QVERIFY(startLogind(true));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    setHint(false);
    request(u"Lock"_s);
    QTRY_COMPARE(told(), u"0:1 0:0 0:1"_s);
    expireConfirmation();
    QCOMPARE(told(), u"0:1 0:0 0:1 0:0"_s);
}

void DeviceLocks::anUnlockThatNobodyFollowedIsForgotten()
{
    QVERIFY(startLogind(true));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    request(u"Unlock"_s);
    QTRY_COMPARE(told(), u"0:1 0:0"_s);
    expireConfirmation();
    QCOMPARE(told(), u"0:1 0:0 0:1"_s);
}

// The locker is slower than the person: what was asked last holds, also while older hints come.
void DeviceLocks::lockUnlockAndLateHints()
{
    QVERIFY(startLogind(true));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    setHint(false);
    QTRY_COMPARE(m_watcher->state(DeviceLock), 0);
    m_spy->clear();
    request(u"Lock"_s);
    request(u"Unlock"_s);
    setHint(true);
    setHint(false);
    request(u"Lock"_s);
    setHint(true);
    QTRY_COMPARE(told(), u"0:1 0:0 0:1"_s);
    QVERIFY(!m_watcher->findChild<QTimer *>(u"lockConfirmation"_s)->isActive());
}

void DeviceLocks::answersThatTakeSecondsHoldNobodyUp()
{
    QVERIFY(startLogind(true));
    m_logind->answerWith(Manager, u"GetSession"_s, u"s"_s, u"o"_s,
                         u"import time\ntime.sleep(2)\nret = '%1'"_s.arg(SessionPath));
    const Heartbeat heartbeat;
    make();
    QVERIFY(m_spy->wait(15000));
    QCOMPARE(told(), u"0:1"_s);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceLocks::nonsenseIsNotTaken_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("value");
    QTest::newRow("a text for a path") << u"s"_s << u"'nowhere'"_s;
    QTest::newRow("a number for a path") << u"u"_s << u"7"_s;
    QTest::newRow("nothing") << QString() << u"None"_s;
    QTest::newRow("the path of nothing") << u"o"_s << u"'/nowhere'"_s;
}

void DeviceLocks::nonsenseIsNotTaken()
{
    QFETCH(const QString, type);
    QFETCH(const QString, value);
    QVERIFY(startLogind(true));
    for (const QString &question : {u"GetSession"_s, u"GetSessionByPID"_s}) {
        m_logind->answerWith(Manager, question, question == u"GetSession"_s ? u"s"_s : u"u"_s, type,
                             u"ret = "_s + value);
    }
    const LogLines log("kestrel.system");
    make();
    const QString nobody = u"no login session tells whether it is locked: the device counts as unlocked"_s;
    QTRY_COMPARE(log.count(nobody), 1);
    // Neither is a signal of other types; one that is right makes it look again.
    m_logind->emitSignal(ManagerPath, Manager, u"SessionNew"_s, u"ss"_s, {u"c8"_s, u"/nowhere"_s});
    m_logind->emitSignal(ManagerPath, Manager, u"SessionRemoved"_s, QString(), {});
    m_logind->emitSignal(ManagerPath, Manager, u"SessionNew"_s, u"so"_s,
                         {u"c8"_s, QVariant::fromValue(QDBusObjectPath(u"/c8"_s))});
    QTRY_COMPARE(log.count(nobody), 2);
    QCOMPARE(told(), QString());
}

void DeviceLocks::aSessionThatEndedIsSearchedAgain()
{
    QVERIFY(startLogind(true));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    qputenv("XDG_SESSION_ID", "c9");
    QVERIFY(m_logind->tell(u"AddSession"_s, {u"c9"_s, u"seat0"_s, uint(getuid()), u"somebody"_s, true}));
    m_logind->emitSignal(ManagerPath, Manager, u"SessionRemoved"_s, u"so"_s,
                         {u"c7"_s, QVariant::fromValue(QDBusObjectPath(SessionPath))});
    QTRY_COMPARE(told(), u"0:1 0:0"_s);
    setHint(false);
    setHint(true); // of the session that is no longer ours
    const QString next = u"/org/freedesktop/login1/session/c9"_s;
    m_logind->setProperty(next, Session, u"LockedHint"_s, true);
    QTRY_COMPARE(told(), u"0:1 0:0 0:1"_s);
}

// Each of them may be ours, and the answers to what was asked before come late.
void DeviceLocks::manySessionsAtOnceAreOneSearch()
{
    QVERIFY(m_logind->start());
    QVERIFY(m_logind->tell(u"AddSession"_s, {u"c7"_s, u"seat0"_s, uint(getuid()), u"somebody"_s, true}));
    setHint(true);
    // Nobody's at first.
    const QString ours = u"raise dbus.exceptions.DBusException('no', name='org.example.NoSession')"_s;
    m_logind->answerWith(Manager, u"GetSession"_s, u"s"_s, u"o"_s, ours);
    m_logind->answerWith(Manager, u"GetSessionByPID"_s, u"u"_s, u"o"_s, ours);
    const LogLines log("kestrel.system");
    make();
    QTRY_VERIFY(
        log.contains(u"no login session tells whether it is locked: the device counts as unlocked"_s));
    m_logind->answerWith(Manager, u"GetSession"_s, u"s"_s, u"o"_s,
                         u"ret = dbus.ObjectPath('%1')"_s.arg(SessionPath));
    m_logind->answerWith(Manager, u"NewSessions"_s, QString(), QString(), uR"(
for number in range(500):
    self.EmitSignal('%1', 'SessionNew', 'so', ['c7', dbus.ObjectPath('%2')])
)"_s.arg(Manager, SessionPath));
    QVERIFY(m_logind->callMethod(Manager, u"NewSessions"_s));
    const Heartbeat heartbeat;
    QTRY_COMPARE(told(), u"0:1"_s);
    setHint(false);
    QTRY_COMPARE(told(), u"0:1 0:0"_s);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceLocks::aStormOfRequestsAndHints()
{
    QVERIFY(startLogind(true));
    m_logind->answerWith(Manager, u"Storm"_s, QString(), QString(),
                         uR"(
from dbusmock import mockobject
session = mockobject.objects['%2']
for number in range(1000):
    session.EmitSignal('%1', 'Lock', '', [])
    session.UpdateProperties('%1', {'LockedHint': dbus.Boolean(number %% 3 == 0)})
    session.EmitSignal('%1', 'Unlock', '', [])
session.UpdateProperties('%1', {'LockedHint': dbus.Boolean(False)})
session.EmitSignal('%1', 'Lock', '', [])
session.UpdateProperties('%1', {'LockedHint': dbus.Boolean(True)})
)"_s.arg(Session, SessionPath)
                             .replace(u"%%"_s, u"%"_s));
    make();
    QTRY_COMPARE(told(), u"0:1"_s);
    QVERIFY(m_logind->callMethod(Manager, u"Storm"_s));
    const Heartbeat heartbeat;
    auto *confirmation = m_watcher->findChild<QTimer *>(u"lockConfirmation"_s);
    QTRY_VERIFY(m_spy->count() > 1000 && m_watcher->state(DeviceLock) == 1 && !confirmation->isActive());
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceLocks::theScreenSaverIsTheKeyLock()
{
    QVERIFY(m_screenSaver->start());
    make();
    m_screenSaver->tell(u"Activate"_s, {true});
    QTRY_COMPARE(told(), u"1:1"_s);
    QCOMPARE(m_watcher->state(KeyLock), 1);
    QCOMPARE(m_watcher->state(DeviceLock), 0);
    m_screenSaver->tell(u"Activate"_s, {false});
    QTRY_COMPARE(told(), u"1:1 1:0"_s);
}

void DeviceLocks::theGnomeScreenSaverIsTheKeyLock()
{
    make();
    QVERIFY(m_gnome->start());
    QVERIFY(m_gnome->callMethod(u"org.gnome.ScreenSaver"_s, u"SetActive"_s, {true}));
    QTRY_COMPARE(told(), u"1:1"_s);
    QVERIFY(m_gnome->callMethod(u"org.gnome.ScreenSaver"_s, u"SetActive"_s, {false}));
    QTRY_COMPARE(told(), u"1:1 1:0"_s);
}

void DeviceLocks::anActiveScreenSaverAtTheStart()
{
    QVERIFY(m_screenSaver->start({{u"active"_s, true}}));
    make();
    QTRY_COMPARE(told(), u"1:1"_s);
}

void DeviceLocks::theKeysStayLockedUntilBothScreenSaversEnd()
{
    QVERIFY(m_screenSaver->start({{u"active"_s, true}}));
    QVERIFY(m_gnome->start());
    make();
    QTRY_COMPARE(told(), u"1:1"_s);
    QTRY_COMPARE(m_gnome->calls(u"GetActive"_s), 1); // it is listened to
    const auto gnome = [this](bool active) {
        m_gnome->emitSignal(u"/org/gnome/ScreenSaver"_s, u"org.gnome.ScreenSaver"_s, u"ActiveChanged"_s,
                            u"b"_s, {active});
    };
    gnome(true);
    m_screenSaver->tell(u"Activate"_s, {false});
    gnome(false);
    QTRY_COMPARE(told(), u"1:1 1:0"_s);
}

void DeviceLocks::aScreenSaverThatDiesUnlocksTheKeys()
{
    QVERIFY(m_screenSaver->start({{u"active"_s, true}}));
    make();
    QTRY_COMPARE(told(), u"1:1"_s);
    m_screenSaver->stop();
    QTRY_COMPARE(told(), u"1:1 1:0"_s);
    QVERIFY(m_screenSaver->start({{u"active"_s, true}}));
    QTRY_COMPARE(told(), u"1:1 1:0 1:1"_s);
}

void DeviceLocks::aSignalIsNewerThanALateAnswer()
{
    QVERIFY(m_screenSaver->start({{u"active"_s, true}}));
    m_screenSaver->tell(u"SetDelay"_s, {2000U});
    make();
    QTRY_COMPARE(m_screenSaver->calls(u"GetActive"_s), 1);
    m_screenSaver->emitSignal(u"/org/freedesktop/ScreenSaver"_s, ScreenSaver, u"ActiveChanged"_s, u"b"_s,
                              {false});
    // A second watcher asks after the first one: when it has its answer the first has had its own.
    ScreenSaverWatcher second(m_bus.client, ScreenSaver, {u"/org/freedesktop/ScreenSaver"_s});
    QSignalSpy answered(&second, &ScreenSaverWatcher::activeChanged);
    QVERIFY(answered.wait(15000));
    QCOMPARE(told(), QString());
}

void DeviceLocks::aScreenSaverAtItsOldPath()
{
    QVERIFY(m_screenSaver->start());
    m_screenSaver->answerWith(ScreenSaver, u"GetActive"_s, QString(), u"b"_s,
                              u"raise dbus.exceptions.DBusException('not here', name='org.example.No')"_s);
    m_screenSaver->addObject(u"/ScreenSaver"_s, ScreenSaver);
    const LogLines log("kestrel.system");
    make();
    QTRY_VERIFY(log.contains(SignalOnly));
    m_screenSaver->emitSignal(u"/ScreenSaver"_s, ScreenSaver, u"ActiveChanged"_s, u"b"_s, {true});
    QTRY_COMPARE(told(), u"1:1"_s);
}

void DeviceLocks::nonsenseOfAScreenSaver()
{
    QVERIFY(m_screenSaver->start());
    m_screenSaver->answerWith(ScreenSaver, u"GetActive"_s, QString(), u"s"_s, u"ret = 'yes'"_s);
    const LogLines log("kestrel.system");
    make();
    QTRY_VERIFY(log.contains(SignalOnly));
    const QString path = u"/org/freedesktop/ScreenSaver"_s;
    m_screenSaver->emitSignal(path, ScreenSaver, u"ActiveChanged"_s, u"s"_s, {u"yes"_s});
    m_screenSaver->emitSignal(path, ScreenSaver, u"ActiveChanged"_s, QString(), {});
    m_screenSaver->emitSignal(path, ScreenSaver, u"ActiveChanged"_s, u"b"_s, {true});
    QTRY_COMPARE(told(), u"1:1"_s);
}

void DeviceLocks::aStormOfAScreenSaver()
{
    QVERIFY(m_screenSaver->start());
    m_screenSaver->answerWith(ScreenSaver, u"Storm"_s, QString(), QString(), uR"(
for number in range(3001):
    self.EmitSignal('%1', 'ActiveChanged', 'b', [number % 2 == 0])
)"_s.arg(ScreenSaver));
    make();
    QTRY_COMPARE(m_screenSaver->calls(u"GetActive"_s), 1);
    QVERIFY(m_screenSaver->callMethod(ScreenSaver, u"Storm"_s));
    const Heartbeat heartbeat;
    QTRY_COMPARE(m_spy->count(), 3001);
    QCOMPARE(m_watcher->state(KeyLock), 1);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

QTEST_GUILESS_MAIN(DeviceLocks)
#include "device_locks.moc"
