// SPDX-License-Identifier: GPL-3.0-or-later
#include "detaillocale.h"
#include "details/videodetailscontainer.h"
#include "platform/toolkit/layout.h"

#include <QPointer>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The labels, their order, their texts and their places.
class VideoDetailsContainerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labelsInTheirOrder();
    void everyLabelStandsInBothLayouts();
    void withoutUrnOnlyThatThereAreNoDetails();
    void neverPlayedHasNoLastPlayedLine();
    void notAddedKeepsItsLine();
    void withoutTitleTheFileNameIsTheHeading();
    void stylesOfHeadingAndValues();
    void placeholdersInTheTitleStay_data();
    void placeholdersInTheTitleStay();
    void markupIsText();
    void everyLocale_data();
    void everyLocale();
    void playCountOfTheRecordIsShown();
    void refillTakesTheOldLabelsAway();
    void factsFollowTheDetails();
    void newDetailsTakeTheFactsAway();
    void factsThatComeAgainTakeTheOldOnesAway();
};

namespace {

QStringList shown(const VideoDetails &details)
{
    VideoDetailsContainer container;
    container.setDetails(details);
    return textsOf(container.labels());
}

} // namespace

void VideoDetailsContainerTest::labelsInTheirOrder()
{
    const DeviceLocale british(u"en_GB"_s);
    QCOMPARE(shown(playedVideo()),
             QStringList({u"Birthday "_s, u"Length: 12:40"_s, u"Format: MP4"_s, u"Size: 412.7 MB"_s,
                          u"Added: 14/03/2026 18:22"_s, u"Times played: 3"_s,
                          u"Last played: 02/11/2026 21:05"_s}));
}

void VideoDetailsContainerTest::everyLabelStandsInBothLayouts()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    container.setFacts(u"File"_s, {u"Video: H.264"_s});
    QCOMPARE(container.labels().size(), 9);
    for (qsizetype i = 0; i < container.labels().size(); ++i) {
        const toolkit::Label *label = container.labels().at(i);
        QCOMPARE(container.portraitPolicy()->indexOf(label), int(i));
        QCOMPARE(container.landscapePolicy()->indexOf(label), int(i));
    }
    QCOMPARE(container.portraitPolicy()->count(), 9);
    QCOMPARE(container.landscapePolicy()->count(), 9);
}

void VideoDetailsContainerTest::withoutUrnOnlyThatThereAreNoDetails()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.urn.clear();
    VideoDetailsContainer container;
    container.setDetails(details);
    QCOMPARE(textsOf(container.labels()), QStringList(u"Details not available"_s));
    QCOMPARE(container.portraitPolicy()->count(), 1);
    QCOMPARE(container.landscapePolicy()->count(), 1);
}

void VideoDetailsContainerTest::neverPlayedHasNoLastPlayedLine()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.lastAccessed = QDateTime();
    details.playCount = 0;
    const QStringList texts = shown(details);
    QCOMPARE(texts.size(), 6);
    QCOMPARE(texts.last(), u"Times played: 0"_s);
}

void VideoDetailsContainerTest::notAddedKeepsItsLine()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.added = QDateTime();
    const QStringList texts = shown(details);
    QCOMPARE(texts.size(), 7);
    QCOMPARE(texts.at(4).trimmed(), u"Added:"_s);
}

void VideoDetailsContainerTest::withoutTitleTheFileNameIsTheHeading()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.title.clear();
    details.url = u"file:///videos/First%20steps.part1.mov"_s;
    QCOMPARE(shown(details).first(), u"First steps.part1 "_s);
}

void VideoDetailsContainerTest::stylesOfHeadingAndValues()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    QCOMPARE(container.labels().first()->styleName(), u"KestrelDetailsPageTitle"_s);
    for (qsizetype i = 1; i < container.labels().size(); ++i)
        QCOMPARE(container.labels().at(i)->styleName(), u"KestrelDetailsPageLabel"_s);
}

void VideoDetailsContainerTest::placeholdersInTheTitleStay_data()
{
    QTest::addColumn<QString>("title");
    for (const QString &title : {u"%1"_s, u"%2"_s, u"100%1 %2 %3"_s, u"%L1"_s, u"50%"_s})
        QTest::newRow(qPrintable(title)) << title;
}

void VideoDetailsContainerTest::placeholdersInTheTitleStay()
{
    QFETCH(QString, title);
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.title = title;
    details.url = u"file:///videos/clip.%251"_s; // a suffix that is one, too
    const QStringList texts = shown(details);
    QCOMPARE(texts.first(), title + u' ');
    QCOMPARE(texts.at(2), u"Format: %1"_s);
    QCOMPARE(texts.at(1), u"Length: 12:40"_s);
}

void VideoDetailsContainerTest::markupIsText()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.title = u"<b>Birthday</b> & more"_s;
    VideoDetailsContainer container;
    container.setDetails(details);
    QCOMPARE(container.labels().first()->accessibleName(), details.title);
}

