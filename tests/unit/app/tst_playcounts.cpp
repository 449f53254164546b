// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"

#include "data/playrecorder.h"
#include "data/videoconstants.h"
#include "platform/media/rendererregistry.h"
#include "platform/media/videowidget.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Stands for the store service, and counts what it is told.
class CountingStore : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.harrow.Kestrel.Store")

public:
    CountingStore() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"counting store"_s))
    {
        m_registered
            = m_bus.registerObject(u"/com/harrow/Kestrel/Store"_s, this, QDBusConnection::ExportAllSlots)
            && m_bus.registerService(u"com.harrow.Kestrel.Store"_s);
    }
    ~CountingStore() override { QDBusConnection::disconnectFromBus(u"counting store"_s); }
    [[nodiscard]] bool isRegistered() const { return m_registered; }
    QStringList plays;

public Q_SLOTS:
    void RecordPlay(const QString &urn) { plays.append(urn.section(u':', -1)); }

private:
    QDBusConnection m_bus;
    bool m_registered = false;
};

// How often something was played is what the details tell: once for each time that somebody asked for it.
class PlayCountsTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void init();
    void cleanup();
    void aPlayIsCountedWhenItBegins();
    void pausingAndSeekingIsNoNewPlay();
    void goingOnAfterTheDetailsIsNoNewPlay();
    void playedAgainFromTheListIsAnother();
    void aStrangerIsNotCounted();
    void aRendererThatComesLateIsCountedOnce();
    void aParkedRequestIsCountedWhenItBegins();
    void aRefusedRequestIsNotCounted();
    void goingOnWhereItWasLeftIsOnePlay();
    void seenAgainAfterItsEndIsAnother();
    void aSectionThatIsRepeatedIsOnePlay();
    void aStoredVideoThatIsAskedForByItsAddressIsCounted();
    void askedForWhileItPlaysIsAnother();
    void aPlayThatBeganWithoutAStoreIsCountedWhenItComes();

private:
    void play(int number = 1)
    {
        tap(video(number));
        QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    }
    // All that was told until now has arrived.
    void expectPlays(const QStringList &numbers)
    {
        QDBusMessage last
            = QDBusMessage::createMethodCall(u"com.harrow.Kestrel.Store"_s, u"/com/harrow/Kestrel/Store"_s,
                                             u"com.harrow.Kestrel.Store"_s, u"RecordPlay"_s);
        last << u"end"_s;
        QDBusConnection::sessionBus().send(last);
        QTRY_COMPARE(m_counts->plays, numbers + QStringList(u"end"_s));
        m_counts->plays.removeLast();
    }

    std::unique_ptr<CountingStore> m_counts;
};

void PlayCountsTest::init()
{
    m_counts = std::make_unique<CountingStore>();
    QVERIFY(m_counts->isRegistered());
}

void PlayCountsTest::cleanup()
{
    clean();
    m_counts.reset();
}

void PlayCountsTest::aPlayIsCountedWhenItBegins()
{
    start();
    expectPlays({});
    play();
    expectPlays({u"1"_s});
}

void PlayCountsTest::pausingAndSeekingIsNoNewPlay()
{
    start();
    play();
    m_controller->playerController()->pause();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    m_controller->playerController()->resume();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    QTest::keyClick(&m_window, Qt::Key_Right);
    expectPlays({u"1"_s});
}

void PlayCountsTest::goingOnAfterTheDetailsIsNoNewPlay()
{
    start();
    play();
    player()->handleInfoButtonClick();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    m_controller->playerController()->stop(); // so that the player begins anew by itself
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Stopped);
    Q_EMIT details()->backButtonClicked();
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    expectPlays({u"1"_s});
}

void PlayCountsTest::playedAgainFromTheListIsAnother()
{
    start();
    play(1);
    QTest::keyClick(&m_window, Qt::Key_Backspace);
    QTRY_COMPARE(stack(), u"library"_s);
    play(1);
    expectPlays({u"1"_s, u"1"_s});
}

void PlayCountsTest::aStrangerIsNotCounted()
{
    start();
    VideoInfo stranger;
    stranger.url = u"http://host/a.mp4"_s;
    m_controller->play(stranger);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    expectPlays({});
}

void PlayCountsTest::aRendererThatComesLateIsCountedOnce()
{
    start();
    play(1);
    PlayerController *controller = m_controller->playerController();
    expect("void PlayerController::removeRenderer(QString, QString) Renderer was removed");
    controller->removeRenderer(RENDERER_ID, QString());
    tap(video(2)); // the player finds its renderer again, and plays this
    QTRY_COMPARE(controller->state(), AvloRenderer::Playing);
    expectPlays({u"1"_s, u"2"_s});
}

void PlayCountsTest::aParkedRequestIsCountedWhenItBegins()
{
    start();
    tap(video(1, 20));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->advance(std::chrono::seconds(12));
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    QTest::keyClick(&m_window, Qt::Key_Backspace);
    tap(video(2, 5));
    QCOMPARE(stack(), u"library"_s); // the place in the first is being saved
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    expectPlays({u"1"_s, u"2"_s});
}

void PlayCountsTest::aRefusedRequestIsNotCounted()
{
    start();
    FakeCalls::active = 1;
    tap(video(1));
    FakeCalls::active = 0;
    expectPlays({});
    play(2);
    expectPlays({u"2"_s});
}

void PlayCountsTest::goingOnWhereItWasLeftIsOnePlay()
{
    start();
    tap(video(1, 20));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    QVERIFY(backend()->commands().contains(u"play file:///videos/1.mp4 20"_s));
    expectPlays({u"1"_s});
}

void PlayCountsTest::seenAgainAfterItsEndIsAnother()
{
    start();
    play(1);
    backend()->advance(std::chrono::seconds(61));
    QTRY_COMPARE(stack(), u"library"_s);
    expectPlays({u"1"_s});
    play(1);
    expectPlays({u"1"_s, u"1"_s});
}

void PlayCountsTest::aSectionThatIsRepeatedIsOnePlay()
{
    start();
    play(1);
    const MediaSection section{std::chrono::seconds(1), std::chrono::seconds(3)};
    backend()->setLoop(section);
    QTRY_COMPARE(backend()->loop(), std::optional(section));
    for (int second = 0; second < 12; ++second)
        backend()->advance(std::chrono::seconds(1));
    QVERIFY(backend()->position() <= section.end);
    expectPlays({u"1"_s});
}

void PlayCountsTest::aStoredVideoThatIsAskedForByItsAddressIsCounted()
{
    start();
    look(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    expectPlays({u"1"_s});
}

void PlayCountsTest::askedForWhileItPlaysIsAnother()
{
    start();
    look(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->clearCommands();
    look(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(backend()->commands().filter(u"play "_s).size(), 1);
    expectPlays({u"1"_s, u"1"_s});
}

// It was just being started again.
void PlayCountsTest::aPlayThatBeganWithoutAStoreIsCountedWhenItComes()
{
    m_counts.reset();
    start();
    play(1);
    auto *recorder = m_controller->findChild<PlayRecorder *>();
    QVERIFY(recorder);
    QTRY_VERIFY(recorder->findChildren<QDBusPendingCallWatcher *>().isEmpty()); // there was nobody
    QCOMPARE(stack(), u"library player"_s);
    m_counts = std::make_unique<CountingStore>();
    QTRY_COMPARE(m_counts->plays, QStringList(u"1"_s));
    expectPlays({u"1"_s});
}

int main(int argc, char **argv)
{
    return runControllerTest<PlayCountsTest>(argc, argv);
}
#include "tst_playcounts.moc"
