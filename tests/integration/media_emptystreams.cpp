// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/playback.h"
#include "support/testclips.h"

#include <platform/media/gst/emptystreams.h>
#include <platform/media/gst/playbackfaults.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QUrl>

#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 30000; // ms
constexpr qint64 Soon = 8000; // ms; a file that is given up takes ten seconds

QString run(const QStringList &arguments)
{
    QProcess maker;
    maker.start(u"ffmpeg"_s, QStringList{u"-v"_s, u"error"_s, u"-y"_s} + arguments);
    return maker.waitForFinished(60000) && maker.exitCode() == 0
        ? QString()
        : QString::fromUtf8(maker.readAllStandardError());
}

// Four seconds of pictures, of which the first has a sound.
QString shortSound(const QString &path, const QStringList &codecs)
{
    return run(QStringList{u"-f"_s, u"lavfi"_s, u"-i"_s, u"testsrc=size=160x120:rate=25:duration=4"_s,
                           u"-f"_s, u"lavfi"_s, u"-i"_s, u"sine=duration=1"_s}
               + codecs + QStringList{path});
}

struct Unref
{
    void operator()(GstElement *element) const { gst_object_unref(element); }
};
using Element = std::unique_ptr<GstElement, Unref>;

Element make(const char *factory)
{
    GstElement *element = gst_element_factory_make(factory, nullptr);
    return Element(element ? static_cast<GstElement *>(gst_object_ref_sink(element)) : nullptr);
}

bool seek(GstElement *player, GstClockTime place)
{
    return gst_element_seek_simple(player, GST_FORMAT_TIME,
                                   GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE), gint64(place))
        != FALSE;
}

// Until this message is said; what is said meanwhile is noted.
bool waitFor(GstElement *player, PlaybackFaults *faults, const std::function<bool(GstMessage *)> &isIt)
{
    GstBus *bus = gst_element_get_bus(player);
    bool isSaid = false;
    while (!isSaid) {
        GstMessage *message = gst_bus_timed_pop(bus, Patience * GST_MSECOND);
        if (message == nullptr)
            break;
        faults->note(message);
        isSaid = isIt(message);
        gst_message_unref(message);
    }
    gst_object_unref(bus);
    return isSaid;
}

} // namespace

// What one stream of a file lacks keeps the other one from nobody.
class EmptyStreamsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goesOnBehindTheEndOfTheSound_data();
    void goesOnBehindTheEndOfTheSound();
    void aSearchBackTellsThatThereIsSoundAgain();
    void playsWithASoundThatIsOnlyAnnounced_data();
    void playsWithASoundThatIsOnlyAnnounced();
    void givesUpSoonWithoutAPicture();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString address(const QString &name) const
    {
        return QString::fromUtf8(QUrl::fromLocalFile(path(name)).toEncoded());
    }
    [[nodiscard]] bool cut(const QString &name, const QString &from, qint64 tenths) const
    {
        QFile whole(path(from));
        QFile part(path(name));
        return whole.open(QIODevice::ReadOnly) && part.open(QIODevice::WriteOnly)
            && part.write(whole.read(whole.size() * tenths / 10)) > 0;
    }

    QTemporaryDir m_folder;
};

