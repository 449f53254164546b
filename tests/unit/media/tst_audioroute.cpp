// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/fakeaudioroute.h"

#include <platform/media/audioroute.h>
#include <platform/media/nullmediabackend.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/videowidget.h>

#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr quint32 Device = 1;
constexpr quint32 Other = 2;
constexpr quint32 Stream = 50;

const AudioPort Speaker{u"speaker"_s, false, false};
const AudioPort Phones{u"headphones"_s, true, false};
const AudioPort Headset{u"headset"_s, true, false};

AudioPort gone(AudioPort port)
{
    port.gone = true;
    return port;
}

AudioSink sink(quint32 index, const QList<AudioPort> &ports = {}, qsizetype active = -1)
{
    return {index, ports, active, false};
}

// Plays on `first`, beside a sink without ports.
AudioRoute playingOn(const AudioSink &first, std::chrono::milliseconds grace = 1h)
{
    AudioRoute route(grace);
    (void)route.setSink(first);
    (void)route.setSink(sink(Other));
    (void)route.setStream(Stream, first.index);
    return route;
}

} // namespace

class AudioRouteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void sinkInUseThatGoes();
    void sinkThatNobodyUsesMayGo();
    void streamThatWasMovedAwayFromAGoingSink();
    void streamThatEndedWithItsSink();
    void streamThatAPersonMovedIsOnItsNewSink();
    void headphonesPulledOut();
    void headphonesPluggedInAreNoLoss();
    void headphonesThatTurnOutToBeAHeadsetAreNoLoss();
    void portChosenByAPersonIsNoLoss();
    void theOnlyPortIsPulledOut();
    void portThatIsPulledOutWaitsForTheOneThatTakesOver();
    void streamMovedBecauseNothingIsPluggedIn();
    void builtInLoudspeakerThatMakesRoomIsNoLoss();
    void sinkOfAnotherProgramIsNotInUse();
    void afterClearNothingIsInUse();
    void unplugPausesAndSavesThePlace();
    void nothingGoesOnByItselfAfterAnUnplug();
    void unplugWhileOpeningHoldsAtTheFirstFrame();
    void unplugWhilePausedOrStoppedDoesNothing();

private:
    void startPlaying(const NullMediaBackend::Media &media = {});

    QTemporaryDir m_home;
    std::unique_ptr<VideoWidget> m_widget;
    NullMediaBackend *m_backend = nullptr;
};

void AudioRouteTest::initTestCase()
{
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    FakeAudioRouteWatcher::install();
    RendererRegistry::setBackendFactory([this] {
        auto backend = std::make_unique<NullMediaBackend>();
        m_backend = backend.get();
        return backend;
    });
}

void AudioRouteTest::cleanup()
{
    m_widget.reset();
}

void AudioRouteTest::sinkInUseThatGoes()
{
    AudioRoute route = playingOn(sink(Device));
    QVERIFY(route.removeSink(Device));
    // The stream lands on another one: that is not told again.
    QVERIFY(!route.setStream(Stream, Other));
    QVERIFY(route.removeSink(Other));
}

void AudioRouteTest::sinkThatNobodyUsesMayGo()
{
    AudioRoute route = playingOn(sink(Device));
    QVERIFY(!route.removeSink(Other));
    QVERIFY(!route.removeSink(77));
}

void AudioRouteTest::streamThatWasMovedAwayFromAGoingSink()
{
    AudioRoute route = playingOn(sink(Device));
    QVERIFY(!route.setStream(Stream, Other));
    QVERIFY(route.removeSink(Device));
}

void AudioRouteTest::streamThatEndedWithItsSink()
{
    AudioRoute route = playingOn(sink(Device));
    route.removeStream(Stream);
    QVERIFY(route.removeSink(Device));
}

void AudioRouteTest::streamThatAPersonMovedIsOnItsNewSink()
{
    AudioRoute route = playingOn(sink(Device), 0ms);
    QVERIFY(!route.setStream(Stream, Other));
    QVERIFY(!route.removeSink(Device));
    QVERIFY(route.removeSink(Other));
}

void AudioRouteTest::headphonesPulledOut()
{
    AudioRoute route = playingOn(sink(Device, {Speaker, Phones}, 1));
    QVERIFY(route.setSink(sink(Device, {Speaker, gone(Phones)}, 0)));
    QVERIFY(!route.setSink(sink(Device, {Speaker, gone(Phones)}, 0)));
}

void AudioRouteTest::headphonesPluggedInAreNoLoss()
{
    AudioRoute route = playingOn(sink(Device, {Speaker, gone(Phones)}, 0));
    QVERIFY(!route.setSink(sink(Device, {Speaker, Phones}, 0)));
    QVERIFY(!route.setSink(sink(Device, {Speaker, Phones}, 1)));
}

