// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine
constexpr int KeyFrames = 25; // from one to the next
constexpr auto KeyFrame = MediaBackend::SeekPrecision::KeyFrame;
constexpr auto Exact = MediaBackend::SeekPrecision::Exact;

} // namespace

// A finger on the time line.
class ScrubTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theKeyFrameComesAndThenTheExactFrameWhereTheFingerRests();
    void playingWaitsAndGoesOnFromTheReleasedFrame();
    void theFingerIsLiftedWhileTheKeyFrameIsOnItsWay();
    void anExactSeekOnReleaseIsTheSame();
    void theNewestPlaceWins();
    void theWayToTheExactFrameIsGivenUpForAMovingFinger();
    void aPausedVideoIsMovedWithOnePause();
    void touchedAndNotMoved();
    void aPauseEndsTheScrub();
    void aFingerThatIsThereBeforeTheFirstFrame();
    void stopAndPlayEndTheScrub();

private:
    void playAndTouch(uint second);
    void verifyGoesOnFrom(int frame, const QElapsedTimer &released);
    [[nodiscard]] int shown() const { return testclips::frameNumber(m_backend->frame().image); }

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    QString m_clip;
    std::unique_ptr<GstMediaBackend> m_backend;
    QList<int> m_numbers; // of the frames shown
    QStringList m_events;
};

void ScrubTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    const QString path = m_clips.filePath(u"clip.mp4"_s);
    QVERIFY(testclips::run(testclips::numberedPicture(12) + testclips::tone(12)
                           + QStringList{u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"veryfast"_s, u"-g"_s,
                                         QString::number(KeyFrames), u"-sc_threshold"_s, u"0"_s, path}));
    m_clip = testclips::address(path);
}

void ScrubTest::init()
{
    m_numbers.clear();
    m_events.clear();
    m_backend = std::make_unique<GstMediaBackend>();
    connect(m_backend.get(), &MediaBackend::frameChanged, this, [this] {
        if (m_numbers.isEmpty() || m_numbers.last() != shown())
            m_numbers.append(shown());
    });
    connect(m_backend.get(), &MediaBackend::stateChanged, this, [this](AvloRenderer::State state) {
        static const QStringList names{u"stopped"_s, u"playing"_s, u"pausedState"_s, u"transitioning"_s};
        m_events.append(names.at(state));
    });
    connect(m_backend.get(), &MediaBackend::paused, this, [this] { m_events.append(u"paused"_s); });
}

void ScrubTest::cleanup()
{
    m_backend.reset();
}

void ScrubTest::playAndTouch(uint second)
{
    m_backend->play(m_clip, second);
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.size() > 2, Patience);
    m_backend->beginScrub();
    m_events.clear();
}

// Of a playing video the window sees what is newest when it looks: at this frame, or at one that time has
// brought since.
void ScrubTest::verifyGoesOnFrom(int frame, const QElapsedTimer &released)
{
    const auto first = std::find_if(m_numbers.cbegin(), m_numbers.cend(), [frame](int number) {
        return number > frame - KeyFrames && number % KeyFrames != 0;
    });
    const qint64 passed = 1 + released.elapsed() * testclips::FramesPerSecond / 1000;
    QVERIFY2(first != m_numbers.cend() && *first >= frame && *first <= frame + passed,
             qPrintable(QDebug::toString(m_numbers)));
}

void ScrubTest::theKeyFrameComesAndThenTheExactFrameWhereTheFingerRests()
{
    playAndTouch(1);
    m_backend->seek(5440ms, KeyFrame);
    QTRY_COMPARE_WITH_TIMEOUT(m_numbers.last(), 136, Patience);
    QVERIFY2(m_numbers.contains(125), qPrintable(QDebug::toString(m_numbers)));
    QCOMPARE(m_events.join(u' '), QString());
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
}

void ScrubTest::playingWaitsAndGoesOnFromTheReleasedFrame()
{
    playAndTouch(1);
    m_backend->seek(7s, KeyFrame);
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    m_backend->seek(8480ms, KeyFrame);
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.last() == 212, Patience);
    QCOMPARE(m_backend->heading() / 1ms, m_backend->position() / 1ms);
    m_numbers.clear();
    m_backend->endScrub();
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.size() > 5, Patience);
    QVERIFY2(m_numbers.first() == 212 || m_numbers.first() == 213, qPrintable(QDebug::toString(m_numbers)));
    QVERIFY(std::is_sorted(m_numbers.begin(), m_numbers.end()));
    QCOMPARE(m_events.join(u' '), QString());
}

void ScrubTest::theFingerIsLiftedWhileTheKeyFrameIsOnItsWay()
{
    playAndTouch(1);
    m_backend->seek(8480ms, KeyFrame);
    QElapsedTimer clock;
    clock.start();
    m_backend->endScrub();
    QCOMPARE(m_backend->heading(), MediaTime(8480ms));
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.last() > 216, Patience);
    verifyGoesOnFrom(212, clock);
    QCOMPARE(m_events.join(u' '), QString());
}

