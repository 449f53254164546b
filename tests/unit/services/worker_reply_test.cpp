// SPDX-License-Identifier: GPL-3.0-or-later
// A worker that a file has taken over may answer anything.
#include "common/workerreplyparser.h"

#include <QTimeZone>
#include <QtTest>

#include <cstring>

using namespace Qt::Literals::StringLiterals;
using namespace WorkerProtocol;
using State = WorkerReplyParser::State;

namespace {

QByteArray field(Field field, const QByteArray &value)
{
    const FieldHeader header{static_cast<std::uint16_t>(field), static_cast<std::uint16_t>(value.size())};
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + value;
}

QByteArray number(qint64 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

QByteArray reply(const QByteArray &fields, quint32 width = 0, quint32 height = 0, quint32 status = Ok)
{
    Reply header;
    header.status = status;
    header.metadataBytes = static_cast<std::uint32_t>(fields.size());
    header.frameWidth = width;
    header.frameHeight = height;
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + fields;
}

MediaRequest request(bool frame)
{
    MediaRequest request;
    request.wantFrame = frame;
    return request;
}

} // namespace

class WorkerReplyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsEveryFieldInPiecesOfOneByte()
    {
        const QByteArray bytes
            = reply(field(Field::DurationMs, number(61000)) + field(Field::Streams, number(3))
                    + field(Field::Width, number(1920)) + field(Field::Height, number(1080))
                    + field(Field::MimeType, "video/mp4") + field(Field::Title, "Zürich\nby \x01night ")
                    + field(Field::Season, number(2)) + field(Field::CreatedMs, number(0)));
        WorkerReplyParser parser(request(false));
        for (qsizetype i = 0; i + 1 < bytes.size(); ++i)
            QVERIFY(parser.feed(bytes.mid(i, 1)) == State::Incomplete);
        QVERIFY(parser.feed(bytes.last(1)) == State::Complete);
        const MediaReply found = parser.takeReply();
        QCOMPARE(found.durationMs, 61000);
        QCOMPARE(found.hasVideo && found.hasAudio, true);
        QCOMPARE(QSize(found.width, found.height), QSize(1920, 1080));
        QCOMPARE(found.title, u"Zürich by night"_s);
        QCOMPARE(found.season, 2);
        QCOMPARE(found.episode, -1);
        QCOMPARE(found.created, QDateTime::fromMSecsSinceEpoch(0, QTimeZone::utc()));
    }

    void readsWhatTheStreamsAre()
    {
        WorkerReplyParser parser(request(false));
        QVERIFY(parser.feed(
                    reply(field(Field::FrameRateMilli, number(29970)) + field(Field::BitRate, number(8000000))
                          + field(Field::VideoCodec, "H.264") + field(Field::AudioCodecs, "AAC,AC-3")
                          + field(Field::AudioTracks, number(2)) + field(Field::AudioLanguages, "en,,fi")
                          + field(Field::SubtitleTracks, number(1)) + field(Field::SubtitleLanguages, "")))
                == State::Complete);
        const MediaReply found = parser.takeReply();
        QCOMPARE(found.frameRateMilli, 29970);
        QCOMPARE(found.bitRate, 8000000);
        QCOMPARE(found.videoCodec, u"H.264"_s);
        QCOMPARE(found.audioCodecs, QStringList({u"AAC"_s, u"AC-3"_s}));
        QCOMPARE(found.audioTracks, 2);
        QCOMPARE(found.audioLanguages, QStringList({u"en"_s, u"fi"_s}));
        QCOMPARE(found.subtitleTracks, 1);
        QCOMPARE(found.subtitleLanguages, QStringList());
    }

