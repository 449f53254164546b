// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/desktopidleinhibitor.h"
#include "support/heartbeat.h"
#include "support/loglines.h"
#include "support/mockedbus.h"

#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString PortalName = u"org.freedesktop.portal.Desktop"_s;
const QString PortalPath = u"/org/freedesktop/portal/desktop"_s;
const QString Inhibit = u"org.freedesktop.portal.Inhibit"_s;
const QString SaverName = u"org.freedesktop.ScreenSaver"_s;
const QString SaverPath = u"/org/freedesktop/ScreenSaver"_s;
const QString Refuse = u"raise dbus.exceptions.DBusException('not today', name='org.example.No')"_s;
const QString NotHere
    = u"raise dbus.exceptions.DBusException('no', name='org.freedesktop.DBus.Error.UnknownMethod')"_s;

} // namespace

// The display is kept on through the portal or the screen saver, whoever does it.
class DeviceIdle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_bus.isUp()); }
    void init();
    void cleanup();

    void thePortalHoldsAndLetsGo();
    void theScreenSaverDoesWithoutAPortal();
    void withNeitherThereIsOneLine();
    void withoutABusNothingHappens();
    void servicesThatComeLaterAreAsked();
    void thePortalRelievesTheScreenSaver();
    void aServiceThatIsStartedAgainIsAskedAgain_data();
    void aServiceThatIsStartedAgainIsAskedAgain();
    void aServiceThatDiesAfterTheEndIsNotAskedAgain();
    void theScreenSaverTakesOverFromADyingPortal();
    void rapidTogglingEndsAsItShould_data();
    void rapidTogglingEndsAsItShould();
    void anAnswerAfterTheEndIsGivenBack_data();
    void anAnswerAfterTheEndIsGivenBack();
    void offAndOnWhileTheAnswerIsAwaitedAsksOnce();
    void aPortalThatLetsWaitIsHelpedOut();
    void aPortalThatRefuses();
    void aPortalThatRespondsWithARefusal();
    void aRefusalIsTriedAgainTheNextTime();
    void anOldPortalThatChoosesItsPaths();
    void aScreenSaverAtItsOldPath();
    void nonsenseOfThePortal();
    void nonsenseOfTheScreenSaver();
    void theEndOfTheInhibitorLetsGo();

private:
    void make() { m_inhibitor = std::make_unique<DesktopIdleInhibitor>(m_bus.client, nullptr); }
    void set(bool inhibited) { m_inhibitor->setInhibited(inhibited, u"a film"_s); }
    [[nodiscard]] QStringList portal() { return m_portal->texts(u"Holders"_s); }
    [[nodiscard]] QStringList saver() { return m_saver->texts(u"Holders"_s); }
    [[nodiscard]] MockService &service(const QString &name)
    {
        return name == u"portal"_s ? *m_portal : *m_saver;
    }

    const QStringList m_portalHolder{u"8: a film"_s};
    QStringList m_saverHolder;
    MockedBus m_bus;
    std::unique_ptr<MockService> m_portal;
    std::unique_ptr<MockService> m_saver;
    std::unique_ptr<DesktopIdleInhibitor> m_inhibitor;
};

void DeviceIdle::init()
{
    m_saverHolder = QStringList{QCoreApplication::applicationName() + u": a film"_s};
    m_portal = m_bus.service(u"portal"_s, PortalName, PortalPath);
    m_saver = m_bus.service(u"screensaver"_s, SaverName, SaverPath);
}

void DeviceIdle::cleanup()
{
    m_inhibitor.reset();
    m_portal.reset();
    m_saver.reset();
}

void DeviceIdle::thePortalHoldsAndLetsGo()
{
    QVERIFY(m_portal->start());
    QVERIFY(m_saver->start());
    make();
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
    QTRY_VERIFY(m_inhibitor->isEffective());
    QCOMPARE(saver(), QStringList());
    set(false);
    QTRY_COMPARE(portal(), QStringList());
    QVERIFY(!m_inhibitor->isEffective());
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
}

