// SPDX-License-Identifier: GPL-3.0-or-later
// What a worker tells of the streams of a file one by one.
#include "common/mediaworkerpool.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using Status = MediaReply::Status;

namespace {

// A film in two languages with subtitles in two others and one that does not tell its own.
QString makeFilm(const QString &folder, const QString &name, const QString &subtitles)
{
    QFile text(folder + u"/cue.srt"_s);
    if (!text.open(QIODevice::WriteOnly))
        return text.errorString();
    text.write("1\n00:00:00,100 --> 00:00:01,500\nA cue.\n");
    text.close();
    QProcess encoder;
    const QString options
        = u"-nostdin -loglevel error -y -f lavfi -i testsrc2=size=320x180:rate=30000/1001:duration=2 "
          "-f lavfi -i sine=frequency=330:duration=2 -i cue.srt -map 0:v -map 1:a -map 1:a -map 2 -map 2 "
          "-map 2 "
          "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a:0 aac -c:a:1 ac3 "
          "-metadata:s:a:0 language=eng -metadata:s:a:1 language=fin "
          "-metadata:s:s:0 language=ger -metadata:s:s:1 language=fre -c:s "_s;
    encoder.setWorkingDirectory(folder);
    encoder.start(u"ffmpeg"_s, (options + subtitles + u' ' + name).split(u' '));
    if (!encoder.waitForFinished(60000) || encoder.exitCode() != 0)
        return QString::fromLocal8Bit(encoder.readAllStandardError());
    return {};
}

} // namespace

class WorkerStreamsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KESTREL_MEDIA_WORKER_PROGRAM", KESTREL_BIN_DIR "/kestrel-media-worker");
        QVERIFY(m_folder.isValid());
    }

    // A person wants to know in which languages a film can be heard and read.
    void tellsWhatAFilmHolds_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("subtitles");
        QTest::newRow("mkv") << u"film.mkv"_s << u"srt"_s;
        QTest::newRow("mkv, styled") << u"styled.mkv"_s << u"ass"_s;
        QTest::newRow("mp4") << u"film.mp4"_s << u"mov_text"_s;
    }
    void tellsWhatAFilmHolds()
    {
        QFETCH(QString, name);
        QFETCH(QString, subtitles);
        QCOMPARE(makeFilm(m_folder.path(), name, subtitles), QString());
        MediaRequest request;
        request.path = m_folder.filePath(name);
        request.wantStreams = true;
        const MediaReply reply = answerTo(request);
        QCOMPARE(int(reply.status), int(Status::Ok));
        QCOMPARE(QSize(reply.width, reply.height), QSize(320, 180));
        QVERIFY2(qAbs(reply.frameRateMilli - 29970) <= 1,
                 QByteArray::number(reply.frameRateMilli).constData());
        QCOMPARE(reply.videoCodec, u"H.264"_s);
        QCOMPARE(reply.audioCodecs, QStringList({u"AAC"_s, u"AC-3"_s}));
        QCOMPARE(reply.audioTracks, 2);
        QCOMPARE(reply.audioLanguages.size(), 2);
        QVERIFY2(reply.audioLanguages.first().startsWith(u"en"_s), qPrintable(reply.audioLanguages.first()));
        QCOMPARE(reply.subtitleTracks, 3);
        QCOMPARE(reply.subtitleLanguages.size(), 2);
        const qint64 expected = QFileInfo(request.path).size() * 8000 / reply.durationMs;
        QVERIFY(qAbs(reply.bitRate - expected) < expected / 100);
    }

    // A scan does not wait for what it does not store.
    void tellsStreamsOnlyWhenAsked()
    {
        QCOMPARE(makeFilm(m_folder.path(), u"asked.mkv"_s, u"srt"_s), QString());
        MediaRequest request;
        request.path = m_folder.filePath(u"asked.mkv"_s);
        const MediaReply reply = answerTo(request);
        QCOMPARE(int(reply.status), int(Status::Ok));
        QCOMPARE(reply.width, 320);
        QCOMPARE(reply.videoCodec, QString());
        QCOMPARE(reply.audioTracks, 0);
    }

private:
    static MediaReply answerTo(const MediaRequest &request)
    {
        MediaWorkerPool pool{MediaWorkerPool::Limits{}};
        MediaReply answer;
        answer.status = Status::Cancelled;
        QSignalSpy finished(&pool, &MediaWorkerPool::finished);
        connect(&pool, &MediaWorkerPool::finished, [&](int, const MediaReply &reply) { answer = reply; });
        static_cast<void>(pool.submit(request));
        static_cast<void>(finished.wait(30000));
        return answer;
    }
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(WorkerStreamsTest)
#include "worker_streams_test.moc"
