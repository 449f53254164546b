// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/videodetails.h"
#include "detaillocale.h"
#include "details/detailtexts.h"

#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

// The values of the details page in the locales' ways of writing.
class DetailTextsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizesOverAllBounds_data();
    void sizesOverAllBounds();
    void sizesInTheLocale_data();
    void sizesInTheLocale();
    void headings_data();
    void headings();
    void formats_data();
    void formats();
    void momentsAreToldInTheDevicesTimeZone();
    void momentsInTheLocale_data();
    void momentsInTheLocale();
    void momentsFollowTheirOwnSetting();
    void missingMomentsAreEmpty();
    void countsInTheLocale_data();
    void countsInTheLocale();
};

void DetailTextsTest::sizesOverAllBounds_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");
    const auto row = [](qint64 bytes, const QString &text) {
        QTest::addRow("%lld", static_cast<long long>(bytes)) << bytes << text;
    };
    row(0, u"0.0 kB"_s);
    row(1, u"0.0 kB"_s);
    row(51, u"0.0 kB"_s);
    row(52, u"0.1 kB"_s);
    row(1023, u"1.0 kB"_s);
    row(1024, u"1.0 kB"_s);
    row(1025, u"1.0 kB"_s);
    row(1536, u"1.5 kB"_s);
    row(1048575, u"1024.0 kB"_s);
    row(1048576, u"1024.0 kB"_s); // not greater than a megabyte
    row(1048577, u"1.0 MB"_s);
    row(1572864, u"1.5 MB"_s);
    row(432747315, u"412.7 MB"_s);
    row(1073741823, u"1024.0 MB"_s);
    row(1073741824, u"1024.0 MB"_s); // not greater than a gigabyte
    row(1073741825, u"1.0 GB"_s);
    row(1610612736, u"1.5 GB"_s);
    row(1099511627776, u"1024.0 GB"_s); // there is nothing above
    row(std::numeric_limits<qint64>::max(), u"8589934592.0 GB"_s);
}

void DetailTextsTest::sizesOverAllBounds()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, text);
    const DeviceLocale english(u"en_US"_s);
    QCOMPARE(DetailTexts::size(bytes), text);
}

// The locale's decimal mark and digits; numbers are never parted into groups.
void DetailTextsTest::sizesInTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("kilobytes"); // the largest of them
    QTest::addColumn<QString>("megabytes");
    QTest::addColumn<QString>("gigabytes"); // of a terabyte
    QTest::newRow("en") << u"en_GB"_s << u"1024.0 kB"_s << u"412.7 MB"_s << u"1024.0 GB"_s;
    QTest::newRow("de") << u"de_DE"_s << u"1024,0\u00A0kB"_s << u"412,7\u00A0MB"_s << u"1024,0\u00A0GB"_s;
    QTest::newRow("fi") << u"fi_FI"_s << u"1024,0\u00A0kt"_s << u"412,7\u00A0Mt"_s << u"1024,0\u00A0Gt"_s;
    QTest::newRow("ar") << u"ar_EG"_s << u"١٠٢٤٫٠\u00A0ك.ب"_s << u"٤١٢٫٧\u00A0م.ب"_s << u"١٠٢٤٫٠\u00A0غ.ب"_s;
    QTest::newRow("ja") << u"ja_JP"_s << u"1024.0\u00A0KB"_s << u"412.7\u00A0MB"_s << u"1024.0\u00A0GB"_s;
}

void DetailTextsTest::sizesInTheLocale()
{
    QFETCH(QString, locale);
    QFETCH(QString, kilobytes);
    QFETCH(QString, megabytes);
    QFETCH(QString, gigabytes);
    const DeviceLocale device(locale);
    QCOMPARE(DetailTexts::size(1048576), kilobytes);
    QCOMPARE(DetailTexts::size(432747315), megabytes);
    QCOMPARE(DetailTexts::size(1099511627776), gigabytes);
}

void DetailTextsTest::headings_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("heading");
    QTest::newRow("title") << u"Birthday"_s << u"file:///v/a.mp4"_s << u"Birthday"_s;
    QTest::newRow("no title") << QString() << u"file:///v/a.mp4"_s << u"a"_s;
    QTest::newRow("last suffix only") << QString() << u"file:///v/holiday.part1.mp4"_s << u"holiday.part1"_s;
    QTest::newRow("encoded") << QString() << u"file:///v/%C3%A9t%C3%A9%20100%25%20%231.mp4"_s
                             << u"été 100% #1"_s;
    QTest::newRow("question mark") << QString() << u"file:///v/who%3F.mp4"_s << u"who?"_s;
    QTest::newRow("not encoded") << QString() << u"file:///v/a b#c.mp4"_s << u"a b#c"_s;
    QTest::newRow("no suffix") << QString() << u"file:///v/clip"_s << u"clip"_s;
    QTest::newRow("dots in the folder") << QString() << u"file:///v.2026/clip"_s << u"clip"_s;
    QTest::newRow("placeholder in the title") << u"100%1"_s << u"file:///v/a.mp4"_s << u"100%1"_s;
}

void DetailTextsTest::headings()
{
    QFETCH(QString, title);
    QFETCH(QString, url);
    VideoDetails details;
    details.title = title;
    details.url = url;
    QTEST(DetailTexts::heading(details), "heading");
}

