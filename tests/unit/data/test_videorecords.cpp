// SPDX-License-Identifier: GPL-3.0-or-later
#include <data/videoconstants.h>
#include <data/videodetails.h>
#include <data/videoinfo.h>

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestVideoRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDefaultRecordIsNothing();
    void aRowFillsTheRecordByPosition();
    void anEmptyDurationIsZero();
    void aShortRowLeavesTheRestEmpty();
    void defaultDetailsAreEmpty();
    void detailsStandInTheirOrder();
    void constants_data();
    void constants();
};

void TestVideoRecords::aDefaultRecordIsNothing()
{
    const VideoInfo info;
    QVERIFY(info.urn.isEmpty() && info.title.isEmpty() && info.fileName.isEmpty() && info.mimeType.isEmpty()
            && info.url.isEmpty());
    QVERIFY(info.duration == 0 && info.playPosition == 0 && info.trackerId == 0);
}

void TestVideoRecords::aRowFillsTheRecordByPosition()
{
    const VideoInfo info = videoInfoFromRow(
        {u"urn:a"_s, u"T"_s, u"f.mp4"_s, u"61"_s, u"5"_s, u"video/mp4"_s, u"file:///f.mp4"_s, u"1234"_s});
    QCOMPARE(info.urn, u"urn:a"_s);
    QCOMPARE(info.title, u"T"_s);
    QCOMPARE(info.fileName, u"f.mp4"_s);
    QCOMPARE(info.duration, 61u);
    QCOMPARE(info.playPosition, 5u);
    QCOMPARE(info.mimeType, u"video/mp4"_s);
    QCOMPARE(info.url, u"file:///f.mp4"_s);
    QCOMPARE(info.trackerId, 1234u);
}

void TestVideoRecords::anEmptyDurationIsZero()
{
    QCOMPARE(videoInfoFromRow({u"urn:a"_s, u"T"_s, u"f"_s, QString(), u"5"_s}).duration, 0u);
}

void TestVideoRecords::aShortRowLeavesTheRestEmpty()
{
    const VideoInfo info = videoInfoFromRow({u"urn:a"_s});
    QCOMPARE(info.urn, u"urn:a"_s);
    QVERIFY(info.url.isEmpty() && info.trackerId == 0);
}

void TestVideoRecords::defaultDetailsAreEmpty()
{
    const VideoDetails details;
    QVERIFY(!details.added.isValid() && !details.lastAccessed.isValid());
    QVERIFY(details.fileSize == 0 && details.duration == 0 && details.playPosition == 0
            && details.playCount == 0);
}

void TestVideoRecords::detailsStandInTheirOrder()
{
    const QDateTime added(QDate(2024, 5, 6), QTime(7, 8, 9));
    const QDateTime played(QDate(2025, 1, 2), QTime(3, 4, 5));
    const VideoDetails details{u"urn"_s,     u"url"_s, u"file"_s, u"title"_s, u"type"_s, u"more"_s,
                               5000000000LL, added,    played,    7,          8,         9};
    QCOMPARE((QStringList{details.urn, details.url, details.fileName, details.title, details.mimeType,
                          details.additionalInfo}),
             (QStringList{u"urn"_s, u"url"_s, u"file"_s, u"title"_s, u"type"_s, u"more"_s}));
    QCOMPARE(details.fileSize, 5000000000LL);
    QCOMPARE((QList<QDateTime>{details.added, details.lastAccessed}), (QList<QDateTime>{added, played}));
    QCOMPARE((QList<qint32>{details.duration, details.playPosition, details.playCount}),
             (QList<qint32>{7, 8, 9}));
}

void TestVideoRecords::constants_data()
{
    QTest::addColumn<QString>("constant");
    QTest::addColumn<QString>("text");
    QTest::newRow("identifier") << APP_IDENTIFIER << u"video"_s;
    QTest::newRow("placeholder image")
        << PLACEHOLDER_IMAGE_PATH
        << u"/usr/share/themes/base/sorelkit/video/svg/media_server_placeholder_graphics.svg"_s;
    QTest::newRow("urn") << URN_PREFIX << u"urn:"_s;
    QTest::newRow("http") << HTTP_PREFIX << u"http:"_s;
    QTest::newRow("rtsp") << RTSP_PREFIX << u"rtsp:"_s;
    QTest::newRow("mms") << MMS_PREFIX << u"mms:"_s;
    QTest::newRow("file") << FILE_URL_PREFIX << u"file://"_s;
    QTest::newRow("renderer") << RENDERER_ID << u"avlo_gst_internal_video_renderer"_s;
    QTest::newRow("paused thumbnail") << PAUSED_THUMBNAIL_PROPERTY << u"paused-thumbnail-uri"_s;
    QTest::newRow("route") << VIDEO_ROUTE_PROPERTY << u"/com/harrow/policy/video_route"_s;
    QTest::newRow("both routes") << ROUTE_BUILTIN_AND_TVOUT << u"builtinandtvout"_s;
    QTest::newRow("tv route") << ROUTE_TVOUT << u"tvout"_s;
    QTest::newRow("flavour") << THUMBNAIL_FLAVOR << u"video-grid"_s;
    QTest::newRow("thumbnails") << THUMBNAIL_DIR << u".thumbnails"_s;
    QTest::newRow("placeholder icon") << PLACEHOLDER_ICON_ID << u"sorelkit-video-placeholder"_s;
    QTest::newRow("stills") << PAUSE_THUMBNAIL_DIR << u".cache/kestrel"_s;
    QTest::newRow("thumbnail suffix") << THUMBNAIL_SUFFIX << u".jpeg"_s;
    QTest::newRow("still suffix") << PAUSE_THUMBNAIL_SUFFIX << u".jpeg"_s;
    QTest::newRow("full model") << HW_BUILD_MODEL_FULL << u"Q5"_s;
    QTest::newRow("early model") << HW_BUILD_MODEL_EARLY << u"Rzw"_s;
    QTest::newRow("build key") << HW_BUILD_KEY << u"/component/hw-build"_s;
    QTest::newRow("video types") << VIDEO_MIME_PREFIX << u"video/"_s;
    QTest::newRow("opacity") << OPACITY_PROPERTY << u"opacity"_s;
    QTest::newRow("related") << RELATED_EXTENSION_DESKTOP_FILE << u"video_youtuberelatedextension.desktop"_s;
    QTest::newRow("card") << MYDOCS_URL << u"file:///home/user/MyDocs"_s;
}

void TestVideoRecords::constants()
{
    QFETCH(QString, constant);
    QTEST(constant, "text");
}

QTEST_GUILESS_MAIN(TestVideoRecords)
#include "test_videorecords.moc"