void ScrubTest::anExactSeekOnReleaseIsTheSame()
{
    playAndTouch(1);
    m_backend->seek(6s, KeyFrame);
    m_backend->seek(8480ms, Exact);
    QElapsedTimer clock;
    clock.start();
    m_backend->endScrub();
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.last() > 216, Patience);
    verifyGoesOnFrom(212, clock);
    QCOMPARE(m_events.join(u' '), QString());
}

// Sixty places a second: what is shown last is the last one, and what is shown on the way are key frames.
void ScrubTest::theNewestPlaceWins()
{
    playAndTouch(1);
    m_numbers.clear();
    QTimer finger;
    auto place = 2000ms;
    connect(&finger, &QTimer::timeout, this, [&] {
        place += 50ms;
        m_backend->seek(place, KeyFrame);
        if (place >= 9s)
            finger.stop();
    });
    finger.start(16);
    QTRY_VERIFY_WITH_TIMEOUT(!finger.isActive(), Patience);
    m_backend->endScrub();
    QTRY_VERIFY_WITH_TIMEOUT(!m_numbers.isEmpty() && m_numbers.last() >= 225, Patience);
    QList<int> keyFrames;
    for (const int number : std::as_const(m_numbers)) {
        if (number % KeyFrames == 0 && number < 225)
            keyFrames.append(number);
    }
    QVERIFY2(keyFrames.size() >= 3, qPrintable(QDebug::toString(m_numbers)));
    QVERIFY(std::is_sorted(keyFrames.begin(), keyFrames.end()));
}

// Back and forth between resting and moving, faster than the exact frame may come.
void ScrubTest::theWayToTheExactFrameIsGivenUpForAMovingFinger()
{
    playAndTouch(1);
    for (int round = 0; round < 20; ++round) {
        m_backend->seek(std::chrono::milliseconds(2960 + 300 * (round % 7)), Exact);
        QCoreApplication::processEvents();
        m_backend->seek(std::chrono::milliseconds(9000 - 500 * (round % 5)), KeyFrame);
        QCoreApplication::processEvents();
    }
    m_backend->seek(4040ms, KeyFrame);
    QTRY_COMPARE_WITH_TIMEOUT(shown(), 101, Patience);
    m_backend->pause();
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"pausedState paused"_s, Patience);
    QCOMPARE(shown(), 101);
    QCOMPARE(m_backend->position(), MediaTime(4040ms));
}

void ScrubTest::aPausedVideoIsMovedWithOnePause()
{
    m_backend->play(m_clip, 1);
    m_backend->pause();
    QTRY_VERIFY_WITH_TIMEOUT(m_events.contains(u"paused"_s), Patience);
    m_events.clear();
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    m_backend->beginScrub();
    m_backend->seek(5s, KeyFrame);
    QVERIFY(sought.wait(Patience));
    m_backend->seek(6520ms, KeyFrame);
    QVERIFY(sought.wait(Patience));
    m_backend->endScrub();
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"paused"_s, Patience);
    QCOMPARE(shown(), 163);
    QCOMPARE(m_backend->position(), MediaTime(6520ms));
}

void ScrubTest::touchedAndNotMoved()
{
    playAndTouch(1);
    m_backend->endScrub();
    const int before = m_numbers.last();
    QTRY_VERIFY_WITH_TIMEOUT(m_numbers.last() > before + 5, Patience);
    QVERIFY(std::is_sorted(m_numbers.begin(), m_numbers.end()));
    m_backend->pause();
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"pausedState paused"_s, Patience);
    m_events.clear();
    m_backend->beginScrub();
    m_backend->endScrub();
    m_backend->resume();
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"playing"_s, Patience);
}

// The telephone rings while the finger is on the time line.
void ScrubTest::aPauseEndsTheScrub()
{
    playAndTouch(1);
    m_backend->seek(5440ms, KeyFrame);
    m_backend->pause();
    QVERIFY(!m_backend->isScrubbing());
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"pausedState paused"_s, Patience);
    QCOMPARE(shown(), 136);
    QCOMPARE(m_backend->position(), MediaTime(5440ms));
}

void ScrubTest::aFingerThatIsThereBeforeTheFirstFrame()
{
    m_backend->play(m_clip, 1);
    m_backend->beginScrub();
    m_backend->seek(5440ms, KeyFrame);
    QTRY_COMPARE_WITH_TIMEOUT(shown(), 136, Patience);
    QCOMPARE(m_events.join(u' '), u"transitioning"_s);
    m_backend->endScrub();
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"transitioning playing"_s, Patience);
}

void ScrubTest::stopAndPlayEndTheScrub()
{
    playAndTouch(1);
    m_backend->seek(5440ms, KeyFrame);
    m_backend->play(m_clip, 2);
    QVERIFY(!m_backend->isScrubbing());
    QTRY_COMPARE_WITH_TIMEOUT(m_events.join(u' '), u"transitioning playing"_s, Patience);
    m_backend->beginScrub();
    m_backend->stop();
    QVERIFY(!m_backend->isScrubbing());
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Stopped, Patience);
}

QTEST_MAIN(ScrubTest)
#include "tst_scrub.moc"
