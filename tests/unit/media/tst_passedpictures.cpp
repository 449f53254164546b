// SPDX-License-Identifier: GPL-3.0-or-later
#include "exactclips.h"

#include <platform/media/gst/gstsetup.h>
#include <platform/media/gst/passedpictures.h>

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>

#include <gst/app/gstappsink.h>

using namespace Qt::Literals::StringLiterals;

namespace {

struct Count
{
    int pictures = 0;
    int alone = 0;
    PictureFormat format;
};

// Of what a decoder would get.
Count countPictures(const QString &path, const QString &parser)
{
    Count count;
    GstElement *pipeline = gst_parse_launch(
        qPrintable(u"filesrc location=%1 ! parsebin ! %2 ! appsink name=end sync=false"_s.arg(path, parser)),
        nullptr);
    GstElement *end = gst_bin_get_by_name(GST_BIN(pipeline), "end");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    while (GstSample *sample = gst_app_sink_pull_sample(GST_APP_SINK(end))) {
        count.format = PictureFormat::of(gst_sample_get_caps(sample));
        GstMapInfo map;
        gst_buffer_map(gst_sample_get_buffer(sample), &map, GST_MAP_READ);
        ++count.pictures;
        count.alone += int(isPictureAlone(count.format, {map.data, map.size}));
        gst_buffer_unmap(gst_sample_get_buffer(sample), &map);
        gst_sample_unref(sample);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(end);
    gst_object_unref(pipeline);
    return count;
}

// What another reader of the same format decodes when it leaves them out.
int picturesThatOthersNeed(const QString &path)
{
    QProcess reader;
    reader.start(u"ffmpeg"_s,
                 {u"-v"_s, u"error"_s, u"-skip_frame"_s, u"noref"_s, u"-i"_s, path, u"-map"_s, u"v"_s,
                  u"-fps_mode"_s, u"passthrough"_s, u"-f"_s, u"framecrc"_s, u"-"_s});
    reader.waitForFinished(60000);
    const QByteArrayList lines = reader.readAllStandardOutput().split('\n');
    return int(std::count_if(lines.begin(), lines.end(), [](const QByteArray &line) {
        return !line.isEmpty() && !line.startsWith('#');
    }));
}

} // namespace

// Pictures that no other is made from.
class PassedPicturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void areThoseThatOthersLeaveOut_data();
    void areThoseThatOthersLeaveOut();
    void unknownStreamsHaveNone();
    void damagedUnits();

private:
    QTemporaryDir m_clips;
};

void PassedPicturesTest::initTestCase()
{
    initialiseGStreamer();
    const QString source = m_clips.filePath(u"source.mkv"_s);
    QVERIFY(exactclips::makeSource(source));
    for (const exactclips::Pair &pair :
         {exactclips::Pair{"", "b.mp4", "-c:v libx264 -preset veryfast -g 48 -bf 3"},
          exactclips::Pair{"", "b.ts", "-c:v libx264 -preset veryfast -g 48 -bf 3"},
          exactclips::Pair{"", "fields.mp4", "-c:v libx264 -preset veryfast -g 48 -bf 3 -flags +ildct+ilme"},
          exactclips::Pair{"", "slices.mp4",
                           "-c:v libx264 -preset veryfast -g 48 -bf 3 -x264-params slices=4"},
          exactclips::Pair{"", "plain.mp4", "-c:v libx264 -preset veryfast -g 48 -bf 0"},
          exactclips::Pair{"", "hevc.mp4",
                           "-c:v libx265 -preset fast -x265-params keyint=48:log-level=none"}})
        QVERIFY2(exactclips::make(source, pair, m_clips.filePath(QString::fromLatin1(pair.file))), pair.file);
}

void PassedPicturesTest::areThoseThatOthersLeaveOut_data()
{
    QTest::addColumn<QString>("parser");
    QTest::addColumn<bool>("some");
    QTest::newRow("b.mp4") << u"h264parse"_s << true;
    QTest::newRow("b.ts") << u"h264parse ! video/x-h264,stream-format=byte-stream,alignment=au"_s << true;
    QTest::newRow("fields.mp4") << u"h264parse"_s << true;
    QTest::newRow("slices.mp4") << u"h264parse"_s << true;
    QTest::newRow("plain.mp4") << u"h264parse"_s << false;
    QTest::newRow("hevc.mp4") << u"h265parse"_s << true;
}

void PassedPicturesTest::areThoseThatOthersLeaveOut()
{
    QFETCH(QString, parser);
    QFETCH(bool, some);
    const QString path = m_clips.filePath(QString::fromLatin1(QTest::currentDataTag()));
    const Count count = countPictures(path, parser);
    QVERIFY(count.pictures > 100);
    QCOMPARE(count.pictures - count.alone, picturesThatOthersNeed(path));
    QCOMPARE(count.alone > count.pictures / 4, some);
}

void PassedPicturesTest::unknownStreamsHaveNone()
{
    // Of a byte stream it is not known how many layers there are; of single units, where a picture ends.
    const Count layers = countPictures(m_clips.filePath(u"hevc.mp4"_s),
                                       u"h265parse ! video/x-h265,stream-format=byte-stream,alignment=au"_s);
    QVERIFY(layers.pictures > 100);
    QCOMPARE(layers.alone, 0);
    const Count units = countPictures(m_clips.filePath(u"b.mp4"_s),
                                      u"h264parse ! video/x-h264,stream-format=byte-stream,alignment=nal"_s);
    QVERIFY(units.pictures > 100);
    QCOMPARE(units.alone, 0);
    GstCaps *caps = gst_caps_from_string("video/x-h264, stream-format=avc, alignment=au");
    QVERIFY(PictureFormat::of(caps).codec == PictureFormat::Codec::Other);
    gst_caps_unref(caps);
}

void PassedPicturesTest::damagedUnits()
{
    const PictureFormat lengths{PictureFormat::Codec::H264, 4};
    QVERIFY(!isPictureAlone(lengths, {}));
    const std::array<std::uint8_t, 4> onlyLength{0, 0, 0, 9};
    QVERIFY(!isPictureAlone(lengths, onlyLength));
    const std::array<std::uint8_t, 6> tooLong{0xff, 0xff, 0xff, 0xff, 0x01, 0x00}; // the rest counts
    QVERIFY(isPictureAlone(lengths, tooLong));
    const std::array<std::uint8_t, 10> empty{0, 0, 0, 0, 0, 0, 0, 1, 0x01, 0x00};
    QVERIFY(!isPictureAlone(lengths, empty));
    const PictureFormat codes{PictureFormat::Codec::H264, 0};
    const std::array<std::uint8_t, 3> onlyCode{0, 0, 1};
    QVERIFY(!isPictureAlone(codes, onlyCode));
    const std::array<std::uint8_t, 4> none{1, 2, 3, 4};
    QVERIFY(!isPictureAlone(codes, none));
}

QTEST_MAIN(PassedPicturesTest)
#include "tst_passedpictures.moc"
