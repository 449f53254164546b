// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileidentity.h"
#include "storepaths.h"
#include "videofiles.h"
#include "videoresource.h"
#include "videotable.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

VideoRecord videoAt(const QString &urn, const QString &path, const FileIdentity &identity)
{
    VideoRecord record;
    record.urn = urn;
    record.path = path;
    record.url = urlOf(path);
    record.identity = identity;
    return record;
}

} // namespace

class StoreValues : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesOfCamerasStandInAnIri();
    void addressesAndPathsGoBothWays_data();
    void addressesAndPathsGoBothWays();
    void identityAsText();
    void filesOfOneSizeDifferByHeadOrTail();
    void whatMayBeAVideo_data();
    void whatMayBeAVideo();
    void videosBelowAFolder();
    void aVideoTakesThePlaceOfAnother();
    void videosOfADay();
};

void StoreValues::namesOfCamerasStandInAnIri()
{
    QCOMPARE(equipmentUrn(u"Good Cameras"_s, u"X<1>"_s), u"urn:equipment:Good%20Cameras:X%3C1%3E:"_s);
    QCOMPARE(equipmentUrn(u" Maker "_s, u"50%"_s), u"urn:equipment:Maker:50%25:"_s);
    QCOMPARE(equipmentUrn({}, {}), QString());
}

void StoreValues::addressesAndPathsGoBothWays_data()
{
    QTest::addColumn<QString>("path");
    for (const QString &path :
         {u"/a/plain.mp4"_s, u"/a/b c.mp4"_s, u"/a/50% [x];#?.mp4"_s, u"/ä/日本 🎬.mkv"_s,
          u"/a/'quote\".mp4"_s, u"/a/back\\slash.mp4"_s, u"/a/%41.mp4"_s})
        QTest::newRow(qPrintable(path)) << path;
}

void StoreValues::addressesAndPathsGoBothWays()
{
    QFETCH(QString, path);
    QVERIFY(urlOf(path).startsWith(u"file:///"_s));
    QCOMPARE(localPathOf(urlOf(path)), path);
}

void StoreValues::identityAsText()
{
    const FileIdentity identity{1, 2, 3, 4, "ab12"};
    QVERIFY(FileIdentity::fromText(identity.toText()) == identity);
    QVERIFY(!FileIdentity::fromText(u""_s));
    QVERIFY(!FileIdentity::fromText(u"1:2:3:x:"_s));
}

void StoreValues::filesOfOneSizeDifferByHeadOrTail()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"file"_s);
    const auto digestOf
        = [&](const QByteArray &content) { return writeFile(path, content) ? contentDigest(path) : ""; };
    const QByteArray middle(300000, 'm');
    const QByteArray base = digestOf("head" + middle + "tail");
    QVERIFY(!base.isEmpty());
    QCOMPARE(digestOf("head" + middle + "tail"), base);
    QVERIFY(digestOf("HEAD" + middle + "tail") != base);
    QVERIFY(digestOf("head" + middle + "TAIL") != base);
    QVERIFY(digestOf("head" + middle + "mtail") != base);
    QVERIFY(contentDigest(folder.filePath(u"none"_s)).isEmpty());
}

void StoreValues::whatMayBeAVideo_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("video");
    const QByteArray matroska("\x1a\x45\xdf\xa3\x01\x00\x00\x00\x00\x00\x00\x1f\x42\x82\x88matroska", 23);
    QTest::newRow("by name") << u"a.mp4"_s << QByteArray("anything") << true;
    QTest::newRow("capitals") << u"A.MKV"_s << matroska << true;
    QTest::newRow("a transport stream")
        << u"a.ts"_s << QByteArray("G" + QByteArray(187, 'x')).repeated(4) << true;
    QTest::newRow("a translation") << u"a.ts"_s << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE TS><TS></TS>")
                                   << false;
    QTest::newRow("by content") << u"recording"_s << matroska << true;
    QTest::newRow("hidden") << u".a.mp4"_s << QByteArray("x") << false;
    QTest::newRow("unfinished download") << u"a.mp4.part"_s << QByteArray("x") << false;
    QTest::newRow("music") << u"a.mp3"_s << QByteArray("x") << false;
    QTest::newRow("a picture") << u"a.jpg"_s << QByteArray("x") << false;
    QTest::newRow("text") << u"notes"_s << QByteArray("some notes") << false;
}

