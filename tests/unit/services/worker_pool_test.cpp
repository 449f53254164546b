// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/mediaworkerpool.h"

#include "../../support/testclips.h"

#include <QColor>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QHash>
#include <QTimeZone>
#include <QtTest>

#include <sys/stat.h>

using namespace Qt::Literals::StringLiterals;
using Status = MediaReply::Status;

Q_DECLARE_METATYPE(TestClips::Clip)

namespace {

constexpr int WaitMs = 30000;

// The pool's answers, by request.
class Answers : public QObject
{
public:
    explicit Answers(MediaWorkerPool &pool)
    {
        connect(&pool, &MediaWorkerPool::finished, this, [this](int id, const MediaReply &reply) {
            QVERIFY2(!replies.contains(id), "answered twice");
            replies.insert(id, reply);
            order.append(id);
        });
    }

    QHash<int, MediaReply> replies;
    QList<int> order;
};

MediaReply ask(MediaWorkerPool &pool, const MediaRequest &request)
{
    Answers answers(pool);
    const int id = pool.submit(request);
    if (!QTest::qWaitFor([&] { return answers.replies.contains(id); }, WaitMs)) {
        MediaReply none;
        none.status = Status::Cancelled;
        none.error = u"no answer at all"_s;
        return none;
    }
    return answers.replies.value(id);
}

MediaRequest frameRequest(const QString &path, QSize size = {})
{
    MediaRequest request;
    request.path = path;
    request.wantFrame = true;
    request.frameSize = size;
    return request;
}

int brightnessOf(const QImage &image)
{
    return qGray(image.scaled(1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).pixel(0, 0));
}

// What people call what an encoder writes.
const QHash<QString, QString> &codecNames()
{
    static const QHash<QString, QString> names{
        {u"libx264"_s, u"H.264"_s},     {u"libx265"_s, u"H.265"_s},     {u"mpeg4"_s, u"MPEG-4"_s},
        {u"h263"_s, u"H.263"_s},        {u"libvpx"_s, u"VP8"_s},        {u"libvpx-vp9"_s, u"VP9"_s},
        {u"mjpeg"_s, u"Motion JPEG"_s}, {u"mpeg2video"_s, u"MPEG-2"_s}, {u"libtheora"_s, u"Theora"_s},
        {u"flv"_s, u"Sorenson"_s},      {u"wmv2"_s, u"WMV"_s}};
    return names;
}

} // namespace

class WorkerPoolTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KESTREL_MEDIA_WORKER_PROGRAM", KESTREL_BIN_DIR "/kestrel-media-worker");
        QVERIFY(m_folder.isValid());
    }

    void init() { m_pool = std::make_unique<MediaWorkerPool>(MediaWorkerPool::Limits{}); }
    void cleanup() { m_pool.reset(); }

    // Every container that is claimed gives its length, its streams and a picture.
    void readsEveryClaimedContainer_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("mimeType");
        QTest::newRow("mp4 h264") << u"a.mp4"_s << QStringList{u"-c:v"_s, u"libx264"_s} << u"video/mp4"_s;
        QTest::newRow("mp4 h265") << u"b.mp4"_s
                                  << QStringList{u"-c:v"_s, u"libx265"_s, u"-x265-params"_s,
                                                 u"log-level=none"_s}
                                  << u"video/mp4"_s;
        QTest::newRow("mov mpeg4") << u"c.mov"_s << QStringList{u"-c:v"_s, u"mpeg4"_s}
                                   << u"video/quicktime"_s;
        QTest::newRow("3gp h263") << u"d.3gp"_s
                                  << QStringList{u"-c:v"_s, u"h263"_s, u"-s"_s, u"176x144"_s, u"-an"_s}
                                  << u"video/3gpp"_s;
        QTest::newRow("mkv h264") << u"e.mkv"_s << QStringList{u"-c:v"_s, u"libx264"_s}
                                  << u"video/x-matroska"_s;
        QTest::newRow("webm vp8") << u"f.webm"_s
                                  << QStringList{u"-c:v"_s, u"libvpx"_s, u"-deadline"_s, u"realtime"_s}
                                  << u"video/webm"_s;
        QTest::newRow("webm vp9") << u"g.webm"_s
                                  << QStringList{u"-c:v"_s,     u"libvpx-vp9"_s, u"-deadline"_s,
                                                 u"realtime"_s, u"-cpu-used"_s,  u"8"_s}
                                  << u"video/webm"_s;
        QTest::newRow("avi mpeg4") << u"h.avi"_s << QStringList{u"-c:v"_s, u"mpeg4"_s}
                                   << u"video/x-msvideo"_s;
        QTest::newRow("avi mjpeg") << u"i.avi"_s
                                   << QStringList{u"-c:v"_s, u"mjpeg"_s, u"-pix_fmt"_s, u"yuvj420p"_s}
                                   << u"video/x-msvideo"_s;
        QTest::newRow("ts h264") << u"j.ts"_s << QStringList{u"-c:v"_s, u"libx264"_s} << u"video/mp2t"_s;
        QTest::newRow("ts mpeg2") << u"k.ts"_s << QStringList{u"-c:v"_s, u"mpeg2video"_s} << u"video/mp2t"_s;
        QTest::newRow("ps mpeg2") << u"l.mpg"_s << QStringList{u"-c:v"_s, u"mpeg2video"_s, u"-f"_s, u"vob"_s}
                                  << u"video/mpeg"_s;
        QTest::newRow("ogv theora") << u"m.ogv"_s
                                    << QStringList{u"-c:v"_s, u"libtheora"_s, u"-c:a"_s, u"libvorbis"_s}
                                    << u"video/ogg"_s;
        QTest::newRow("flv h264") << u"n.flv"_s << QStringList{u"-c:v"_s, u"libx264"_s, u"-ar"_s, u"44100"_s}
                                  << u"video/x-flv"_s;
        QTest::newRow("flv sorenson")
            << u"o.flv"_s << QStringList{u"-c:v"_s, u"flv"_s, u"-ar"_s, u"44100"_s} << u"video/x-flv"_s;
        QTest::newRow("wmv") << u"p.wmv"_s << QStringList{u"-c:v"_s, u"wmv2"_s} << u"video/x-ms-asf"_s;
    }
    void readsEveryClaimedContainer()
    {
        QFETCH(QString, name);
        QFETCH(QStringList, options);
        QFETCH(QString, mimeType);
        const QString path = m_folder.filePath(name);
        const bool sound = !options.contains(u"-an"_s);
        QCOMPARE(TestClips::make(path, {.sound = sound, .options = options}), QString());

        MediaRequest request = frameRequest(path);
        request.wantStreams = true;
        const MediaReply reply = ask(*m_pool, request);
        QCOMPARE(reply.error, QString());
        QCOMPARE(int(reply.status), int(Status::Ok));
        QVERIFY2(qAbs(reply.durationMs - 2000) <= 250, QByteArray::number(reply.durationMs).constData());
        QCOMPARE(reply.mimeType, mimeType);
        QCOMPARE(reply.hasVideo, true);
        QCOMPARE(reply.hasAudio, sound);
        QCOMPARE(reply.videoCodec, codecNames().value(options.at(1)));
        QCOMPARE(reply.audioTracks, sound ? 1 : 0);
        QCOMPARE(reply.subtitleTracks, 0);
        QVERIFY(reply.bitRate > 0);
        const QSize expected = options.contains(u"176x144"_s) ? QSize(256, 144) : QSize(320, 180);
        QVERIFY2(qAbs(reply.width - expected.width()) <= 1 && qAbs(reply.height - expected.height()) <= 1,
                 qPrintable(u"%1 x %2"_s.arg(reply.width).arg(reply.height)));
        QCOMPARE(reply.frame.size(), QSize(reply.width, reply.height));
        // The test card is colourful: neither black nor one colour.
        QVERIFY(brightnessOf(reply.frame) > 40);
        QVERIFY(reply.frame.pixelColor(20, 20)
                != reply.frame.pixelColor(reply.width - 20, reply.height - 20));
    }

    void tellsWhatTheFileSaysAboutItself()
    {
        const QString path = m_folder.filePath(u"tags.mp4"_s);
        QCOMPARE(TestClips::make(
                     path,
                     {.options
                      = {u"-metadata"_s, u"title=Der Flug – „Süd“"_s, u"-metadata"_s, u"show=Vögel"_s,
                         u"-metadata"_s, u"season_number=3"_s, u"-metadata"_s, u"episode_sort=7"_s,
                         u"-metadata"_s, u"description=A kestrel\nhovers."_s, u"-metadata"_s,
                         u"creation_time=2023-04-05T06:07:08Z"_s, u"-movflags"_s, u"use_metadata_tags"_s}}),
                 QString());
        const QString plain = m_folder.filePath(u"itunes.mp4"_s);
        QCOMPARE(TestClips::make(
                     plain,
                     {.options = {u"-metadata"_s, u"title=Der Flug – „Süd“"_s, u"-metadata"_s,
                                  u"show=Vögel"_s, u"-metadata"_s, u"season_number=3"_s, u"-metadata"_s,
                                  u"episode_sort=7"_s, u"-metadata"_s, u"description=A kestrel\nhovers."_s}}),
                 QString());
        MediaRequest request;
        request.path = plain;
        const MediaReply reply = ask(*m_pool, request);
        QCOMPARE(reply.title, u"Der Flug – „Süd“"_s);
        QCOMPARE(reply.showName, u"Vögel"_s);
        QCOMPARE(reply.season, 3);
        QCOMPARE(reply.episode, 7);
        QCOMPARE(reply.synopsis, u"A kestrel hovers."_s);
        QVERIFY(reply.frame.isNull());
    }

    void tellsTheCameraAndTheDate()
    {
        const QString path = m_folder.filePath(u"camera.mov"_s);
        QCOMPARE(TestClips::make(path,
                                 {.options = {u"-metadata"_s, u"make=Harrow Optics"_s, u"-metadata"_s,
                                              u"model=Q5 \"pro\""_s, u"-metadata"_s,
                                              u"creation_time=2023-04-05T06:07:08Z"_s}}),
                 QString());
        MediaRequest request;
        request.path = path;
        const MediaReply reply = ask(*m_pool, request);
        QCOMPARE(reply.cameraMake, u"Harrow Optics"_s);
        QCOMPARE(reply.cameraModel, u"Q5 \"pro\""_s);
        QCOMPARE(reply.created, QDateTime(QDate(2023, 4, 5), QTime(6, 7, 8), QTimeZone::utc()));
    }

    // A phone held upright writes sideways pictures and says so.
    void turnsPicturesUpright()
    {
        const QString flat = m_folder.filePath(u"flat.mp4"_s);
        QCOMPARE(TestClips::make(flat, {.source = u"color=c=red"_s}), QString());
        const QString upright = m_folder.filePath(u"upright.mp4"_s);
        QProcess ffmpeg;
        ffmpeg.start(u"ffmpeg"_s,
                     {u"-v"_s, u"error"_s, u"-y"_s, u"-i"_s, flat, u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s,
                      u"rotate=90"_s, upright});
        QVERIFY(ffmpeg.waitForFinished(30000));
        const MediaReply reply = ask(*m_pool, frameRequest(upright, QSize(90, 90)));
        QCOMPARE(QSize(reply.width, reply.height), QSize(180, 320));
        QCOMPARE(reply.frame.size(), QSize(90, 160));
    }

    void appliesThePixelAspect()
    {
        const QString path = m_folder.filePath(u"wide.mp4"_s);
        QCOMPARE(TestClips::make(path, {.width = 160, .height = 120, .options = {u"-vf"_s, u"setsar=2/1"_s}}),
                 QString());
        const MediaReply reply = ask(*m_pool, frameRequest(path));
        QCOMPARE(QSize(reply.width, reply.height), QSize(320, 120));
        QCOMPARE(reply.frame.size(), QSize(320, 120));
    }

    void coversTheAskedSizeAndNeverEnlarges()
    {
        const QString path = m_folder.filePath(u"cover.mp4"_s);
        QCOMPARE(TestClips::make(path, {.width = 640, .height = 360, .sound = false}), QString());
        QCOMPARE(ask(*m_pool, frameRequest(path, QSize(100, 100))).frame.size(), QSize(178, 100));
        QCOMPARE(ask(*m_pool, frameRequest(path, QSize(4000, 4000))).frame.size(), QSize(640, 360));
    }

    // Shrinking by whole numbers first, by squares that the edges cut and colour planes that are nearly
    // nothing.
    void shrinksEveryShape_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("cover");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("a third") << QSize(962, 542) << QSize(300, 10) << QSize(300, 170);
        QTest::newRow("a sliver") << QSize(640, 4) << QSize(10, 1) << QSize(160, 1);
        QTest::newRow("a dot") << QSize(64, 64) << QSize(1, 1) << QSize(1, 1);
    }
    void shrinksEveryShape()
    {
        QFETCH(QSize, size);
        QFETCH(QSize, cover);
        const QString path = m_folder.filePath(u"shape.mp4"_s);
        QCOMPARE(
            TestClips::make(
                path,
                {.width = size.width(), .height = size.height(), .source = u"color=c=red"_s, .sound = false}),
            QString());
        const QImage frame = ask(*m_pool, frameRequest(path, cover)).frame;
        QTEST(frame.size(), "expected");
        // Red at every corner: neither the planes nor their edges are mixed up.
        for (const QPoint corner : {QPoint(0, 0), QPoint(frame.width() - 1, frame.height() - 1)}) {
            const QColor colour = frame.pixelColor(corner);
            QVERIFY2(colour.red() > 220 && colour.green() < 30 && colour.blue() < 30,
                     qPrintable(colour.name()));
        }
    }

    // The first seconds are black, with a key picture only at the start: the picture is taken behind the
    // fade.
    void skipsABlackLeadIn()
    {
        const QString path = m_folder.filePath(u"fade.mp4"_s);
        QCOMPARE(
            TestClips::make(
                path, {.seconds = 4, .options = {u"-vf"_s, u"fade=in:st=1:d=1"_s, u"-c:v"_s, u"libx264"_s}}),
            QString());
        const MediaReply reply = ask(*m_pool, frameRequest(path));
        QVERIFY2(brightnessOf(reply.frame) >= 16, QByteArray::number(brightnessOf(reply.frame)).constData());
        const QString keys = m_folder.filePath(u"fade-keys.mp4"_s);
        QCOMPARE(TestClips::make(
                     keys, {.seconds = 4, .options = {u"-vf"_s, u"fade=in:st=1:d=1"_s, u"-g"_s, u"25"_s}}),
                 QString());
        QVERIFY(brightnessOf(ask(*m_pool, frameRequest(keys)).frame) > 40);
    }

    void blackVideoStillGivesAPicture()
    {
        const QString path = m_folder.filePath(u"black.mp4"_s);
        QCOMPARE(TestClips::make(path, {.source = u"color=c=black"_s}), QString());
        const MediaReply reply = ask(*m_pool, frameRequest(path));
        QCOMPARE(int(reply.status), int(Status::Ok));
        QCOMPARE(reply.frame.size(), QSize(320, 180));
    }

    // A recording that was streamed into its file does not say how long it is.
    void findsTheLengthOfALiveRecording()
    {
        const QString path = m_folder.filePath(u"live.webm"_s);
        QCOMPARE(TestClips::make(path,
                                 {.sound = false,
                                  .options = {u"-c:v"_s, u"libvpx"_s, u"-deadline"_s, u"realtime"_s, u"-f"_s,
                                              u"webm"_s, u"-live"_s, u"1"_s}}),
                 QString());
        const MediaReply reply = ask(*m_pool, frameRequest(path));
        QVERIFY2(qAbs(reply.durationMs - 2000) < 200, QByteArray::number(reply.durationMs).constData());
        QVERIFY(!reply.frame.isNull());
    }

    void soundAloneHasNoPicture()
    {
        const QString path = m_folder.filePath(u"sound.mp4"_s);
        QCOMPARE(TestClips::make(path, {.source = {}}), QString());
        const MediaReply reply = ask(*m_pool, frameRequest(path));
        QCOMPARE(int(reply.status), int(Status::NoPicture));
        QCOMPARE(reply.hasVideo, false);
        QCOMPARE(reply.hasAudio, true);
        QVERIFY(qAbs(reply.durationMs - 2000) < 200);
        MediaRequest metadata;
        metadata.path = path;
        QCOMPARE(int(ask(*m_pool, metadata).status), int(Status::Ok));
    }

    void whatIsNoVideoIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("Dear diary,\n").repeated(500);
        QTest::newRow("zeros") << QByteArray(100000, '\0');
        QTest::newRow("picture") << QByteArray::fromBase64("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAAD"
                                                           "UlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==");
        QTest::newRow("playlist") << QByteArray(
            "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nhttp://localhost/x.ts\n");
        QTest::newRow("head only") << QByteArray("\0\0\0\x18"
                                                 "ftypmp42\0\0\0\0mp42isom",
                                                 24);
    }
    void whatIsNoVideoIsRefused()
    {
        QFETCH(QByteArray, bytes);
        QFile file(m_folder.filePath(u"no-video.mp4"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        const MediaReply reply = ask(*m_pool, frameRequest(file.fileName()));
        QCOMPARE(int(reply.status), int(Status::NotMedia));
        QVERIFY(!reply.error.isEmpty());
    }

    void whatCannotBeOpenedIsUnreadable()
    {
        const QString fifo = m_folder.filePath(u"pipe.mp4"_s);
        QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        for (const QString &path : {m_folder.filePath(u"missing.mp4"_s), m_folder.path(), fifo,
                                    u"/dev/zero"_s, QString(), u"/nul\0l.mp4"_s}) {
            const MediaReply reply = ask(*m_pool, frameRequest(path));
            QCOMPARE(int(reply.status), int(Status::Unreadable));
            QVERIFY(!reply.error.isEmpty());
        }
    }

    void waitingRequestsGoInOrderAndUrgentOnesFirst()
    {
        MediaWorkerPool pool({.workers = 1});
        const QString path = m_folder.filePath(u"order.mp4"_s);
        QCOMPARE(TestClips::make(path, {}), QString());
        Answers answers(pool);
        MediaRequest request;
        request.path = path;
        QList<int> plain;
        for (int i = 0; i < 4; ++i)
            plain.append(pool.submit(request));
        const int urgent = pool.submit(request, true);
        const int cancelled = pool.submit(request);
        pool.cancel(cancelled);
        QCOMPARE(pool.pending(), 6);
        QTRY_COMPARE_WITH_TIMEOUT(answers.order.size(), 6, WaitMs);
        QCOMPARE(pool.pending(), 0);
        QCOMPARE(answers.order.mid(0, 2), (QList<int>{cancelled, urgent}));
        QCOMPARE(answers.order.mid(2), plain);
        QCOMPARE(int(answers.replies.value(cancelled).status), int(Status::Cancelled));
    }

    void workersAreReplacedAfterTheirShareOfFiles()
    {
        MediaWorkerPool pool({.workers = 1, .filesPerWorker = 2});
        const QString path = m_folder.filePath(u"share.mp4"_s);
        QCOMPARE(TestClips::make(path, {}), QString());
        for (int i = 0; i < 5; ++i)
            QCOMPARE(int(ask(pool, frameRequest(path)).status), int(Status::Ok));
    }

    void idleWorkersEnd()
    {
        MediaWorkerPool pool({.workers = 2, .idleMs = 100});
        pool.prestart(2);
        QTRY_COMPARE_WITH_TIMEOUT(pool.findChildren<QProcess *>().size(), 2, WaitMs);
        QTRY_COMPARE_WITH_TIMEOUT(pool.findChildren<QProcess *>().size(), 0, WaitMs);
        // And come back.
        const QString path = m_folder.filePath(u"again.mp4"_s);
        QCOMPARE(TestClips::make(path, {}), QString());
        QCOMPARE(int(ask(pool, frameRequest(path)).status), int(Status::Ok));
    }

    void theJailIsToldAndBothKindsWork_data()
    {
        QTest::addColumn<bool>("bubblewrap");
        QTest::newRow("bubblewrap where it runs") << true;
        QTest::newRow("by itself") << false;
    }
    void theJailIsToldAndBothKindsWork()
    {
        QFETCH(bool, bubblewrap);
        if (!bubblewrap)
            qputenv("KESTREL_NO_BUBBLEWRAP", "1");
        MediaWorkerPool pool({});
        qunsetenv("KESTREL_NO_BUBBLEWRAP");
        const QString path = m_folder.filePath(u"jail.mp4"_s);
        QCOMPARE(TestClips::make(path, {}), QString());
        QCOMPARE(int(ask(pool, frameRequest(path)).status), int(Status::Ok));
        const QStringList possible = bubblewrap
            ? QStringList{u"bubblewrap"_s, u"landlock+seccomp"_s, u"seccomp"_s}
            : QStringList{u"landlock+seccomp"_s, u"seccomp"_s};
        QVERIFY2(possible.contains(pool.jail()), qPrintable(pool.jail()));
    }

    // Several workers are started at once; that all of them fail in bubblewrap says one thing, and costs no
    // file.
    void bubblewrapThatCannotRun()
    {
        const QString program = m_folder.filePath(u"bwrap"_s);
        QFile script(program);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nexit 1\n");
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(m_folder.path()) + ':' + path);
        MediaWorkerPool::Limits limits;
        limits.workers = 4;
        MediaWorkerPool pool(limits);
        qputenv("PATH", path);
        const QString clip = m_folder.filePath(u"many.mp4"_s);
        QCOMPARE(TestClips::make(clip, {}), QString());
        QSignalSpy finished(&pool, &MediaWorkerPool::finished);
        for (int i = 0; i < 8; ++i)
            pool.submit(frameRequest(clip));
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 8, 30000);
        for (const QList<QVariant> &answer : finished)
            QCOMPARE(answer.at(1).value<MediaReply>().status, Status::Ok);
        QVERIFY2(pool.jail().endsWith(u"seccomp"_s), qPrintable(pool.jail()));
    }

    // That no worker can be started is no fault of the file, and is not remembered as one.
    void aWorkerThatIsNotThere()
    {
        qputenv("KESTREL_MEDIA_WORKER_PROGRAM", "/nonexistent/worker");
        MediaWorkerPool pool({});
        qputenv("KESTREL_MEDIA_WORKER_PROGRAM", KESTREL_BIN_DIR "/kestrel-media-worker");
        const QString clip = m_folder.filePath(u"alone.mp4"_s);
        QCOMPARE(TestClips::make(clip, {}), QString());
        QCOMPARE(int(ask(pool, frameRequest(clip)).status), int(Status::Unreadable));
    }

    // Hundreds of damaged files: every one is answered, and the pool goes on.
    void damagedFilesEndNothing()
    {
        const QString sound = m_folder.filePath(u"whole.mkv"_s);
        const QString whole = m_folder.filePath(u"whole.mp4"_s);
        QCOMPARE(TestClips::make(whole, {.seconds = 1}), QString());
        QCOMPARE(TestClips::make(sound, {.seconds = 1}), QString());
        MediaWorkerPool pool({.wallMs = 5000});
        Answers answers(pool);
        quint32 seed = 42;
        const auto next = [&seed](quint32 below) {
            seed = seed * 1664525u + 1013904223u;
            return (seed >> 8) % below;
        };
        constexpr int Count = 120;
        for (int i = 0; i < Count; ++i) {
            QFile original(i % 2 ? whole : sound);
            QVERIFY(original.open(QIODevice::ReadOnly));
            QByteArray bytes = original.readAll();
            if (i % 5 == 0)
                bytes.truncate(next(static_cast<quint32>(bytes.size())));
            for (int change = 0; change < 1 + i && !bytes.isEmpty(); ++change)
                bytes[next(static_cast<quint32>(bytes.size()))] = static_cast<char>(next(256));
            QFile damaged(m_folder.filePath(u"damaged-%1"_s.arg(i)));
            QVERIFY(damaged.open(QIODevice::WriteOnly));
            damaged.write(bytes);
            damaged.close();
            pool.submit(frameRequest(damaged.fileName(), QSize(160, 90)));
        }
        QTRY_COMPARE_WITH_TIMEOUT(answers.order.size(), Count, 120000);
        QCOMPARE(int(ask(pool, frameRequest(whole)).status), int(Status::Ok));
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<MediaWorkerPool> m_pool;
};

QTEST_GUILESS_MAIN(WorkerPoolTest)
#include "worker_pool_test.moc"
