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
constexpr int Longer = 40; // seconds of what goes on; nobody waits for its end
constexpr int Pictures = 9; // seconds, where the sound goes on; of much less MP4's demuxer makes nothing
constexpr int Sound = 9; // seconds, where the pictures go on
constexpr auto Exact = MediaBackend::SeekPrecision::Exact;

struct Container
{
    const char *name;
    // Arguments of ffmpeg.
    const char *picture;
    const char *sound;
    const char *to = "-c copy";
};

constexpr const char *H264 = "-c:v libx264 -preset veryfast -g 50";

constexpr Container Containers[] = {
    {"mp4", H264, "-c:a aac"},
    {"mkv", H264, "-c:a aac"},
    {"webm", "-c:v libvpx -deadline realtime -g 50", "-c:a libopus"},
    {"ts", H264, "-c:a aac"},
    {"flv", "-c:v flv1 -g 50", "-c:a mp3 -ar 44100"},
    {"avi", "-c:v mpeg4 -g 50", "-c:a mp3"},
    {"pcm.avi", "-c:v mpeg4 -g 50", "-c:a pcm_s16le"},
    {"mpg", "-c:v mpeg2video -g 12", "-c:a mp2", "-c copy -f vob"},
};

} // namespace

// One of picture and sound is over, and the other goes on: the video can be paused there, moved and played
// on.
class EndedStreamsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void pausedInTheSoundThatIsLeft_data() { containers(); }
    void pausedInTheSoundThatIsLeft();
    void soughtInTheSoundThatIsLeft_data() { containers(); }
    void soughtInTheSoundThatIsLeft();
    void pausedInThePicturesThatAreLeft_data() { containers(); }
    void pausedInThePicturesThatAreLeft();

private:
    static void containers();
    [[nodiscard]] bool make(const Container &container, const QString &name, int pictures, int sound) const;
    void play(const QString &name, std::chrono::seconds place);
    void pause();
    [[nodiscard]] int shown() const { return testclips::frameNumber(m_backend->frame().image); }

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    std::unique_ptr<GstMediaBackend> m_backend;
    std::unique_ptr<QSignalSpy> m_pauses;
};

void EndedStreamsTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    for (const Container &container : Containers) {
        QVERIFY2(make(container, u"sound"_s, Pictures, Longer), container.name);
        QVERIFY2(make(container, u"picture"_s, Longer, Sound), container.name);
    }
}

// Encoded first, and put together then: an encoder gives its last pictures when the file is further already.
bool EndedStreamsTest::make(const Container &container, const QString &name, int pictures, int sound) const
{
    using namespace testclips;
    const auto part = [this](const QString &of) { return m_clips.filePath(of); };
    const QStringList to = QString::fromLatin1(container.to).split(u' ');
    return run(numberedPicture(pictures, 160, 90) + QString::fromLatin1(container.picture).split(u' ')
               + QStringList{part(u"picture.nut"_s)})
        && run(tone(sound) + QString::fromLatin1(container.sound).split(u' ')
               + QStringList{part(u"sound.nut"_s)})
        && run(QStringList{u"-i"_s, part(u"picture.nut"_s), u"-i"_s, part(u"sound.nut"_s)} + to
               + QStringList{part(name + u'.' + QString::fromLatin1(container.name))});
}

void EndedStreamsTest::init()
{
    m_backend = std::make_unique<GstMediaBackend>();
    m_pauses = std::make_unique<QSignalSpy>(m_backend.get(), &MediaBackend::paused);
}

void EndedStreamsTest::cleanup()
{
    m_pauses.reset();
    m_backend.reset();
}

void EndedStreamsTest::containers()
{
    QTest::addColumn<QString>("suffix");
    for (const Container &container : Containers)
        QTest::newRow(container.name) << QString::fromLatin1(container.name);
}

// From the beginning on, and moved when it plays.
void EndedStreamsTest::play(const QString &name, std::chrono::seconds place)
{
    m_backend->play(testclips::address(m_clips.filePath(name)), 0);
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    QSignalSpy finds(m_backend.get(), &MediaBackend::seekFinished);
    m_backend->seek(place, Exact);
    QTRY_COMPARE_WITH_TIMEOUT(finds.size(), 1, Patience);
}

// The state is told before the place is final; of a seek while paused the latter may come behind that.
void EndedStreamsTest::pause()
{
    m_pauses->clear();
    m_backend->pause();
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Paused, Patience);
    QTRY_VERIFY_WITH_TIMEOUT(!m_pauses->isEmpty(), Patience);
}

void EndedStreamsTest::pausedInTheSoundThatIsLeft()
{
    QFETCH(const QString, suffix);
    play(u"sound."_s + suffix, std::chrono::seconds(Pictures - 1));
    int before = 0;
    do {
        before = shown();
        pause();
        m_backend->resume();
        QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    } while (shown() != before || before < Pictures * testclips::FramesPerSecond - 10);
}

void EndedStreamsTest::soughtInTheSoundThatIsLeft()
{
    QFETCH(const QString, suffix);
    play(u"sound."_s + suffix, 2s);
    QSignalSpy finds(m_backend.get(), &MediaBackend::seekFinished);
    m_backend->seek(15s, Exact);
    QTRY_COMPARE_WITH_TIMEOUT(finds.size(), 1, Patience);
    m_backend->resume();
    QTRY_COMPARE_WITH_TIMEOUT(m_backend->state(), AvloRenderer::Playing, Patience);
    pause();
    m_backend->seek(2s, Exact);
    QTRY_COMPARE_WITH_TIMEOUT(finds.size(), 2, Patience);
    const int back = shown();
    QVERIFY2(back >= 0 && back < 4 * testclips::FramesPerSecond, qPrintable(u"%1"_s.arg(back)));
    m_backend->resume();
    QTRY_VERIFY_WITH_TIMEOUT(shown() > back + 20, Patience);
}

void EndedStreamsTest::pausedInThePicturesThatAreLeft()
{
    QFETCH(const QString, suffix);
    play(u"picture."_s + suffix, std::chrono::seconds(Sound + 3));
    for (const auto place : {20s, 14s, 30s}) {
        const int first = shown();
        QTRY_VERIFY_WITH_TIMEOUT(shown() > first + 10, Patience);
        pause();
        const int stood = shown();
        m_backend->resume();
        QTRY_VERIFY_WITH_TIMEOUT(shown() > stood + 10, Patience);
        QSignalSpy finds(m_backend.get(), &MediaBackend::seekFinished);
        m_backend->seek(place, Exact);
        QTRY_COMPARE_WITH_TIMEOUT(finds.size(), 1, Patience);
    }
}

QTEST_MAIN(EndedStreamsTest)
#include "tst_endedstreams.moc"