void VideoDetailsContainerTest::everyLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<QStringList>("texts"); // without the heading
    QTest::newRow("en") << u"en_US"_s << false
                        << QStringList{u"Length: 12:40"_s,   u"Format: MP4"_s,
                                       u"Size: 412.7 MB"_s,  u"Added: 3/14/26 6:22 PM"_s,
                                       u"Times played: 3"_s, u"Last played: 11/2/26 9:05 PM"_s};
    QTest::newRow("de") << u"de_DE"_s << false
                        << QStringList{u"Länge: 12:40"_s,         u"Format: MP4"_s,
                                       u"Größe: 412,7\u00A0MB"_s, u"Hinzugefügt: 14.03.26 18:22"_s,
                                       u"Wiedergaben: 3"_s,       u"Zuletzt abgespielt: 02.11.26 21:05"_s};
    QTest::newRow("fi") << u"fi_FI"_s << false
                        << QStringList{u"Kesto: 12:40"_s,        u"Muoto: MP4"_s,
                                       u"Koko: 412,7\u00A0Mt"_s, u"Lisätty: 14.3.2026 18.22"_s,
                                       u"Toistokerrat: 3"_s,     u"Viimeksi toistettu: 2.11.2026 21.05"_s};
    QTest::newRow("ar") << u"ar_EG"_s << true
                        << QStringList{
                               u"المدة: ١٢:٤٠"_s,          u"التنسيق: MP4"_s,
                               u"الحجم: ٤١٢٫٧\u00A0م.ب"_s, u"تاريخ الإضافة: ١٤\u200F/٣\u200F/٢٠٢٦ ٦:٢٢ م"_s,
                               u"مرات التشغيل: ٣"_s,       u"آخر تشغيل: ٢\u200F/١١\u200F/٢٠٢٦ ٩:٠٥ م"_s};
    QTest::newRow("ja") << u"ja_JP"_s << false
                        << QStringList{u"長さ: 12:40"_s,           u"形式: MP4"_s,
                                       u"サイズ: 412.7\u00A0MB"_s, u"追加日時: 2026/03/14 18:22"_s,
                                       u"再生回数: 3"_s,           u"最終再生: 2026/11/02 21:05"_s};
}

void VideoDetailsContainerTest::everyLocale()
{
    QFETCH(QString, locale);
    QFETCH(bool, rightToLeft);
    QFETCH(QStringList, texts);
    const DeviceLocale device(locale);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    QCOMPARE(textsOf(container.labels()).mid(1), texts);
    for (const toolkit::Label *label : container.labels())
        QCOMPARE(label->layoutDirection(), rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
}

// The record's play position holds the count as well; it is not shown.
void VideoDetailsContainerTest::playCountOfTheRecordIsShown()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetails details = playedVideo();
    details.playPosition = 77;
    details.playCount = 1234;
    QCOMPARE(shown(details).at(5), u"Times played: 1,234"_s);
    QVERIFY(shown(details).filter(u"77"_s).isEmpty());
}

void VideoDetailsContainerTest::refillTakesTheOldLabelsAway()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    const QPointer<toolkit::Label> old = container.labels().last();
    container.setDetails(VideoDetails());
    QVERIFY(!old);
    QCOMPARE(container.childItems().size(), 1);
    container.setDetails(playedVideo());
    QCOMPARE(container.childItems().size(), 7);
    QCOMPARE(container.portraitPolicy()->count(), 7);
}

void VideoDetailsContainerTest::factsFollowTheDetails()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    const QStringList before = textsOf(container.labels());
    container.setFacts(u"File"_s, {u"Video: H.264"_s, u"Sound: AAC"_s});
    QCOMPARE(textsOf(container.labels()),
             before + QStringList({u"File"_s, u"Video: H.264"_s, u"Sound: AAC"_s}));
    QCOMPARE(container.labels().at(7)->styleName(), u"KestrelDetailsPageSection"_s);
    QCOMPARE(container.labels().at(8)->styleName(), u"KestrelDetailsPageLabel"_s);
}

void VideoDetailsContainerTest::newDetailsTakeTheFactsAway()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    container.setFacts(u"File"_s, {u"Video: H.264"_s});
    container.setDetails(playedVideo());
    QCOMPARE(container.labels().size(), 7);
}

void VideoDetailsContainerTest::factsThatComeAgainTakeTheOldOnesAway()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoDetailsContainer container;
    container.setDetails(playedVideo());
    container.setFacts(u"File"_s, {u"Video: H.264"_s, u"Sound: AAC"_s});
    container.setFacts(u"File"_s, {u"Video: VP9"_s});
    QCOMPARE(textsOf(container.labels()).mid(7), QStringList({u"File"_s, u"Video: VP9"_s}));
    container.setFacts(u"File"_s, {});
    QCOMPARE(container.labels().size(), 7);
}

QTEST_MAIN(VideoDetailsContainerTest)
#include "tst_videodetailscontainer.moc"
