// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/hangms.h"
#include "support/modemmanagerpeer.h"
#include "support/privatebus.h"

#include <platform/system/modemcalls.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

enum State { Unknown, Dialing, RingingOut, RingingIn, Active, Held, Waiting, Terminated };

} // namespace

// Calls as ModemManager tells them.
class CallsTest : public QObject
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

    void init()
    {
        m_messages.clear();
        s_messages = &m_messages;
        m_previous = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &text) { s_messages->append(text); });
    }

    void cleanup()
    {
        m_monitor.reset();
        m_modemManager.stop();
        qInstallMessageHandler(m_previous);
        QTRY_VERIFY(!QDBusConnection::systemBus().interface()->isServiceRegistered(
            u"org.freedesktop.ModemManager1"_s));
    }

    // A phone rings, the person answers, talks, hangs up.
    void anIncomingCall()
    {
        QVERIFY(m_modemManager.start());
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"0"_s}));
        follow();
        QCOMPARE(m_monitor->getState(), 0);
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"a"_s, u"3"_s}));
        QTRY_COMPARE(m_states, QList<int>{1});
        QCOMPARE(m_monitor->getState(), 1);
        QVERIFY(m_modemManager.tell(u"SetCallState"_s, {u"a"_s, int(Active)}));
        QVERIFY(m_modemManager.tell(u"SetCallState"_s, {u"a"_s, int(Terminated)}));
        QTRY_COMPARE(m_states, (QList<int>{1, 0}));
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"a"_s}));
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"b"_s, u"3"_s}));
        QTRY_COMPARE(m_states, (QList<int>{1, 0, 1}));
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"b"_s}));
        QTRY_COMPARE(m_states, (QList<int>{1, 0, 1, 0}));
    }

    void whichStatesAreCalls_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<int>("expected");
        QTest::newRow("unknown") << int(Unknown) << 0;
        QTest::newRow("dialing") << int(Dialing) << 1;
        QTest::newRow("ringing out") << int(RingingOut) << 1;
        QTest::newRow("ringing in") << int(RingingIn) << 1;
        QTest::newRow("active") << int(Active) << 1;
        QTest::newRow("held") << int(Held) << 1;
        QTest::newRow("waiting") << int(Waiting) << 1;
        QTest::newRow("terminated") << int(Terminated) << 0;
        QTest::newRow("a number beyond the states") << 42 << 0;
        QTest::newRow("a negative number") << -1 << 0;
    }

    void whichStatesAreCalls()
    {
        QFETCH(int, state);
        QFETCH(int, expected);
        QVERIFY(m_modemManager.start());
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"0"_s}));
        // From one of the other kind, so that there is a change to wait for.
        QVERIFY(m_modemManager.tell(u"AddCall"_s,
                                    {u"0"_s, u"a"_s, QString::number(expected != 0 ? Unknown : Active)}));
        follow();
        if (expected == 0)
            QTRY_COMPARE(m_monitor->getState(), 1);
        QVERIFY(m_modemManager.tell(u"SetCallState"_s, {u"a"_s, state}));
        QTRY_COMPARE(m_monitor->getState(), expected);
    }

    // One of two calls ends: there is still one.
    void aSecondCall()
    {
        QVERIFY(m_modemManager.start());
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"0"_s}));
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"1"_s}));
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"a"_s, u"4"_s}));
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"1"_s, u"b"_s, u"6"_s}));
        follow();
        QTRY_COMPARE(m_monitor->getState(), 1);
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"a"_s}));
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"1"_s, u"b"_s}));
        QTRY_COMPARE(m_monitor->getState(), 0);
        QCOMPARE(m_states, (QList<int>{1, 0}));
    }

    // The program starts in mid-call; a second monitor knows at once what the first knows.
    void aCallFromBefore()
    {
        QVERIFY(m_modemManager.start(u"{\"call-state\": \"4\"}"_s));
        follow();
        QCOMPARE(m_monitor->getState(), 0); // the cache, before anybody has answered
        QTRY_COMPARE(m_monitor->getState(), 1);
        const std::unique_ptr<CallMonitor> second(ModemCallMonitor::createShared(nullptr));
        const std::unique_ptr<CallMonitor> third(ModemCallMonitor::createShared(nullptr));
        QCOMPARE(second->getState(), third->getState());
        QTRY_COMPARE(second->getState(), 1);
        const std::unique_ptr<CallMonitor> fourth(ModemCallMonitor::createShared(nullptr));
        QCOMPARE(fourth->getState(), 1);
    }

    void aModemThatIsPulledOutInACall()
    {
        QVERIFY(m_modemManager.start(u"{\"call-state\": \"4\"}"_s));
        follow();
        QTRY_COMPARE(m_monitor->getState(), 1);
        QVERIFY(m_modemManager.tell(u"RemoveModem"_s, {u"0"_s}));
        QTRY_COMPARE(m_monitor->getState(), 0);
    }

    void aModemThatComesLater()
    {
        QVERIFY(m_modemManager.start());
        follow();
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"0"_s}));
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"a"_s, u"1"_s}));
        QTRY_COMPARE(m_monitor->getState(), 1);
    }

    void withoutModemManagerThereIsNoCall()
    {
        follow();
        QTRY_COMPARE(m_messages.filter(u"no ModemManager"_s).size(), 1);
        QCOMPARE(m_monitor->getState(), 0);
        // Looking for it has not started it.
        QVERIFY(!QDBusConnection::systemBus().interface()->isServiceRegistered(
            u"org.freedesktop.ModemManager1"_s));
        QVERIFY(m_modemManager.start(u"{\"call-state\": \"3\"}"_s));
        QTRY_COMPARE(m_states, QList<int>{1});
    }

    void modemManagerDiesInACallAndComesBack()
    {
        QVERIFY(m_modemManager.start(u"{\"call-state\": \"4\"}"_s));
        follow();
        QTRY_COMPARE(m_states, QList<int>{1});
        m_modemManager.stop();
        QTRY_COMPARE(m_states, (QList<int>{1, 0}));
        QCOMPARE(m_messages.filter(u"no ModemManager"_s).size(), 1);
        QVERIFY(m_modemManager.start(u"{\"call-state\": \"4\"}"_s));
        QTRY_COMPARE(m_states, (QList<int>{1, 0, 1}));
        // Nothing of the first one is left: its calls had the same names.
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"c1"_s}));
        QTRY_COMPARE(m_states, (QList<int>{1, 0, 1, 0}));
    }

    void modemManagerAnswersLate()
    {
        QVERIFY(m_modemManager.start(u"{\"call-state\": \"4\"}"_s));
        m_modemManager.freeze();
        QElapsedTimer timer;
        timer.start();
        follow();
        QCOMPARE(m_monitor->getState(), 0);
        QVERIFY(timer.elapsed() < HangMs);
        m_modemManager.thaw();
        QTRY_COMPARE(m_monitor->getState(), 1);
    }

    // It does not say which modems there are, but a call makes itself known.
    void modemManagerTellsNoModems_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("type");
        QTest::newRow("an error") << u"raise dbus.exceptions.DBusException('busy', name='a.b')"_s << u"as"_s;
        QTest::newRow("another type") << u"ret = ['modem']"_s << u"as"_s;
        QTest::newRow("modems without properties") << u"ret = {'/a': ['Voice']}"_s << u"a{oas}"_s;
    }

    void modemManagerTellsNoModems()
    {
        QFETCH(QString, answer);
        QFETCH(QString, type);
        QVERIFY(m_modemManager.start(
            u"{\"call-state\": \"0\", \"managed\": \"%1\", \"managed-type\": \"%2\"}"_s.arg(answer, type)));
        follow();
        QTRY_COMPARE(m_messages.filter(u"does not tell its modems"_s).size(), 1);
        QCOMPARE(m_monitor->getState(), 0);
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"b"_s, u"4"_s}));
        QTRY_COMPARE(m_monitor->getState(), 1);
    }

    void nonsenseIsNoCallAndEndsNone()
    {
        QVERIFY(m_modemManager.start());
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"0"_s}));
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"text"_s, u"active"_s}));
        follow();
        QVERIFY(m_modemManager.tell(u"TalkNonsense"_s));
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"real"_s, u"4"_s}));
        QTRY_COMPARE(m_states, QList<int>{1});
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"real"_s}));
        QTRY_COMPARE(m_states, (QList<int>{1, 0}));
    }

private:
    void follow()
    {
        m_states.clear();
        m_monitor.reset(CallMonitor::create(nullptr));
        QVERIFY(qobject_cast<ModemCallMonitor *>(m_monitor.get()));
        connect(m_monitor.get(), &CallMonitor::stateChanged, this,
                [this](int state) { m_states.append(state); });
    }

    static inline QStringList *s_messages = nullptr;
    PrivateBus m_bus;
    ModemManagerPeer m_modemManager;
    std::unique_ptr<CallMonitor> m_monitor;
    QList<int> m_states;
    QStringList m_messages;
    QtMessageHandler m_previous = nullptr;
};

QTEST_GUILESS_MAIN(CallsTest)
#include "calls_test.moc"