void AudioRouteTest::headphonesThatTurnOutToBeAHeadsetAreNoLoss()
{
    AudioRoute route = playingOn(sink(Device, {Speaker, Phones, gone(Headset)}, 1));
    QVERIFY(!route.setSink(sink(Device, {Speaker, gone(Phones), Headset}, 2)));
}

void AudioRouteTest::portChosenByAPersonIsNoLoss()
{
    AudioRoute route = playingOn(sink(Device, {Speaker, Phones}, 1));
    QVERIFY(!route.setSink(sink(Device, {Speaker, Phones}, 0)));
}

void AudioRouteTest::theOnlyPortIsPulledOut()
{
    AudioRoute route = playingOn(sink(Device, {Phones}, 0));
    QVERIFY(route.setSink(sink(Device, {gone(Phones)}, 0)));
    QVERIFY(!route.setSink(sink(Device, {gone(Phones)}, 0)));
}

void AudioRouteTest::portThatIsPulledOutWaitsForTheOneThatTakesOver()
{
    AudioRoute route = playingOn(sink(Device, {Speaker, Phones}, 1));
    QVERIFY(!route.setSink(sink(Device, {Speaker, gone(Phones)}, 1)));
    QVERIFY(route.setSink(sink(Device, {Speaker, gone(Phones)}, 0)));
}

void AudioRouteTest::streamMovedBecauseNothingIsPluggedIn()
{
    AudioRoute route = playingOn(sink(Device, {Speaker, Phones}, 1));
    QVERIFY(!route.setSink(sink(Device, {Speaker, gone(Phones)}, 1)));
    QVERIFY(route.setStream(Stream, Other));
}

void AudioRouteTest::builtInLoudspeakerThatMakesRoomIsNoLoss()
{
    AudioSink speaker = sink(Device, {Speaker}, 0);
    speaker.builtIn = true;
    AudioRoute route = playingOn(speaker);
    QVERIFY(!route.removeSink(Device));
}

void AudioRouteTest::sinkOfAnotherProgramIsNotInUse()
{
    AudioRoute route(1h);
    (void)route.setSink(sink(Device, {Speaker, Phones}, 1));
    QVERIFY(!route.setSink(sink(Device, {Speaker, gone(Phones)}, 0)));
    QVERIFY(!route.removeSink(Device));
}

void AudioRouteTest::afterClearNothingIsInUse()
{
    AudioRoute route = playingOn(sink(Device));
    route.removeStream(Stream);
    route.clear();
    QVERIFY(!route.removeSink(Device));
}

void AudioRouteTest::startPlaying(const NullMediaBackend::Media &media)
{
    m_widget = std::make_unique<VideoWidget>();
    QTRY_VERIFY(m_widget->renderer());
    m_backend->setDefaultMedia(media);
    m_widget->play(u"file:///a.mp4"_s, 5);
}

void AudioRouteTest::unplugPausesAndSavesThePlace()
{
    startPlaying();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    m_backend->advance(2s);
    QSignalSpy paused(m_widget.get(), &VideoWidget::paused);
    FakeAudioRouteWatcher::vanish();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    QTRY_COMPARE(paused.count(), 1); // upon which the place is saved
    QCOMPARE(m_widget->position(), 7u);
}

void AudioRouteTest::nothingGoesOnByItselfAfterAnUnplug()
{
    startPlaying();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    FakeAudioRouteWatcher::vanish();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    FakeAudioRouteWatcher::vanish();
    m_backend->advance(30s);
    QCOMPARE(m_backend->commands(), QStringList({u"play file:///a.mp4 5"_s, u"pause"_s}));
    QCOMPARE(m_widget->position(), 5u);
}

void AudioRouteTest::unplugWhileOpeningHoldsAtTheFirstFrame()
{
    NullMediaBackend::Media slow;
    slow.prerollDelay = 3s;
    startPlaying(slow);
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Transitioning);
    FakeAudioRouteWatcher::vanish();
    m_backend->advance(5s);
    QCOMPARE(m_backend->state(), AvloRenderer::Paused);
    QCOMPARE(m_widget->position(), 5u);
}

void AudioRouteTest::unplugWhilePausedOrStoppedDoesNothing()
{
    startPlaying();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    m_widget->pause();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    m_backend->clearCommands();
    FakeAudioRouteWatcher::vanish();
    m_widget->stop();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Stopped);
    FakeAudioRouteWatcher::vanish();
    QCOMPARE(m_backend->commands(), QStringList(u"stop"_s));
}

QTEST_MAIN(AudioRouteTest)
#include "tst_audioroute.moc"
