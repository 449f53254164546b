// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <platform/media/gst/gstmediabackend.h>

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 30000; // ms; a loaded machine
constexpr int Seconds = 12; // of sound
constexpr auto Wanted = 6s;
constexpr auto KeyFrame = MediaBackend::SeekPrecision::KeyFrame;
constexpr auto Exact = MediaBackend::SeekPrecision::Exact;

struct Clip
{
    const char *name;
    const char *file;
    int pictures; // in seconds
    const char *arguments; // of ffmpeg
};

// No key frame follows for long, or none at all, and few of these containers know where the last one is.
constexpr Clip Clips[] = {
    {"mpeg2 in ps", "near.mpg", Seconds, "-c:v mpeg2video -g 12 -bf 2 -c:a mp2 -f vob"},
    {"few pictures a second in ps", "slow.mpg", Seconds, "-r 24 -c:v mpeg2video -g 120 -c:a mp2"},
    {"one key frame in ps", "one.mpg", Seconds, "-c:v mpeg2video -g 600 -c:a mp2 -f vob"},
    {"sound goes on in ps", "sound.mpg", 8, "-c:v mpeg2video -g 12 -c:a mp2 -f vob"},
    {"far key frames in ts", "far.ts", Seconds, "-c:v libx264 -preset veryfast -g 125"},
    {"sound goes on in ts", "sound.ts", 8, "-c:v libx264 -preset veryfast -g 250"},
    {"sound goes on in mp4", "sound.mp4", 8, "-c:v libx264 -preset veryfast -g 250"},
    {"far key frames in avi", "far.avi", Seconds, "-c:v mpeg4 -g 125"},
    {"far key frames in asf", "far.wmv", Seconds, "-c:v wmv2 -g 125"},
    {"far key frames in ogg", "far.ogv", Seconds, "-c:v libtheora -g 125"},
};

// One viewing of a video, paused.
class Viewing
{
public:
    Viewing(const QString &uri, std::chrono::seconds start)
    {
        backend.play(uri, uint(start / 1s));
        backend.pause();
    }
    [[nodiscard]] int shown() const { return testclips::frameNumber(backend.frame().image); }

    GstMediaBackend backend;
    QSignalSpy pauses{&backend, &MediaBackend::paused};
    QSignalSpy finds{&backend, &MediaBackend::seekFinished};
    QSignalSpy failures{&backend, &MediaBackend::failed};
    QSignalSpy ends{&backend, &MediaBackend::endReached};
};

} // namespace

// Wherever one looks in a video it is found, and the video goes on from there.
class FarKeyFramesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void soughtEverywhere_data();
    void soughtEverywhere();
    void draggedToTheEnd_data() { soughtEverywhere_data(); }
    void draggedToTheEnd();

private:
    QTemporaryDir m_home;
    QTemporaryDir m_clips;
};

void FarKeyFramesTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    for (const Clip &clip : Clips)
        QVERIFY2(testclips::run(testclips::numberedPicture(clip.pictures) + testclips::tone(Seconds)
                                + QString::fromLatin1(clip.arguments).split(u' ')
                                + QStringList{m_clips.filePath(QString::fromLatin1(clip.file))}),
                 clip.name);
}

void FarKeyFramesTest::soughtEverywhere_data()
{
    QTest::addColumn<QString>("uri");
    for (const Clip &clip : Clips)
        QTest::newRow(clip.name) << testclips::address(m_clips.filePath(QString::fromLatin1(clip.file)));
}

void FarKeyFramesTest::soughtEverywhere()
{
    QFETCH(const QString, uri);
    int wanted = -1;
    {
        Viewing there(uri, Wanted);
        QTRY_COMPARE_WITH_TIMEOUT(there.pauses.size(), 1, Patience);
        wanted = there.shown();
    }
    Viewing viewing(uri, 1s);
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses.size(), 1, Patience);
    for (const auto precision : {KeyFrame, Exact}) {
        for (const auto place : {11900ms, 1000ms, 8600ms, 3700ms, 11300ms, 7300ms}) {
            viewing.pauses.clear();
            viewing.backend.seek(place, precision);
            QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses.size() + viewing.failures.size(), 1, Patience);
            QCOMPARE(viewing.failures.size(), 0);
        }
    }
    viewing.pauses.clear();
    viewing.backend.seek(Wanted, Exact);
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses.size(), 1, Patience);
    QVERIFY2(std::abs(viewing.shown() - wanted) <= 1,
             qPrintable(u"%1, not %2"_s.arg(viewing.shown()).arg(wanted)));
    viewing.backend.resume();
    QTRY_VERIFY_WITH_TIMEOUT(viewing.shown() > wanted + 5, Patience);
}

void FarKeyFramesTest::draggedToTheEnd()
{
    QFETCH(const QString, uri);
    Viewing viewing(uri, 2s);
    QTRY_COMPARE_WITH_TIMEOUT(viewing.pauses.size(), 1, Patience);
    viewing.backend.resume();
    QTRY_COMPARE_WITH_TIMEOUT(viewing.backend.state(), AvloRenderer::Playing, Patience);
    viewing.backend.beginScrub();
    for (const auto place : {11000ms, 11500ms, 12000ms, 11700ms}) {
        viewing.finds.clear();
        viewing.backend.seek(place, KeyFrame);
        QTRY_VERIFY_WITH_TIMEOUT(viewing.finds.size() + viewing.failures.size() > 0, Patience);
        QCOMPARE(viewing.failures.size(), 0);
    }
    QCOMPARE(viewing.ends.size(), 0);
    viewing.backend.endScrub();
    QTRY_COMPARE_WITH_TIMEOUT(viewing.ends.size() + viewing.failures.size(), 1, Patience);
    QCOMPARE(viewing.failures.size(), 0);
}

QTEST_MAIN(FarKeyFramesTest)
#include "tst_farkeyframes.moc"
