// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/media/exactpositions.h>
#include <platform/media/nullmediabackend.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

using Media = NullMediaBackend::Media;

// What a back end tells, in its order, as one text.
class Story : public QObject
{
public:
    explicit Story(NullMediaBackend *backend)
    {
        connect(backend, &MediaBackend::stateChanged, this, [this](AvloRenderer::State state) {
            static const QStringList names{u"stopped"_s, u"playing"_s, u"pausedState"_s, u"transitioning"_s};
            m_events.append(names.at(state));
        });
        connect(backend, &MediaBackend::paused, this,
                [this, backend] { m_events.append(u"paused@%1"_s.arg(backend->position() / 1ms)); });
        connect(backend, &MediaBackend::endReached, this, [this] { m_events.append(u"end"_s); });
        connect(backend, &MediaBackend::seekFinished, this, [this] { m_events.append(u"sought"_s); });
        connect(backend, &MediaBackend::lost, this, [this] { m_events.append(u"lost"_s); });
        connect(backend, &MediaBackend::failed, this,
                [this](const AvloError &error) { m_events.append(u"error%1"_s.arg(error.code)); });
        connect(backend, &MediaBackend::bufferingChanged, this,
                [this](float percent) { m_events.append(u"buffer%1"_s.arg(percent)); });
        connect(backend, &MediaBackend::stillWritten, this, [this](const QString &uri, const QString &path) {
            m_events.append(QImage(path).isNull() ? u"noStill"_s : u"still:"_s + uri);
        });
    }
    [[nodiscard]] QString text() const { return m_events.join(u' '); }
    QString take() { return std::exchange(m_events, {}).join(u' '); }

private:
    QStringList m_events;
};

} // namespace

class NullMediaBackendTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void playsFromTheStartOnly();
    void commandsAnswerThroughTheEventLoop();
    void aSeekBeforeTheFirstFrameIsKept();
    void aPauseBeforeTheFirstFrameIsKept();
    void pausesOnAFrameAndWritesIt();
    void goesOnAtTheVeryFrameOfThePause();
    void aSeekWhilePausedEndsInAnotherPause();
    void theNewestOfSeveralSeeksWins();
    void aFingerOnTheTimeLine();
    void aFingerOnTheTimeLineOfAPausedVideo();
    void aPauseEndsTheScrub();
    void seeksAreClamped();
    void runsAtItsSpeedAndEndsAtTheEnd();
    void theEndStopsFirst();
    void failsInsteadOfTheFirstFrame();
    void failsOnTheWay();
    void stallsAndGoesOn();
    void aPauseThatHangsIsNeverAnswered();
    void aNewVideoForgetsTheOldOne();
    void isLost();

private:
    QTemporaryDir m_home;
    std::unique_ptr<NullMediaBackend> m_backend;
    std::unique_ptr<Story> m_story;
};

void NullMediaBackendTest::initTestCase()
{
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
}

void NullMediaBackendTest::init()
{
    m_backend = std::make_unique<NullMediaBackend>();
    m_story = std::make_unique<Story>(m_backend.get());
}

void NullMediaBackendTest::cleanup()
{
    m_story.reset();
    m_backend.reset();
}

void NullMediaBackendTest::playsFromTheStartOnly()
{
    QList<MediaTime> times;
    connect(m_backend.get(), &MediaBackend::frameChanged, this,
            [&] { times.append(m_backend->frame().time); });
    m_backend->play(u"a"_s, 12);
    m_backend->advance(80ms);
    QCOMPARE(m_story->take(), u"transitioning playing"_s);
    QCOMPARE(times, (QList<MediaTime>{12s, 12080ms}));
    QCOMPARE(m_backend->duration(), MediaTime(60s));
}

void NullMediaBackendTest::commandsAnswerThroughTheEventLoop()
{
    m_backend->play(u"a"_s, 0);
    QCOMPARE(m_story->take(), QString());
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    m_story->take();
    m_backend->pause();
    QCOMPARE(m_story->take(), QString());
    QTRY_COMPARE(m_story->text(), u"pausedState paused@0"_s);
    m_story->take();
    m_backend->resume();
    QCOMPARE(m_story->take(), QString());
    QTRY_COMPARE(m_story->text(), u"playing"_s);
    m_story->take();
    m_backend->stop();
    QTRY_COMPARE(m_story->text(), u"stopped"_s);
}

void NullMediaBackendTest::aSeekBeforeTheFirstFrameIsKept()
{
    Media slow;
    slow.prerollDelay = 300ms;
    m_backend->setDefaultMedia(slow);
    QSignalSpy frames(m_backend.get(), &MediaBackend::frameChanged);
    m_backend->play(u"a"_s, 3);
    m_backend->seek(20s, MediaBackend::SeekPrecision::Exact);
    QCOMPARE(m_backend->heading(), MediaTime(20s));
    m_backend->advance(299ms);
    QCOMPARE(frames.count(), 0);
    m_backend->advance(1ms);
    QCOMPARE(m_story->take(), u"transitioning sought playing"_s);
    QCOMPARE(m_backend->frame().time, MediaTime(20s));
}

