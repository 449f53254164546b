// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>
#include <platform/media/gst/ratechanger.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

#include <gst/app/gstappsink.h>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 45000; // ms; a loaded machine
constexpr int SampleRate = 44100;

struct Heard
{
    QList<qint16> samples;
    QList<double> starts; // of each buffer, in seconds of running time
    QList<double> places; // the same in seconds of the sound that was recorded
};

// A tone of 440 Hz, two seconds long, through the filter; `faster` is called after half a second of it.
Heard listen(RateChanger &changer, const std::function<void()> &halfWay)
{
    const std::unique_ptr<GstElement, decltype(&gst_object_unref)> owner(
        gst_parse_launch("audiotestsrc freq=440 samplesperbuffer=4410 num-buffers=20 ! "
                         "audio/x-raw,format=S16LE,rate=44100,channels=1 ! identity name=place",
                         nullptr),
        gst_object_unref);
    GstElement *pipeline = owner.get();
    GstElement *place = gst_bin_get_by_name(GST_BIN(pipeline), "place");
    GstElement *ear = gst_element_factory_make("appsink", nullptr);
    g_object_set(ear, "sync", FALSE, "max-buffers", 1U, nullptr);
    GstElement *end = changer.createSoundEnd(ear);
    gst_bin_add(GST_BIN(pipeline), end);
    gst_element_link(place, end);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    Heard heard;
    while (GstSample *sample = gst_app_sink_pull_sample(GST_APP_SINK(ear))) {
        GstBuffer *buffer = gst_sample_get_buffer(sample);
        const GstSegment *segment = gst_sample_get_segment(sample);
        heard.starts.append(
            double(gst_segment_to_running_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer))) / 1e9);
        heard.places.append(
            double(gst_segment_to_stream_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer))) / 1e9);
        GstMapInfo map;
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        const auto *first = reinterpret_cast<const qint16 *>(map.data);
        heard.samples.append(QList<qint16>(first, first + map.size / 2));
        gst_buffer_unmap(buffer, &map);
        gst_sample_unref(sample);
        if (heard.samples.size() >= SampleRate / 2 && halfWay && heard.samples.size() < SampleRate)
            halfWay();
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(place);
    return heard;
}

double pitch(const QList<qint16> &samples)
{
    int crossings = 0;
    for (qsizetype i = 1; i < samples.size(); ++i)
        crossings += samples.at(i - 1) < 0 && samples.at(i) >= 0 ? 1 : 0;
    return crossings * double(SampleRate) / double(samples.size());
}

} // namespace

class PlaybackRateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theSoundKeepsItsPitch_data();
    void theSoundKeepsItsPitch();
    void aChangeOnTheWayLeavesNoHole();
    void playsAtItsSpeed_data();
    void playsAtItsSpeed();
    void changesWhilePlayingWithoutASeek();
    void aPausedFrameStaysAndGoesOnFaster();
    void aSeekKeepsTheSpeed();
    void isBounded();
    void theNextVideoBeginsAtItsOwnSpeed();

private:
    void playFrom(uint second);
    // How long the clock of the wall goes while the video goes from one place to the other.
    [[nodiscard]] qint64 wallTime(MediaTime from, MediaTime to);

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    std::unique_ptr<GstMediaBackend> m_backend;
    QList<int> m_numbers; // of the frames shown
};

void PlaybackRateTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    gst_init(nullptr, nullptr);
    using namespace testclips;
    QVERIFY(run(numberedPicture(12) + tone(12) + h264() + QStringList{m_clips.filePath(u"clip.mp4"_s)}));
}

void PlaybackRateTest::init()
{
    m_numbers.clear();
    m_backend = std::make_unique<GstMediaBackend>();
    connect(m_backend.get(), &MediaBackend::frameChanged, this, [this] {
        const int number = testclips::frameNumber(m_backend->frame().image);
        if (m_numbers.isEmpty() || m_numbers.last() != number)
            m_numbers.append(number);
    });
}

void PlaybackRateTest::cleanup()
{
    m_backend.reset();
}

void PlaybackRateTest::playFrom(uint second)
{
    m_backend->play(testclips::address(m_clips.filePath(u"clip.mp4"_s)), second);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
}

qint64 PlaybackRateTest::wallTime(MediaTime from, MediaTime to)
{
    if (!QTest::qWaitFor([&] { return m_backend->position() >= from; }, Patience))
        return -1;
    const MediaTime begin = m_backend->position();
    QElapsedTimer clock;
    clock.start();
    if (!QTest::qWaitFor([&] { return m_backend->position() >= to; }, Patience))
        return -1;
    // As if it had been exactly this way.
    const auto way = std::max<qint64>(1, (m_backend->position() - begin).count());
    return qint64(double(clock.elapsed()) * double((to - from).count()) / double(way));
}

void PlaybackRateTest::theSoundKeepsItsPitch_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("half") << 0.5;
    QTest::newRow("as it is") << 1.0;
    QTest::newRow("one and a half") << 1.5;
    QTest::newRow("twice") << 2.0;
}

void PlaybackRateTest::theSoundKeepsItsPitch()
{
    QFETCH(double, rate);
    RateChanger changer;
    changer.setRate(rate);
    const Heard heard = listen(changer, nullptr);
    const double expected = 2 * SampleRate / rate;
    QVERIFY2(std::abs(double(heard.samples.size()) - expected) < 0.08 * 2 * SampleRate / rate,
             qPrintable(u"%1 samples of %2"_s.arg(heard.samples.size()).arg(expected)));
    QVERIFY2(std::abs(pitch(heard.samples) - 440) < 18, qPrintable(QString::number(pitch(heard.samples))));
}