void EmptyStreamsTest::goesOnBehindTheEndOfTheSound_data()
{
    QTest::addColumn<QStringList>("codecs");
    const QStringList h264{u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-g"_s, u"25"_s};
    QTest::newRow("avi") << QStringList{u"-c:v"_s, u"mpeg4"_s, u"-c:a"_s, u"mp3"_s};
    QTest::newRow("mkv") << h264;
    // From its only key frame on the sound that was passed is read once more.
    QTest::newRow("webm") << QStringList{u"-c:v"_s,     u"libvpx"_s, u"-deadline"_s,
                                         u"realtime"_s, u"-g"_s,     u"250"_s};
    QTest::newRow("mp4") << h264;
    QTest::newRow("ts") << h264;
    QTest::newRow("ogg") << QStringList{u"-c:v"_s, u"libtheora"_s, u"-c:a"_s, u"libvorbis"_s};
}

// As when somebody left it there.
void EmptyStreamsTest::goesOnBehindTheEndOfTheSound()
{
    QFETCH(QStringList, codecs);
    const QString name = u"short."_s + QString::fromUtf8(QTest::currentDataTag());
    QCOMPARE(shortSound(path(name), codecs), QString());
    Playback playback(address(name), 3);
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QCOMPARE(playback.events.join(u' '), u"playing end"_s);
    QVERIFY2(playback.frames >= 15 && playback.frames <= 60,
             qPrintable(playback.story())); // of a hundred
}

// Somebody searches back from behind the end of the sound: what a decoder complains of there is no emptiness.
void EmptyStreamsTest::aSearchBackTellsThatThereIsSoundAgain()
{
    QCOMPARE(shortSound(path(u"back.mkv"_s),
                        {u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-g"_s, u"25"_s, u"-c:a"_s,
                         u"libvorbis"_s}),
             QString());
    gst_init(nullptr, nullptr);
    const Element player = make("playbin3");
    const QByteArray uri = address(u"back.mkv"_s).toUtf8();
    g_object_set(player.get(), "uri", uri.constData(), "video-sink", make("fakesink").release(), "audio-sink",
                 make("fakesink").release(), nullptr);
    bridgeEmptyStreams(player.get());
    const Element decoder = make("vorbisdec");
    GstMessage *complaint = gst_message_new_error(
        GST_OBJECT(decoder.get()), g_error_new_literal(GST_STREAM_ERROR, GST_STREAM_ERROR_DECODE, ""), "");
    PlaybackFaults faults;
    gst_element_set_state(player.get(), GST_STATE_PAUSED);
    QVERIFY(waitFor(player.get(), &faults,
                    [](GstMessage *message) { return GST_MESSAGE_TYPE(message) == GST_MESSAGE_ASYNC_DONE; }));
    QVERIFY(!faults.isOfNoMatter(complaint));
    QVERIFY(seek(player.get(), 3 * GST_SECOND));
    QVERIFY(waitFor(player.get(), &faults, tellsEmptySound));
    QVERIFY(faults.isOfNoMatter(complaint));
    QVERIFY(seek(player.get(), 0));
    QVERIFY(waitFor(player.get(), &faults, tellsBegunSound));
    QVERIFY(!faults.isOfNoMatter(complaint));
    gst_message_unref(complaint);
    gst_element_set_state(player.get(), GST_STATE_NULL);
}

void EmptyStreamsTest::playsWithASoundThatIsOnlyAnnounced_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("tenths");
    // Its sound comes half a second behind the pictures, and is cut off with the rest.
    QTest::newRow("ts") << QStringList{u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s,
                                       u"-g"_s,   u"10"_s,      u"-c:a"_s,    u"aac"_s}
                        << 2;
    // Its first page of sound is a whole second, and is cut off in the middle.
    QTest::newRow("ogg") << QStringList{u"-c:v"_s, u"libtheora"_s, u"-c:a"_s, u"libvorbis"_s} << 8;
}

void EmptyStreamsTest::playsWithASoundThatIsOnlyAnnounced()
{
    QFETCH(QStringList, options);
    QFETCH(int, tenths);
    const QString suffix = QString::fromUtf8(QTest::currentDataTag());
    TestClips::Clip clip;
    clip.width = 160;
    clip.height = 120;
    clip.seconds = 1;
    clip.options = options;
    QCOMPARE(TestClips::make(path(u"whole."_s + suffix), clip), QString());
    QVERIFY(cut(u"announced."_s + suffix, u"whole."_s + suffix, tenths));
    Playback playback(address(u"announced."_s + suffix));
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QCOMPARE(playback.events.join(u' '), u"playing end"_s);
    QVERIFY2(playback.frames > 0, qPrintable(playback.story()));
}

// Everything is described, and the first picture cut off.
void EmptyStreamsTest::givesUpSoonWithoutAPicture()
{
    TestClips::Clip clip;
    clip.seconds = 1;
    clip.options = {u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-movflags"_s, u"faststart"_s};
    QCOMPARE(TestClips::make(path(u"whole.mp4"_s), clip), QString());
    QVERIFY(cut(u"described.mp4"_s, u"whole.mp4"_s, 1));
    Playback playback(address(u"described.mp4"_s));
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QCOMPARE(playback.events.join(u' '), u"error308"_s);
    QVERIFY2(playback.overAfter < Soon, qPrintable(playback.story()));
}

QTEST_MAIN(EmptyStreamsTest)
#include "media_emptystreams.moc"
