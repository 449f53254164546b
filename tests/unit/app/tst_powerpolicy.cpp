// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"
#include "data/trackerinterface.h"
#include "data/videoconstants.h"
#include "platform/media/videowidget.h"
#include "platform/sparql/outstandingupdates.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "support/fakedevice.h"
#include "support/simulateddevice.h"

#include <QRegularExpression>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

const char *const Unsaved
    = "the place in the video may not be saved: the device sleeps before the store answers";

} // namespace

// What a playing video asks of the device's power, and what the device's locks, display and sleep do to it.
class PowerPolicyTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void init();
    void cleanup();

    void theDisplayStaysOnWhileAPictureIsPlayed();
    void theDisplayMayGoOffForSoundAlone();
    void theDisplayMayGoOffBehindAnotherPage();
    void theDisplayMayGoOffWhenItIsOff();
    void theDisplayStaysOnForATelevision();
    void theDisplayMayGoOffAtTheEnd();

    void aLockPausesHoweverLateItIsTold_data();
    void aLockPausesHoweverLateItIsTold();
    void aLockedDeviceLetsNoVideoBegin();
    void aLockServiceThatGoesLetsNothingGoOn();

    void sleepWaitsForThePlaceInTheStore();
    void sleepSavesThePlaceOfSoundToo();
    void sleepWaitsForNothingWithoutAVideo_data();
    void sleepWaitsForNothingWithoutAVideo();
    void sleepWaitsForNothingWhenThePlaceIsSaved();
    void sleepWaitsOnlySoLongForTheStore();
    void sleepWaitsOnlySoLongForThePause();
    void sleepAtTheVeryEndNeedsNoPlace();
    void sleepBeforeTheFirstFrame();
    void sleepThatIsCalledOffLeavesTheVideoPaused();
    void sleepThatCannotBeDelayedSavesAllTheSame();

private:
    [[nodiscard]] PlayerController *playing() const { return m_controller->playerController(); }
    [[nodiscard]] QTimer *timer(const QString &name) const { return m_controller->findChild<QTimer *>(name); }
    // What was due was done.
    [[nodiscard]] bool isSettled() const { return !timer(u"evaluation"_s)->isActive(); }
    void playVideo(const VideoInfo &info = video(1));
    // "urn seconds" of every place that was given to the store since.
    [[nodiscard]] QStringList savedPlaces() const;

    std::unique_ptr<SimulatedDevice> m_device;
};

void PowerPolicyTest::init()
{
    m_device = std::make_unique<SimulatedDevice>();
    fakes::Context::install();
}

void PowerPolicyTest::cleanup()
{
    clean();
    m_device.reset();
    fakes::Context::remove();
}

void PowerPolicyTest::playVideo(const VideoInfo &info)
{
    tap(info);
    QTRY_COMPARE(playing()->state(), AvloRenderer::Playing);
    QTRY_VERIFY(isSettled());
    m_store.clear();
}

QStringList PowerPolicyTest::savedPlaces() const
{
    static const QRegularExpression insert(u"INSERT \\{ <(.*)> nmm:runTime \"(\\d+)\" \\}$"_s);
    QStringList saved;
    for (const QString &text : m_store.texts(SparqlQuery::UpdateStatement)) {
        const QRegularExpressionMatch match = insert.match(text);
        if (match.hasMatch())
            saved.append(match.captured(1) + u' ' + match.captured(2));
    }
    return saved;
}

void PowerPolicyTest::theDisplayStaysOnWhileAPictureIsPlayed()
{
    start();
    QVERIFY(!m_device->isIdleInhibited());
    playVideo();
    QTRY_VERIFY(m_device->isIdleInhibited());
    playing()->pause();
    QTRY_VERIFY(!m_device->isIdleInhibited());
    playing()->resume();
    QTRY_VERIFY(m_device->isIdleInhibited());
    playing()->stop();
    QTRY_VERIFY(!m_device->isIdleInhibited());
    const QString on = u'+' + qtTrId("qtn_vide_power_playing");
    QCOMPARE(m_device->idleRequests(), (QStringList{on, u"-"_s, on, u"-"_s}));
}

void PowerPolicyTest::theDisplayMayGoOffForSoundAlone()
{
    m_media.size = QSize();
    start();
    playVideo();
    QCOMPARE(m_device->idleRequests(), QStringList());
}