void PlaybackRateTest::aChangeOnTheWayLeavesNoHole()
{
    RateChanger changer;
    const Heard heard = listen(changer, [&] { changer.setRate(2); });
    QVERIFY(heard.samples.size() < 1.7 * SampleRate);
    QVERIFY(heard.samples.size() > 1.1 * SampleRate);
    QVERIFY2(std::abs(pitch(heard.samples) - 440) < 18, qPrintable(QString::number(pitch(heard.samples))));
    for (qsizetype i = 1; i < heard.starts.size(); ++i) {
        const double step = heard.starts.at(i) - heard.starts.at(i - 1);
        const double way = heard.places.at(i) - heard.places.at(i - 1);
        QVERIFY2(step > 0 && step < 0.17, qPrintable(QString::number(step)));
        QVERIFY2(way > 0 && way < 0.34, qPrintable(QString::number(way)));
    }
    QVERIFY(heard.places.last() > 1.8); // the whole tone, in 1.25 s
    QVERIFY2(heard.starts.last() < 1.5, qPrintable(QString::number(heard.starts.last())));
}

void PlaybackRateTest::playsAtItsSpeed_data()
{
    QTest::addColumn<double>("rate");
    QTest::newRow("half") << 0.5;
    QTest::newRow("twice") << 2.0;
    QTest::newRow("four times") << 4.0;
}

void PlaybackRateTest::playsAtItsSpeed()
{
    QFETCH(double, rate);
    m_backend->play(testclips::address(m_clips.filePath(u"clip.mp4"_s)), 1);
    m_backend->setRate(rate); // before the first frame
    const MediaTime way = rate < 1 ? 1s : 4s;
    const qint64 time = wallTime(1200ms, 1200ms + way);
    const double measured = double(way / 1ms) / double(time);
    QVERIFY2(measured > rate * 0.8 && measured < rate * 1.25, qPrintable(QString::number(measured)));
    QVERIFY(std::is_sorted(m_numbers.cbegin(), m_numbers.cend()));
    QVERIFY(m_numbers.size() > 20);
}

void PlaybackRateTest::changesWhilePlayingWithoutASeek()
{
    playFrom(0);
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    QSignalSpy changed(m_backend.get(), &MediaBackend::rateChanged);
    QSignalSpy states(m_backend.get(), &MediaBackend::stateChanged);
    m_backend->setRate(2);
    QVERIFY(changed.isEmpty()); // never from inside a command
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(m_backend->rate(), 2.0);
    const qint64 fast = wallTime(1s, 5s);
    m_backend->setRate(1);
    const qint64 slow = wallTime(5500ms, 7s);
    QVERIFY2(fast > 1500 && fast < 2700, qPrintable(QString::number(fast)));
    QVERIFY2(slow > 1200 && slow < 2000, qPrintable(QString::number(slow)));
    QVERIFY(std::is_sorted(m_numbers.cbegin(), m_numbers.cend()));
    QCOMPARE(sought.size(), 0);
    QCOMPARE(states.size(), 0);
}

void PlaybackRateTest::aPausedFrameStaysAndGoesOnFaster()
{
    playFrom(2);
    QSignalSpy paused(m_backend.get(), &MediaBackend::paused);
    m_backend->pause();
    QVERIFY(paused.wait(Patience));
    const MediaTime place = m_backend->position();
    const qsizetype shown = m_numbers.size();
    m_backend->setRate(2);
    QTRY_COMPARE(m_backend->rate(), 2.0);
    QCOMPARE(m_backend->position(), place);
    m_backend->resume();
    const qint64 time = wallTime(place + 1s, place + 5s);
    QVERIFY2(time > 1500 && time < 2700, qPrintable(QString::number(time)));
    QVERIFY(m_numbers.value(shown) - m_numbers.value(shown - 1) <= 4);
}

void PlaybackRateTest::aSeekKeepsTheSpeed()
{
    playFrom(0);
    m_backend->setRate(2);
    QSignalSpy sought(m_backend.get(), &MediaBackend::seekFinished);
    m_backend->seek(5s, MediaBackend::SeekPrecision::Exact);
    QVERIFY(sought.wait(Patience));
    const qint64 time = wallTime(5500ms, 9500ms);
    QVERIFY2(time > 1500 && time < 2700, qPrintable(QString::number(time)));
    QCOMPARE(m_backend->rate(), 2.0);
}

void PlaybackRateTest::isBounded()
{
    m_backend->setRate(100);
    QCOMPARE(m_backend->rate(), 4.0);
    m_backend->setRate(0);
    QCOMPARE(m_backend->rate(), 0.25);
}

void PlaybackRateTest::theNextVideoBeginsAtItsOwnSpeed()
{
    playFrom(0);
    m_backend->setRate(4);
    playFrom(3);
    QCOMPARE(m_backend->rate(), 1.0);
    const qint64 time = wallTime(3200ms, 4700ms);
    QVERIFY2(time > 1100 && time < 2000, qPrintable(QString::number(time)));
}

QTEST_GUILESS_MAIN(PlaybackRateTest)
#include "tst_playbackrate.moc"