void DeviceIdle::theScreenSaverDoesWithoutAPortal()
{
    QVERIFY(m_saver->start());
    make();
    set(true);
    QTRY_COMPARE(saver(), m_saverHolder);
    set(false);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::withNeitherThereIsOneLine()
{
    const LogLines log("kestrel.system");
    make();
    set(true);
    const QString line = u"neither a portal nor a screen saver service keeps the display on"_s;
    QTRY_COMPARE(log.all(), QStringList{line});
    QVERIFY(m_inhibitor->isInhibited());
    QVERIFY(!m_inhibitor->isEffective());
}

void DeviceIdle::withoutABusNothingHappens()
{
    DesktopIdleInhibitor inhibitor(MockedBus::nowhere(), nullptr);
    inhibitor.setInhibited(true, u"a film"_s);
    inhibitor.setInhibited(false, u"a film"_s);
    QVERIFY(!inhibitor.isInhibited());
}

void DeviceIdle::servicesThatComeLaterAreAsked()
{
    make();
    set(true);
    QVERIFY(m_saver->start());
    QTRY_COMPARE(saver(), m_saverHolder);
}

void DeviceIdle::thePortalRelievesTheScreenSaver()
{
    QVERIFY(m_saver->start());
    make();
    set(true);
    QTRY_COMPARE(saver(), m_saverHolder);
    QVERIFY(m_portal->start());
    QTRY_COMPARE(portal(), m_portalHolder);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::aServiceThatIsStartedAgainIsAskedAgain_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("portal") << u"portal"_s;
    QTest::newRow("screen saver") << u"saver"_s;
}

void DeviceIdle::aServiceThatIsStartedAgainIsAskedAgain()
{
    QFETCH(const QString, name);
    MockService &asked = service(name);
    QVERIFY(asked.start());
    make();
    set(true);
    QTRY_COMPARE(asked.texts(u"Holders"_s).size(), 1);
    asked.stop();
    QTRY_VERIFY(!m_inhibitor->isEffective());
    QVERIFY(asked.start());
    QTRY_COMPARE(asked.texts(u"Holders"_s).size(), 1);
    set(false);
    QTRY_COMPARE(asked.texts(u"Holders"_s).size(), 0);
}

void DeviceIdle::aServiceThatDiesAfterTheEndIsNotAskedAgain()
{
    QVERIFY(m_portal->start());
    make();
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
    m_portal->stop();
    set(false);
    QVERIFY(m_portal->start());
    set(true); // asks once more only now
    QTRY_COMPARE(portal(), m_portalHolder);
    QCOMPARE(m_portal->value(u"Requests"_s).toUInt(), 1U);
}

void DeviceIdle::theScreenSaverTakesOverFromADyingPortal()
{
    QVERIFY(m_portal->start());
    QVERIFY(m_saver->start());
    make();
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
    m_portal->stop();
    QTRY_COMPARE(saver(), m_saverHolder);
    set(false);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::rapidTogglingEndsAsItShould_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("delay");
    QTest::addColumn<bool>("on");
    for (const char *name : {"portal", "saver"}) {
        for (const int delay : {0, 300}) {
            for (const bool on : {false, true}) {
                QTest::addRow("%s after %d ms, %s in the end", name, delay, on ? "on" : "off")
                    << QString::fromLatin1(name) << delay << on;
            }
        }
    }
}

void DeviceIdle::rapidTogglingEndsAsItShould()
{
    QFETCH(const QString, name);
    QFETCH(const int, delay);
    QFETCH(const bool, on);
    MockService &asked = service(name);
    QVERIFY(asked.start({{u"delay"_s, delay}}));
    make();
    set(true);
    QTRY_VERIFY(m_inhibitor->isEffective());
    int left = 120; // at every turn of the event loop, across the answers
    QTimer toggling;
    connect(&toggling, &QTimer::timeout, this, [&] {
        set(left % 2 == 0 ? !on : on);
        if (left-- == 1)
            toggling.stop();
    });
    toggling.start(1);
    QTRY_VERIFY_WITH_TIMEOUT(!toggling.isActive(), 20000);
    QTRY_COMPARE(m_inhibitor->isEffective(), on);
    QTRY_COMPARE_WITH_TIMEOUT(asked.texts(u"Holders"_s).size(), on ? 1 : 0, 20000);
    QCOMPARE(m_inhibitor->isEffective(), on);
}

void DeviceIdle::anAnswerAfterTheEndIsGivenBack_data()
{
    aServiceThatIsStartedAgainIsAskedAgain_data();
}

void DeviceIdle::anAnswerAfterTheEndIsGivenBack()
{
    QFETCH(const QString, name);
    MockService &asked = service(name);
    QVERIFY(asked.start({{u"delay"_s, 1500}}));
    const Heartbeat heartbeat;
    make();
    set(true);
    QTRY_COMPARE(asked.texts(u"Holders"_s).size(), 1); // it holds, and has not said so
    set(false);
    QCOMPARE(asked.texts(u"Holders"_s).size(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(asked.texts(u"Holders"_s).size(), 0, 15000);
    QVERIFY(!m_inhibitor->isEffective());
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
}

void DeviceIdle::offAndOnWhileTheAnswerIsAwaitedAsksOnce()
{
    QVERIFY(m_portal->start({{u"delay"_s, 1000}}));
    make();
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
    set(false);
    set(true);
    QTRY_VERIFY(m_inhibitor->isEffective());
    QCOMPARE(m_portal->value(u"Requests"_s).toUInt(), 1U);
    QCOMPARE(portal(), m_portalHolder);
}

// The answer comes at last: then one of the two is enough.
void DeviceIdle::aPortalThatLetsWaitIsHelpedOut()
{
    QVERIFY(m_portal->start());
    QVERIFY(m_saver->start());
    make();
    set(true);
    QTRY_VERIFY(m_inhibitor->isEffective());
    set(false);
    QTRY_COMPARE(portal(), QStringList());
    m_portal->freeze();
    const Heartbeat heartbeat;
    set(true);
    QTimer *patience = nullptr;
    for (QTimer *timer : m_inhibitor->findChildren<QTimer *>(u"patience"_s)) {
        if (timer->isActive())
            patience = timer;
    }
    QVERIFY(patience);
    QTRY_COMPARE_WITH_TIMEOUT(saver(), m_saverHolder, 15000);
    QVERIFY2(heartbeat.isSteady(), heartbeat.report());
    m_portal->thaw();
    QTRY_COMPARE(portal(), m_portalHolder);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::aPortalThatRefuses()
{
    QVERIFY(m_portal->start());
    QVERIFY(m_saver->start());
    m_portal->answerWith(Inhibit, u"Inhibit"_s, u"sua{sv}"_s, u"o"_s, Refuse);
    const LogLines log("kestrel.system");
    make();
    set(true);
    QTRY_COMPARE(saver(), m_saverHolder);
    QCOMPARE(log.all(),
             QStringList{u"org.freedesktop.portal.Desktop does not keep the display on: not today"_s});
    set(false);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::aPortalThatRespondsWithARefusal()
{
    QVERIFY(m_portal->start({{u"response"_s, 2}}));
    QVERIFY(m_saver->start());
    make();
    set(true);
    QTRY_COMPARE(saver(), m_saverHolder);
    set(false);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::aRefusalIsTriedAgainTheNextTime()
{
    QVERIFY(m_saver->start());
    m_saver->answerWith(SaverName, u"Inhibit"_s, u"ss"_s, u"u"_s, Refuse);
    const LogLines log("kestrel.system");
    make();
    const auto *hold = m_inhibitor->findChild<ScreenSaverIdleHold *>();
    QVERIFY(hold);
    for (int time = 1; time <= 3; ++time) {
        set(true);
        QTRY_COMPARE(hold->state(), IdleHold::State::Refused);
        QCOMPARE(m_saver->calls(u"Inhibit"_s), time);
        set(false);
        QCOMPARE(hold->state(), IdleHold::State::Ready);
    }
    QCOMPARE(log.all(),
             (QStringList{u"org.freedesktop.ScreenSaver does not keep the display on: not today"_s,
                          u"neither a portal nor a screen saver service keeps the display on"_s}));
}

void DeviceIdle::anOldPortalThatChoosesItsPaths()
{
    QVERIFY(m_portal->start({{u"own_paths"_s, true}}));
    make();
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
    QTRY_VERIFY(m_inhibitor->isEffective());
    set(false);
    QTRY_COMPARE(portal(), QStringList());
}

void DeviceIdle::aScreenSaverAtItsOldPath()
{
    QVERIFY(m_saver->start());
    m_saver->answerWith(SaverName, u"Inhibit"_s, u"ss"_s, u"u"_s, NotHere);
    m_saver->addObject(u"/ScreenSaver"_s, SaverName);
    m_saver->answerWith(SaverName, u"Inhibit"_s, u"ss"_s, u"u"_s, u"ret = 77"_s, u"/ScreenSaver"_s);
    m_saver->answerWith(SaverName, u"UnInhibit"_s, u"u"_s, QString(), u"assert args[0] == 77"_s,
                        u"/ScreenSaver"_s);
    make();
    set(true);
    QTRY_VERIFY(m_inhibitor->isEffective());
    set(false);
    QTRY_COMPARE(m_saver->calls(u"UnInhibit"_s, u"/ScreenSaver"_s), 1);
}

void DeviceIdle::nonsenseOfThePortal()
{
    QVERIFY(m_portal->start());
    QVERIFY(m_saver->start());
    m_portal->answerWith(Inhibit, u"Inhibit"_s, u"sua{sv}"_s, u"s"_s, u"ret = 'yes'"_s);
    make();
    set(true);
    QTRY_COMPARE(saver(), m_saverHolder);
    set(false);
    QTRY_COMPARE(saver(), QStringList());
}

void DeviceIdle::nonsenseOfTheScreenSaver()
{
    QVERIFY(m_saver->start());
    m_saver->answerWith(SaverName, u"Inhibit"_s, u"ss"_s, u"s"_s, u"ret = 'yes'"_s);
    const LogLines log("kestrel.system");
    make();
    set(true);
    QTRY_VERIFY(log.contains(u"neither a portal nor a screen saver service keeps the display on"_s));
    QVERIFY(!m_inhibitor->isEffective());
    set(false);
}

void DeviceIdle::theEndOfTheInhibitorLetsGo()
{
    QVERIFY(m_portal->start());
    make();
    set(true);
    QTRY_COMPARE(portal(), m_portalHolder);
    QTRY_VERIFY(m_inhibitor->isEffective());
    m_inhibitor.reset();
    QTRY_COMPARE(portal(), QStringList());
}

QTEST_GUILESS_MAIN(DeviceIdle)
#include "device_idle.moc"
