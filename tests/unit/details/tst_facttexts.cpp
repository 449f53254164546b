// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/videofacts.h"
#include "detaillocale.h"
#include "details/facttexts.h"

#include <QDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What is told of a file, in the locales' ways of writing.
class FactTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesOfAFilm_data();
    void linesOfAFilm();
    void wordsAreThoseOfTheTextsAndNumbersThoseOfTheRegion();
    void withoutFactsThereIsNoLine();
    void whatTheFileDoesNotTellIsLeftOut();
    void frameRates_data();
    void frameRates();
    void bitRates_data();
    void bitRates();
    void folders_data();
    void folders();
    void pathsReadFromLeftToRight();
    void placeholdersInNamesStay();
};

namespace {

VideoFacts film()
{
    VideoFacts facts;
    facts.width = 1920;
    facts.height = 1080;
    facts.frameRate = 23.976;
    facts.bitRate = 8240000;
    facts.videoCodec = u"H.264"_s;
    facts.audioCodecs = QStringList{u"AAC"_s, u"AC-3"_s};
    facts.audioTracks = 2;
    facts.audioLanguages = QStringList{u"en"_s, u"fin"_s};
    facts.subtitleTracks = 3;
    facts.subtitleLanguages = QStringList{u"ger"_s, u"deu"_s, u"xx-nonsense"_s};
    return facts;
}

} // namespace

void FactTextsTest::linesOfAFilm_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("en") << u"en_GB"_s
                        << QStringList{u"Resolution: 1920\u00A0×\u00A01080"_s,
                                       u"Frame rate: 23.98\u00A0fps"_s,
                                       u"Codecs: H.264, AAC, AC-3"_s,
                                       u"Bit rate: 8.2\u00A0Mbit/s"_s,
                                       u"Audio tracks: 2 (English and Finnish)"_s,
                                       u"Subtitles: 3 (German)"_s,
                                       u"Folder: /media/films"_s};
    QTest::newRow("de") << u"de_DE"_s
                        << QStringList{u"Auflösung: 1920\u00A0×\u00A01080"_s,
                                       u"Bildrate: 23,98\u00A0Bilder/s"_s,
                                       u"Codecs: H.264, AAC, AC-3"_s,
                                       u"Bitrate: 8,2\u00A0MBit/s"_s,
                                       u"Tonspuren: 2 (Englisch und Finnisch)"_s,
                                       u"Untertitel: 3 (Deutsch)"_s,
                                       u"Ordner: /media/films"_s};
    QTest::newRow("fi") << u"fi_FI"_s
                        << QStringList{u"Tarkkuus: 1920\u00A0×\u00A01080"_s,
                                       u"Kuvataajuus: 23,98\u00A0kuvaa/s"_s,
                                       u"Koodekit: H.264, AAC, AC-3"_s,
                                       u"Bittinopeus: 8,2\u00A0Mbit/s"_s,
                                       u"Ääniraidat: 2 (englanti ja suomi)"_s,
                                       u"Tekstitykset: 3 (saksa)"_s,
                                       u"Kansio: /media/films"_s};
    QTest::newRow("ar") << u"ar_EG"_s
                        << QStringList{u"الدقة: ١٩٢٠\u00A0×\u00A0١٠٨٠"_s,
                                       u"معدل الإطارات: ٢٣٫٩٨\u00A0إطار/ث"_s,
                                       u"الترميز: H.264, AAC, AC-3"_s,
                                       u"معدل البت: ٨٫٢\u00A0ميغابت/ث"_s,
                                       u"المسارات الصوتية: ٢ (الإنجليزية والفنلندية)"_s,
                                       u"الترجمات: ٣ (الألمانية)"_s,
                                       u"المجلد: \u2066/media/films\u2069"_s};
    QTest::newRow("ja") << u"ja_JP"_s
                        << QStringList{u"解像度: 1920\u00A0×\u00A01080"_s,
                                       u"フレームレート: 23.98\u00A0fps"_s,
                                       u"コーデック: H.264, AAC, AC-3"_s,
                                       u"ビットレート: 8.2\u00A0Mbps"_s,
                                       u"音声トラック: 2（英語、フィンランド語）"_s,
                                       u"字幕: 3（ドイツ語）"_s,
                                       u"フォルダー: /media/films"_s};
}

void FactTextsTest::linesOfAFilm()
{
    QFETCH(QString, locale);
    const DeviceLocale device(locale);
    QTEST(FactTexts::lines(film(), u"file:///media/films/film.mkv"_s), "lines");
}