void PowerPolicyTest::theDisplayMayGoOffBehindAnotherPage()
{
    start();
    playVideo();
    QTRY_VERIFY(m_device->isIdleInhibited());
    m_window.hide();
    QTRY_VERIFY(!m_device->isIdleInhibited());
    m_window.showForProfile();
    QTRY_VERIFY(m_window.isOnDisplay());
}

void PowerPolicyTest::theDisplayMayGoOffWhenItIsOff()
{
    start();
    playVideo();
    QTRY_VERIFY(m_device->isIdleInhibited());
    m_device->setDisplay(0);
    QVERIFY(playing()->isDisplayOff());
    QTRY_VERIFY(!m_device->isIdleInhibited());
}

void PowerPolicyTest::theDisplayStaysOnForATelevision()
{
    fakes::Context::set(VIDEO_ROUTE_PROPERTY, ROUTE_TVOUT);
    start();
    playVideo();
    QTRY_VERIFY(m_device->isIdleInhibited());
    m_device->setDisplay(0);
    QTRY_VERIFY(isSettled());
    m_device->setLock(0, 1);
    QTRY_VERIFY(isSettled());
    QCOMPARE(playing()->state(), AvloRenderer::Playing);
    QVERIFY(m_device->isIdleInhibited());
}

void PowerPolicyTest::theDisplayMayGoOffAtTheEnd()
{
    start();
    playVideo();
    QTRY_VERIFY(m_device->isIdleInhibited());
    backend()->advance(61s);
    QTRY_VERIFY(!m_device->isIdleInhibited());
}

void PowerPolicyTest::aLockPausesHoweverLateItIsTold_data()
{
    QTest::addColumn<int>("lock");
    QTest::addColumn<int>("delay");
    for (const int lock : {0, 1}) {
        for (const int delay : {0, 50})
            QTest::addRow("lock %d after %d ms", lock, delay) << lock << delay;
    }
}

void PowerPolicyTest::aLockPausesHoweverLateItIsTold()
{
    QFETCH(const int, lock);
    QFETCH(const int, delay);
    start();
    playVideo();
    QTRY_VERIFY(m_device->isIdleInhibited());
    backend()->advance(5s);
    m_device->setDelay(std::chrono::milliseconds(delay));
    m_device->setLock(lock, 1);
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    QTRY_VERIFY(!m_device->isIdleInhibited());
    QTRY_COMPARE(savedPlaces(), QStringList{u"urn:uuid:1 5"_s});
    m_device->setLock(lock, 0);
    QTRY_VERIFY(isSettled());
    QCOMPARE(playing()->state(), AvloRenderer::Paused); // the person says when it goes on
}

void PowerPolicyTest::aLockedDeviceLetsNoVideoBegin()
{
    m_device->setLock(0, 1);
    start();
    tap(video(1));
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    QCOMPARE(m_device->isIdleInhibited(), false);
}

void PowerPolicyTest::aLockServiceThatGoesLetsNothingGoOn()
{
    start();
    playVideo();
    m_device->setLock(0, 1);
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    m_device->lose();
    QTRY_VERIFY(isSettled());
    QCOMPARE(playing()->state(), AvloRenderer::Paused);
    playing()->resume(); // but the person may
    QTRY_COMPARE(playing()->state(), AvloRenderer::Playing);
}

// The very second is in the store before the device is let go.
void PowerPolicyTest::sleepWaitsForThePlaceInTheStore()
{
    start();
    playVideo();
    backend()->advance(7s);
    auto update = std::make_unique<UpdateTicket>(); // which the store has not acknowledged yet
    m_device->announceSleep();
    QCOMPARE(savedPlaces(), QStringList{u"urn:uuid:1 7"_s}); // at once
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    QTRY_COMPARE(savedPlaces(), (QStringList{u"urn:uuid:1 7"_s, u"urn:uuid:1 7"_s}));
    QVERIFY(m_device->isHolding());
    update.reset();
    QTRY_VERIFY(!m_device->isHolding());
    QCOMPARE(m_device->releases(), 1);
    QVERIFY(!timer(u"sleepGuard"_s)->isActive());
}

void PowerPolicyTest::sleepSavesThePlaceOfSoundToo()
{
    m_media.size = QSize();
    start();
    playVideo();
    backend()->advance(7s);
    m_device->announceSleep();
    QTRY_VERIFY(!m_device->isHolding());
    QCOMPARE(savedPlaces().value(0), u"urn:uuid:1 7"_s);
}