void DetailTextsTest::formats_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("mimeType");
    QTest::addColumn<QString>("format");
    QTest::newRow("clip.mp4") << u"file:///v/clip.mp4"_s << u"video/mp4"_s << u"MP4"_s;
    QTest::newRow("no suffix") << u"file:///v/clip"_s << u"video/mp4"_s << u"mp4"_s;
    QTest::newRow("suffix that contradicts") << u"file:///v/clip.MkV"_s << u"video/mp4"_s << u"MKV"_s;
    QTest::newRow("no video type") << u"file:///v/clip"_s << u"application/ogg"_s << u"application/ogg"_s;
    QTest::newRow("video in the middle") << u"file:///v/clip"_s << u"x-video/mp4"_s << u"x-video/mp4"_s;
    QTest::newRow("nothing is known") << u"file:///v/clip"_s << QString() << QString();
    QTest::newRow("encoded dot") << u"file:///v/clip%2Ewebm"_s << u"video/webm"_s << u"WEBM"_s;
    QTest::newRow("last of several") << u"file:///v/clip.tar.m2ts"_s << u"video/mp2t"_s << u"M2TS"_s;
}

void DetailTextsTest::formats()
{
    QFETCH(QString, url);
    QFETCH(QString, mimeType);
    VideoDetails details;
    details.url = url;
    details.mimeType = mimeType;
    QTEST(DetailTexts::format(details), "format");
}

// The store keeps moments in UTC; a video that was added at half past ten in the evening was so here.
void DetailTextsTest::momentsAreToldInTheDevicesTimeZone()
{
    const QByteArray before = qgetenv("TZ");
    qputenv("TZ", "Asia/Tokyo");
    tzset();
    const DeviceLocale german(u"de_DE"_s);
    const QDateTime moment(QDate(2026, 3, 14), QTime(18, 22), QTimeZone::utc());
    QCOMPARE(DetailTexts::date(moment), u"15.03.26"_s);
    QCOMPARE(DetailTexts::time(moment), u"03:22"_s);
    if (before.isEmpty())
        qunsetenv("TZ");
    else
        qputenv("TZ", before);
    tzset();
}

void DetailTextsTest::momentsInTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("date");
    QTest::addColumn<QString>("time");
    QTest::newRow("en") << u"en_GB"_s << u"02/11/2026"_s << u"21:05"_s;
    QTest::newRow("en_US") << u"en_US"_s << u"11/2/26"_s << u"9:05 PM"_s;
    QTest::newRow("de") << u"de_DE"_s << u"02.11.26"_s << u"21:05"_s;
    QTest::newRow("fi") << u"fi_FI"_s << u"2.11.2026"_s << u"21.05"_s;
    QTest::newRow("ar") << u"ar_EG"_s << u"٢\u200F/١١\u200F/٢٠٢٦"_s << u"٩:٠٥ م"_s;
    QTest::newRow("ja") << u"ja_JP"_s << u"2026/11/02"_s << u"21:05"_s;
    QTest::newRow("none") << u"C"_s << u"2 Nov 2026"_s << u"21:05"_s;
}

void DetailTextsTest::momentsInTheLocale()
{
    QFETCH(QString, locale);
    const DeviceLocale device(locale);
    const QDateTime moment(QDate(2026, 11, 2), QTime(21, 5, 59));
    QTEST(DetailTexts::date(moment), "date");
    QTEST(DetailTexts::time(moment), "time");
}

// Who reads English, but dates as they are written in Sweden.
void DetailTextsTest::momentsFollowTheirOwnSetting()
{
    qputenv("LC_ALL", "");
    qputenv("LC_TIME", "sv_SE.UTF-8");
    qputenv("LANG", "en_US.UTF-8");
    toolkit::Locale locale;
    toolkit::Locale::setDefault(&locale);
    const QDateTime moment(QDate(2026, 3, 14), QTime(18, 22));
    QCOMPARE(DetailTexts::date(moment), u"2026-03-14"_s);
    QCOMPARE(DetailTexts::time(moment), u"18:22"_s);
    QCOMPARE(DetailTexts::count(1234), u"1,234"_s);
    toolkit::Locale::setDefault(nullptr);
    qunsetenv("LC_TIME");
}

void DetailTextsTest::missingMomentsAreEmpty()
{
    const DeviceLocale english(u"en_GB"_s);
    QCOMPARE(DetailTexts::date({}), QString());
    QCOMPARE(DetailTexts::time({}), QString());
}

void DetailTextsTest::countsInTheLocale_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QString>("text");
    QTest::newRow("en") << u"en_GB"_s << u"1,234"_s;
    QTest::newRow("de") << u"de_DE"_s << u"1.234"_s;
    QTest::newRow("fi") << u"fi_FI"_s << u"1\u00A0234"_s;
    QTest::newRow("ar") << u"ar_EG"_s << u"١٬٢٣٤"_s;
    QTest::newRow("ja") << u"ja_JP"_s << u"1,234"_s;
}

void DetailTextsTest::countsInTheLocale()
{
    QFETCH(QString, locale);
    const DeviceLocale device(locale);
    QTEST(DetailTexts::count(1234), "text");
}

QTEST_MAIN(DetailTextsTest)
#include "tst_detailtexts.moc"