    void readsAFrameAlsoBehindAnOddNumberOfBytes()
    {
        for (const QByteArray &title : {QByteArray("odd"), QByteArray("even")}) {
            QByteArray pixels(2 * 1 * 4, '\0');
            pixels[0] = '\xff'; // blue
            pixels[6] = '\xff'; // red
            WorkerReplyParser parser(request(true));
            QVERIFY(parser.feed(reply(field(Field::Title, title), 2, 1) + pixels) == State::Complete);
            const MediaReply found = parser.takeReply();
            QCOMPARE(found.frame.size(), QSize(2, 1));
            QCOMPARE(found.frame.pixelColor(0, 0), QColor(Qt::blue));
            QCOMPARE(found.frame.pixelColor(1, 0), QColor(Qt::red));
        }
    }

    void refusesWhatIsMalformed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("frame");
        const auto row = [](const char *name, const QByteArray &bytes, bool frame = false) {
            QTest::newRow(name) << bytes << frame;
        };
        QByteArray wrongMagic = reply({});
        wrongMagic[0] = 'x';
        row("magic", wrongMagic);
        row("status", reply({}, 0, 0, 99));
        row("frame that nobody asked for", reply({}, 2, 2));
        row("no frame though asked for", reply({}), true);
        row("frame of a failure", reply({}, 2, 2, NotMedia), true);
        row("frame without height", reply({}, 2, 0), true);
        row("frame too wide", reply({}, MaximumSide + 1, 1), true);
        row("frame too large", reply({}, MaximumSide, MaximumSide), true);
        row("frame whose size overflows", reply({}, 0xffffffff, 0xffffffff), true);
        Reply large;
        large.metadataBytes = MaximumMetadataBytes + 1;
        row("metadata too large", QByteArray(reinterpret_cast<const char *>(&large), sizeof large));
        row("unknown field", reply(field(Field(200), "x")));
        row("field 0", reply(field(Field(0), "x")));
        row("field twice", reply(field(Field::Title, "a") + field(Field::Title, "b")));
        row("field cut short", reply(field(Field::Title, "abc").chopped(1)));
        row("field header cut short", reply(QByteArray(3, '\1')));
        row("number of wrong size", reply(field(Field::DurationMs, "1234")));
        row("negative duration", reply(field(Field::DurationMs, number(-1))));
        row("endless duration", reply(field(Field::DurationMs, number(std::numeric_limits<qint64>::max()))));
        row("season out of range", reply(field(Field::Season, number(70000))));
        row("width out of range", reply(field(Field::Width, number(qint64(1) << 40))));
        row("date out of range", reply(field(Field::CreatedMs, number(std::numeric_limits<qint64>::max()))));
        row("pictures beyond counting",
            reply(field(Field::FrameRateMilli, number(MaximumFrameRateMilli + 1))));
        row("bits beyond counting", reply(field(Field::BitRate, number(MaximumBitRate + 1))));
        row("tracks beyond counting", reply(field(Field::AudioTracks, number(MaximumTracks + 1))));
        row("negative tracks", reply(field(Field::SubtitleTracks, number(-1))));
        row("codec that is a novel", reply(field(Field::VideoCodec, QByteArray(65, 'a'))));
        row("languages without end",
            reply(field(Field::AudioLanguages, QByteArray("en,").repeated(MaximumTextBytes / 3 + 1))));
        row("text that is not UTF-8", reply(field(Field::Title, "\xff\xfe")));
        row("text too long", reply(field(Field::Title, QByteArray(MaximumTextBytes + 1, 'a'))));
        row("something behind the end", reply({}) + 'x');
    }
    void refusesWhatIsMalformed()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, frame);
        WorkerReplyParser parser(request(frame));
        QVERIFY(parser.feed(bytes) == State::Invalid);
    }

    void waitsForTheRestWithoutReservingWhatIsNotThere()
    {
        WorkerReplyParser parser(request(true));
        QVERIFY(parser.feed(reply({}, 100, 100)) == State::Incomplete);
        QVERIFY(parser.feed(QByteArray(100 * 100 * 4 - 1, 'p')) == State::Incomplete);
        QVERIFY(parser.feed("p") == State::Complete);
    }
};

QTEST_GUILESS_MAIN(WorkerReplyTest)
#include "worker_reply_test.moc"