void PowerPolicyTest::sleepWaitsForNothingWithoutAVideo_data()
{
    QTest::addColumn<bool>("stopped");
    QTest::newRow("nothing was ever played") << false;
    QTest::newRow("the video was stopped") << true;
}

void PowerPolicyTest::sleepWaitsForNothingWithoutAVideo()
{
    QFETCH(const bool, stopped);
    start();
    if (stopped) {
        playVideo();
        playing()->stop();
        QTRY_COMPARE(playing()->state(), AvloRenderer::Stopped);
        QTRY_VERIFY(isSettled());
    }
    QVERIFY(m_device->isHolding());
    m_device->announceSleep();
    QVERIFY(!m_device->isHolding());
}

void PowerPolicyTest::sleepWaitsForNothingWhenThePlaceIsSaved()
{
    start();
    playVideo();
    backend()->advance(7s);
    playing()->pause();
    QTRY_COMPARE(savedPlaces(), QStringList{u"urn:uuid:1 7"_s});
    m_device->announceSleep();
    QVERIFY(!m_device->isHolding());
    QCOMPARE(savedPlaces().size(), 1);
}

void PowerPolicyTest::sleepWaitsOnlySoLongForTheStore()
{
    start();
    playVideo();
    backend()->advance(7s);
    const UpdateTicket update;
    m_device->announceSleep();
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    QVERIFY(m_device->isHolding());
    expect(Unsaved);
    expire(timer(u"sleepGuard"_s));
    QVERIFY(!m_device->isHolding());
}

void PowerPolicyTest::sleepWaitsOnlySoLongForThePause()
{
    m_media.hangsOnPause = true;
    start();
    playVideo();
    backend()->advance(7s);
    m_device->announceSleep();
    QCOMPARE(savedPlaces(), QStringList{u"urn:uuid:1 7"_s});
    QVERIFY(m_device->isHolding());
    expect(Unsaved);
    expire(timer(u"sleepGuard"_s));
    QVERIFY(!m_device->isHolding());
}

// It begins anew the next time, and that is settled before the pause.
void PowerPolicyTest::sleepAtTheVeryEndNeedsNoPlace()
{
    start();
    playVideo();
    backend()->advance(59s);
    m_device->announceSleep();
    QCOMPARE(savedPlaces(), QStringList{u"urn:uuid:1 0"_s});
    QTRY_VERIFY_WITH_TIMEOUT(!m_device->isHolding(), 1000);
    QCOMPARE(playing()->state(), AvloRenderer::Paused);
    QCOMPARE(savedPlaces().size(), 1);
}

// The video was tapped and the lid closed: it does not begin in the bag.
void PowerPolicyTest::sleepBeforeTheFirstFrame()
{
    m_media.prerollDelay = 3s;
    start();
    tap(video(1, 30));
    QTRY_COMPARE(playing()->state(), AvloRenderer::Transitioning);
    m_store.clear();
    m_device->announceSleep();
    QVERIFY(!m_device->isHolding());
    m_device->wake();
    backend()->advance(4s);
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    QVERIFY(!savedPlaces().contains(u"urn:uuid:1 0"_s));
}

void PowerPolicyTest::sleepThatIsCalledOffLeavesTheVideoPaused()
{
    start();
    playVideo();
    backend()->advance(7s);
    auto update = std::make_unique<UpdateTicket>();
    m_device->announceSleep();
    QVERIFY(timer(u"sleepGuard"_s)->isActive());
    m_device->wake();
    QVERIFY(!timer(u"sleepGuard"_s)->isActive());
    update.reset();
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
    QVERIFY(m_device->isHolding());
    QCOMPARE(m_device->releases(), 0);
}

void PowerPolicyTest::sleepThatCannotBeDelayedSavesAllTheSame()
{
    m_device->setSleepCannotBeDelayed(true);
    start();
    playVideo();
    backend()->advance(7s);
    m_device->announceSleep();
    QCOMPARE(savedPlaces(), QStringList{u"urn:uuid:1 7"_s});
    QTRY_COMPARE(playing()->state(), AvloRenderer::Paused);
}

int main(int argc, char **argv)
{
    return runControllerTest<PowerPolicyTest>(argc, argv);
}
#include "tst_powerpolicy.moc"