void NullMediaBackendTest::aPauseBeforeTheFirstFrameIsKept()
{
    Media slow;
    slow.prerollDelay = 300ms;
    m_backend->setDefaultMedia(slow);
    m_backend->play(u"a"_s, 3);
    m_backend->pause();
    m_backend->advance(1s);
    QCOMPARE(m_story->take(), u"transitioning pausedState paused@3000"_s);
}

void NullMediaBackendTest::pausesOnAFrameAndWritesIt()
{
    m_backend->setStillOnPause(true);
    m_backend->play(u"file:///a%20b.mp4"_s, 0);
    m_backend->advance(1050ms);
    m_backend->pause();
    m_backend->advance(1s);
    QCOMPARE(m_story->take(), u"transitioning playing pausedState still:file:///a%20b.mp4 paused@1040"_s);
}

void NullMediaBackendTest::goesOnAtTheVeryFrameOfThePause()
{
    m_backend->play(u"exact"_s, 0);
    m_backend->advance(7130ms);
    m_backend->pause();
    m_backend->advance(0ms);
    m_backend->play(u"exact"_s, 7);
    m_backend->advance(0ms);
    QCOMPARE(m_backend->position(), MediaTime(7120ms));
    m_backend->play(u"exact"_s, 8);
    m_backend->advance(0ms);
    QCOMPARE(m_backend->position(), MediaTime(8s));
    m_backend->play(u"another"_s, 7);
    m_backend->advance(0ms);
    QCOMPARE(m_backend->position(), MediaTime(7s));
}

void NullMediaBackendTest::aSeekWhilePausedEndsInAnotherPause()
{
    Media media;
    media.seekDelay = 50ms;
    m_backend->setDefaultMedia(media);
    m_backend->setStillOnPause(true);
    m_backend->play(u"a"_s, 0);
    m_backend->advance(0ms);
    m_backend->pause();
    m_backend->advance(0ms);
    m_story->take();
    m_backend->seek(30s, MediaBackend::SeekPrecision::Exact);
    m_backend->advance(50ms);
    QCOMPARE(m_story->take(), u"sought still:a paused@30000"_s);
}

void NullMediaBackendTest::theNewestOfSeveralSeeksWins()
{
    Media media;
    media.seekDelay = 50ms;
    m_backend->setDefaultMedia(media);
    m_backend->play(u"a"_s, 0);
    m_backend->advance(0ms);
    m_backend->seek(30s, MediaBackend::SeekPrecision::KeyFrame);
    m_backend->advance(20ms);
    m_backend->seek(31s, MediaBackend::SeekPrecision::Exact);
    m_backend->advance(30ms);
    QCOMPARE(m_story->take(), u"transitioning playing sought"_s);
    QCOMPARE(m_backend->position(), MediaTime(31s));
}

void NullMediaBackendTest::aFingerOnTheTimeLine()
{
    m_backend->play(u"a"_s, 10);
    m_backend->advance(0ms);
    m_story->take();
    m_backend->beginScrub();
    m_backend->advance(5s);
    QCOMPARE(m_backend->position(), MediaTime(10s)); // it waits
    m_backend->seek(30300ms, MediaBackend::SeekPrecision::KeyFrame);
    m_backend->advance(0ms);
    QCOMPARE(m_backend->position(), MediaTime(30s));
    QCOMPARE(m_backend->heading(), MediaTime(30300ms));
    m_backend->endScrub();
    m_backend->endScrub();
    m_backend->advance(0ms);
    QCOMPARE(m_backend->position(), MediaTime(30280ms)); // the frame that 30.3 s lies in
    m_backend->advance(1s);
    QVERIFY(m_backend->position() > 31s);
    QCOMPARE(m_story->take(), u"sought sought"_s);
    QCOMPARE(m_backend->commands().mid(1).join(u','), u"begin scrub,seek 30300,end scrub"_s);
}

void NullMediaBackendTest::aFingerOnTheTimeLineOfAPausedVideo()
{
    m_backend->play(u"a"_s, 10);
    m_backend->pause();
    m_backend->advance(0ms);
    m_story->take();
    m_backend->beginScrub();
    m_backend->seek(20s, MediaBackend::SeekPrecision::KeyFrame);
    m_backend->advance(0ms);
    m_backend->seek(21480ms, MediaBackend::SeekPrecision::Exact);
    m_backend->advance(0ms);
    QCOMPARE(m_story->take(), u"sought sought"_s);
    m_backend->endScrub();
    m_backend->advance(0ms);
    QCOMPARE(m_story->take(), u"paused@21480"_s);
    m_backend->beginScrub(); // touched, not moved
    m_backend->endScrub();
    m_backend->advance(1s);
    QCOMPARE(m_story->take(), QString());
}

