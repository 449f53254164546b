// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/modemmanagerpeer.h"
#include "support/privatebus.h"

#include "../unit/player/playerfixture.h"

#include <QSignalSpy>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

// The telephone rings while a video plays: from ModemManager's signal to the place that is saved.
class CallPauseTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString address = m_bus.start();
        QVERIFY(!address.isEmpty());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        m_fixture = std::make_unique<PlayerFixture>();
        DeviceStateOverrides overrides = deviceStateOverrides();
        overrides.call = nullptr; // the machine's own
        setDeviceStateOverrides(overrides);
        m_calls.reset(CallMonitor::create(nullptr));
        QVERIFY(m_modemManager.start());
        QVERIFY(m_modemManager.tell(u"AddModem"_s, {u"0"_s}));
    }

    void cleanupTestCase()
    {
        m_calls.reset();
        m_fixture.reset();
    }

    void init() { QVERIFY(m_fixture->startWithRenderer()); }

    void cleanup()
    {
        m_fixture->stop();
        m_fixture->store->clear();
    }

    void theVideoPausesItsPlaceIsSavedAndItStaysPaused()
    {
        QVERIFY(m_fixture->playUntilItPlays(PlayerFixture::video(u"urn:called"_s)));
        m_fixture->backend->advance(21s);
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"a"_s, u"3"_s}));
        QVERIFY(m_fixture->waitFor(AvloRenderer::Paused));
        QTRY_COMPARE(m_fixture->savedPositions(), QStringList{u"urn:called 21"_s});
        QVERIFY(m_modemManager.tell(u"SetCallState"_s, {u"a"_s, 4}));
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"a"_s}));
        // The next call is known once this one's end is.
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"b"_s, u"3"_s}));
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"b"_s}));
        QTRY_COMPARE(m_calls->getState(), 0);
        QCOMPARE(m_fixture->controller->state(), AvloRenderer::Paused);
        m_fixture->controller->resume();
        QVERIFY(m_fixture->waitFor(AvloRenderer::Playing));
    }

    void goingOnDuringTheCallSaysWhyNot()
    {
        QVERIFY(m_modemManager.tell(u"AddCall"_s, {u"0"_s, u"c"_s, u"4"_s}));
        QTRY_COMPARE(m_calls->getState(), 1);
        QSignalSpy errors(m_fixture->controller.get(), &PlayerController::rendererError);
        QSignalSpy critical(m_fixture->controller.get(), &PlayerController::criticalError);
        VideoInfo video = PlayerFixture::video(u"urn:refused"_s);
        m_fixture->controller->play(video);
        QTRY_COMPARE(errors.size(), 1);
        QCOMPARE(errors.first().first().toString(), u"qtn_vide_error_call"_s);
        QVERIFY(m_fixture->waitFor(AvloRenderer::Paused));
        QCOMPARE(critical.size(), 0);
        QVERIFY(m_modemManager.tell(u"DeleteCall"_s, {u"0"_s, u"c"_s}));
        QTRY_COMPARE(m_calls->getState(), 0);
    }

private:
    PrivateBus m_bus;
    ModemManagerPeer m_modemManager;
    std::unique_ptr<PlayerFixture> m_fixture;
    std::unique_ptr<CallMonitor> m_calls;
};

QTEST_MAIN(CallPauseTest)
#include "callpause_test.moc"
