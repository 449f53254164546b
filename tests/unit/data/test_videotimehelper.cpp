// SPDX-License-Identifier: GPL-3.0-or-later
#include <data/videotimehelper.h>

#include <QLocale>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestVideoTimeHelper : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void durations_data();
    void durations();
    void digitsAreThoseOfTheLocale();
    void noDirectionalMarksRemain();
    void cleanup() { QLocale::setDefault(QLocale::c()); }
};

void TestVideoTimeHelper::durations_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0 << u"00:00"_s;
    QTest::newRow("below a minute") << 59 << u"00:59"_s;
    QTest::newRow("a minute") << 60 << u"01:00"_s;
    QTest::newRow("minutes and seconds") << 65 << u"01:05"_s;
    QTest::newRow("ten minutes") << 600 << u"10:00"_s;
    QTest::newRow("below an hour") << 3599 << u"59:59"_s;
    QTest::newRow("an hour and more") << 3725 << u"1:02:05"_s;
    QTest::newRow("ten hours") << 36000 << u"10:00:00"_s;
}

void TestVideoTimeHelper::durations()
{
    QFETCH(int, seconds);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QTEST(VideoTimeHelper::formatDuration(seconds), "text");
}

void TestVideoTimeHelper::digitsAreThoseOfTheLocale()
{
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    QCOMPARE(VideoTimeHelper::formatDuration(3725), u"١:٠٢:٠٥"_s);
}

void TestVideoTimeHelper::noDirectionalMarksRemain()
{
    static const QString marks = u"\u200F\u200E\u202D\u202E\u202A\u202B\u202C"_s;
    for (const QLocale &locale :
         {QLocale(QLocale::Hebrew), QLocale(QLocale::Persian), QLocale(QLocale::Arabic)}) {
        QLocale::setDefault(locale);
        for (const QChar character : VideoTimeHelper::formatDuration(3725))
            QVERIFY2(!marks.contains(character), qPrintable(locale.name()));
    }
}

QTEST_GUILESS_MAIN(TestVideoTimeHelper)
#include "test_videotimehelper.moc"