void NullMediaBackendTest::aPauseEndsTheScrub()
{
    m_backend->play(u"a"_s, 10);
    m_backend->advance(0ms);
    m_story->take();
    m_backend->beginScrub();
    m_backend->seek(20440ms, MediaBackend::SeekPrecision::KeyFrame);
    m_backend->advance(0ms);
    m_backend->pause();
    QVERIFY(!m_backend->isScrubbing());
    m_backend->advance(0ms);
    QCOMPARE(m_story->take(), u"sought sought pausedState paused@20440"_s);
}

void NullMediaBackendTest::seeksAreClamped()
{
    m_backend->play(u"a"_s, 0);
    m_backend->advance(0ms);
    m_backend->seek(-5s, MediaBackend::SeekPrecision::Exact);
    m_backend->advance(0ms);
    QCOMPARE(m_backend->position(), MediaTime(0s));
    m_backend->seek(1000s, MediaBackend::SeekPrecision::Exact);
    QCOMPARE(m_backend->heading(), MediaTime(60s));
}

void NullMediaBackendTest::runsAtItsSpeedAndEndsAtTheEnd()
{
    NullMediaBackend backend;
    Media media;
    media.duration = 10s;
    backend.setDefaultMedia(media);
    backend.play(u"file:///a.mp4"_s, 0);
    backend.advance(0s);
    QSignalSpy changed(&backend, &MediaBackend::rateChanged);
    backend.setRate(2);
    QTRY_COMPARE(changed.size(), 1);
    backend.advance(3s);
    QCOMPARE(backend.position(), MediaTime(6s));
    backend.setRate(0.5);
    backend.advance(2s);
    QCOMPARE(backend.position(), MediaTime(7s));
    backend.setRate(100);
    QCOMPARE(backend.rate(), 4.0);
    backend.advance(750ms);
    QCOMPARE(backend.state(), AvloRenderer::Stopped);
    QCOMPARE(backend.position(), MediaTime(10s));
    backend.play(u"file:///a.mp4"_s, 0);
    QCOMPARE(backend.rate(), 1.0);
}

void NullMediaBackendTest::theEndStopsFirst()
{
    m_backend->play(u"a"_s, 58);
    m_backend->advance(5s);
    QCOMPARE(m_story->take(), u"transitioning playing stopped end"_s);
    QCOMPARE(m_backend->position(), MediaTime(60s));
}

void NullMediaBackendTest::failsInsteadOfTheFirstFrame()
{
    Media missing;
    missing.fault = AvloError{300, u"no such file"_s};
    m_backend->setMedia(u"missing"_s, missing);
    m_backend->play(u"missing"_s, 0);
    m_backend->advance(1s);
    QCOMPARE(m_story->take(), u"transitioning error300 stopped"_s);
}

void NullMediaBackendTest::failsOnTheWay()
{
    Media broken;
    broken.fault = AvloError{308, u"broken"_s};
    broken.faultPosition = 10s;
    m_backend->setDefaultMedia(broken);
    m_backend->play(u"a"_s, 9);
    m_backend->advance(999ms);
    QCOMPARE(m_story->take(), u"transitioning playing"_s);
    m_backend->advance(1ms);
    QCOMPARE(m_story->take(), u"error308 stopped"_s);
}

void NullMediaBackendTest::stallsAndGoesOn()
{
    Media stream;
    stream.stalls = {{2s, 400ms}};
    m_backend->setDefaultMedia(stream);
    m_backend->play(u"a"_s, 0);
    m_backend->advance(2300ms);
    QCOMPARE(m_story->take(), u"transitioning playing buffer0 buffer25 buffer50 buffer75"_s);
    QCOMPARE(m_backend->position(), MediaTime(2s));
    m_backend->advance(500ms);
    QCOMPARE(m_story->take(), u"buffer100"_s);
    QCOMPARE(m_backend->position(), MediaTime(2400ms));
}

void NullMediaBackendTest::aPauseThatHangsIsNeverAnswered()
{
    Media media;
    media.hangsOnPause = true;
    m_backend->setDefaultMedia(media);
    m_backend->play(u"a"_s, 0);
    m_backend->advance(1s);
    m_backend->pause();
    m_backend->advance(10s);
    QCOMPARE(m_story->take(), u"transitioning playing"_s);
}

void NullMediaBackendTest::aNewVideoForgetsTheOldOne()
{
    Media slow;
    slow.pauseDelay = 100ms;
    m_backend->setMedia(u"slow"_s, slow);
    m_backend->play(u"slow"_s, 0);
    m_backend->advance(1s);
    m_backend->pause();
    m_backend->play(u"b"_s, 5);
    m_backend->advance(1s);
    QCOMPARE(m_story->take(), u"transitioning playing transitioning playing"_s);
    QCOMPARE(m_backend->uri(), u"b"_s);
    QCOMPARE(m_backend->position(), MediaTime(6s));
}

void NullMediaBackendTest::isLost()
{
    m_backend->play(u"a"_s, 0);
    m_backend->advance(1s);
    m_backend->lose();
    m_backend->advance(1s);
    QCOMPARE(m_story->take(), u"transitioning playing lost"_s);
}

QTEST_MAIN(NullMediaBackendTest)
#include "tst_nullmediabackend.moc"