void StoreValues::whatMayBeAVideo()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    const QTemporaryDir folder;
    QVERIFY(writeFile(folder.filePath(name), content));
    QTEST(mayBeVideo(folder.filePath(name)), "video");
}

void StoreValues::videosBelowAFolder()
{
    VideoTable table;
    table.put(videoAt(u"urn:1"_s, u"/v/a/1.mp4"_s, {1, 1, 10, 1, "x"}));
    table.put(videoAt(u"urn:2"_s, u"/v/a/b/2.mp4"_s, {1, 2, 10, 1, "y"}));
    table.put(videoAt(u"urn:3"_s, u"/v/ab.mp4"_s, {1, 3, 10, 1, "x"}));
    QCOMPARE(table.urnsUnder(u"/v/a"_s), QStringList({u"urn:1"_s, u"urn:2"_s}));
    QCOMPARE(table.urnsUnder(u"/v"_s).size(), 3);
    QCOMPARE(table.urnsUnder(u"/v/b"_s), QStringList());
    QCOMPARE(table.urnsOfContent({9, 9, 10, 9, "x"}).size(), 2);
    QCOMPARE(table.urnsOfInode({1, 2, 0, 0, {}}), QStringList({u"urn:2"_s}));
}

void StoreValues::aVideoTakesThePlaceOfAnother()
{
    VideoTable table;
    table.put(videoAt(u"urn:1"_s, u"/v/a.mp4"_s, {1, 1, 10, 1, {}}));
    table.put(videoAt(u"urn:2"_s, u"/v/a.mp4"_s, {1, 2, 10, 1, {}}));
    QCOMPARE(table.byPath(u"/v/a.mp4"_s)->urn, u"urn:2"_s);
    table.remove(u"urn:1"_s);
    QCOMPARE(table.byPath(u"/v/a.mp4"_s)->urn, u"urn:2"_s);
    table.remove(u"urn:2"_s);
    QVERIFY(!table.byPath(u"/v/a.mp4"_s));
    QCOMPARE(table.size(), 0);
}

void StoreValues::videosOfADay()
{
    VideoTable table;
    const auto put = [&table](int id, qint64 created) {
        VideoRecord record = videoAt(u"urn:%1"_s.arg(id), u"/a/%1.mp4"_s.arg(id), {1, quint64(id), 3, 4, {}});
        record.id = id;
        if (created >= 0)
            record.created = QDateTime::fromSecsSinceEpoch(created);
        table.put(record);
    };
    const auto asked
        = [&table](const RecordedQuestion &question) { return question.answerFrom(table.recordedTimes()); };
    for (int id = 1; id <= 5; ++id)
        put(id, id * 100);
    put(6, -1); // it is not known when
    // The nearest first, the later one of two; the end is not of the day.
    QCOMPARE(asked({100, 500, 300, 10}), QList<int>({3, 4, 2, 1}));
    QCOMPARE(asked({100, 500, 300, 2}), QList<int>({3, 4}));
    QCOMPARE(asked({100, 501, 0, 3}), QList<int>({1, 2, 3}));
    QCOMPARE(asked({100, 501, 9000, 3}), QList<int>({5, 4, 3}));
    QCOMPARE(asked({500, 100, 300, 10}), QList<int>());
    put(3, 450); // another time
    table.remove(u"urn:4"_s);
    QCOMPARE(asked({100, 500, 300, 10}), QList<int>({2, 3, 1}));
}

QTEST_GUILESS_MAIN(StoreValues)
#include "store_values.moc"