// A Finn who reads English, as a phone is often set.
void FactTextsTest::wordsAreThoseOfTheTextsAndNumbersThoseOfTheRegion()
{
    const DeviceLocale device(u"fi_FI"_s, u"en"_s);
    const QStringList lines = FactTexts::lines(film(), u"file:///media/films/film.mkv"_s);
    QCOMPARE(lines.at(1), u"Frame rate: 23,98\u00A0fps"_s);
    QCOMPARE(lines.at(4), u"Audio tracks: 2 (English and Finnish)"_s);
}

void FactTextsTest::withoutFactsThereIsNoLine()
{
    const DeviceLocale british(u"en_GB"_s);
    QCOMPARE(FactTexts::lines(VideoFacts(), u"file:///media/films/film.mkv"_s), QStringList());
}

void FactTextsTest::whatTheFileDoesNotTellIsLeftOut()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoFacts facts;
    facts.videoCodec = u"VP9"_s;
    QCOMPARE(FactTexts::lines(facts, u"file:///v/a.webm"_s),
             QStringList({u"Codecs: VP9"_s, u"Audio tracks: 0"_s, u"Subtitles: 0"_s, u"Folder: /v"_s}));
}

void FactTextsTest::frameRates_data()
{
    QTest::addColumn<double>("rate");
    QTest::addColumn<QString>("text");
    QTest::newRow("24") << 24.0 << u"24"_s;
    QTest::newRow("film on television") << 23.976 << u"23.98"_s;
    QTest::newRow("30000/1001") << 29.97 << u"29.97"_s;
    QTest::newRow("12.5") << 12.5 << u"12.5"_s;
    QTest::newRow("nearly whole") << 59.998 << u"60"_s;
    QTest::newRow("slow") << 0.25 << u"0.25"_s;
    QTest::newRow("very fast") << 1000.0 << u"1000"_s;
}

void FactTextsTest::frameRates()
{
    QFETCH(double, rate);
    const DeviceLocale british(u"en_GB"_s);
    QTEST(FactTexts::frameRate(rate), "text");
}

void FactTextsTest::bitRates_data()
{
    QTest::addColumn<qint64>("rate");
    QTest::addColumn<QString>("text");
    QTest::newRow("hardly any") << qint64(3) << u"1\u00A0kbit/s"_s;
    QTest::newRow("kilobits") << qint64(640400) << u"640\u00A0kbit/s"_s;
    QTest::newRow("just below a megabit") << qint64(999499) << u"999\u00A0kbit/s"_s;
    QTest::newRow("a megabit") << qint64(1000000) << u"1.0\u00A0Mbit/s"_s;
    QTest::newRow("many") << qint64(1234567890) << u"1234.6\u00A0Mbit/s"_s;
}

void FactTextsTest::bitRates()
{
    QFETCH(qint64, rate);
    const DeviceLocale british(u"en_GB"_s);
    QTEST(FactTexts::bitRate(rate), "text");
}

void FactTextsTest::folders_data()
{
    const QString home = QUrl::fromLocalFile(QDir::homePath()).toString(QUrl::FullyEncoded);
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("folder");
    QTest::newRow("home") << home + u"/a.mp4"_s << u"~"_s;
    QTest::newRow("in home") << home + u"/Videos/My%20trip/a.mp4"_s << u"~/Videos/My trip"_s;
    QTest::newRow("beside home") << home + u"2/a.mp4"_s << QDir::homePath() + u"2"_s;
    QTest::newRow("card") << u"file:///media/card/a.mp4"_s << u"/media/card"_s;
    QTest::newRow("root") << u"file:///a.mp4"_s << u"/"_s;
    QTest::newRow("odd signs") << u"file:///v/100%25%20%23%3F/a.mp4"_s << u"/v/100% #?"_s;
    QTest::newRow("stream") << u"http://host/v/a.mp4"_s << QString();
    QTest::newRow("nothing") << QString() << QString();
}

void FactTextsTest::folders()
{
    QFETCH(QString, url);
    const DeviceLocale british(u"en_GB"_s);
    QTEST(FactTexts::folder(url), "folder");
}

void FactTextsTest::pathsReadFromLeftToRight()
{
    const DeviceLocale arabic(u"ar_EG"_s);
    QCOMPARE(FactTexts::folder(u"file:///media/فيلم/a.mp4"_s), u"\u2066/media/فيلم\u2069"_s);
}

void FactTextsTest::placeholdersInNamesStay()
{
    const DeviceLocale british(u"en_GB"_s);
    VideoFacts facts = film();
    facts.videoCodec = u"%1"_s;
    facts.audioCodecs = QStringList{u"%2"_s};
    const QStringList lines = FactTexts::lines(facts, u"file:///v/%251%252/a.mp4"_s);
    QVERIFY(lines.contains(u"Codecs: %1, %2"_s));
    QVERIFY(lines.contains(u"Folder: /v/%1%2"_s));
}

QTEST_MAIN(FactTextsTest)
#include "tst_facttexts.moc"
