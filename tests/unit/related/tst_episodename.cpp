// SPDX-License-Identifier: GPL-3.0-or-later
#include "episodename.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestEpisodeName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void names_data();
    void names();
    void noEpisodes_data();
    void noEpisodes();
    void otherNumbersInTheSameSpelling();
};

namespace {

QString shown(const EpisodeName &episode)
{
    return episode.isEpisode()
        ? u"%1 | %2 | %3"_s.arg(episode.series).arg(episode.season).arg(episode.episode)
        : u"none"_s;
}

} // namespace

void TestEpisodeName::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected"); // series | season | episode
    const auto row = [](const QString &name, const QString &expected) {
        QTest::newRow(qPrintable(name)) << name << expected;
    };
    row(u"Show S02E05"_s, u"show | 2 | 5"_s);
    row(u"show.s02e05.720p.x264"_s, u"show | 2 | 5"_s);
    row(u"The_Long_Show_-_S1_E12_-_The_End"_s, u"the long show | 1 | 12"_s);
    row(u"Show [S01E100]"_s, u"show | 1 | 100"_s);
    row(u"Show S01EP03"_s, u"show | 1 | 3"_s);
    row(u"Show 2x05"_s, u"show | 2 | 5"_s);
    row(u"show.12x110.title"_s, u"show | 12 | 110"_s);
    row(u"2x05"_s, u" | 2 | 5"_s);
    row(u"S02E05 Title"_s, u" | 2 | 5"_s);
    row(u"Show Season 2 Episode 5"_s, u"show | 2 | 5"_s);
    row(u"Serie, Staffel 3, Folge 4"_s, u"serie | 3 | 4"_s);
    row(u"Série - Saison 1 - Épisode 2"_s, u"série | 1 | 2"_s);
    row(u"Serie Temporada 1 Capítulo 7"_s, u"serie | 1 | 7"_s);
    row(u"Holiday, part 3"_s, u"holiday | -1 | 3"_s);
    row(u"Holiday pt.2"_s, u"holiday | -1 | 2"_s);
    row(u"Ferien Teil 3"_s, u"ferien | -1 | 3"_s);
    row(u"Vacances partie 3"_s, u"vacances | -1 | 3"_s);
    row(u"Loma osa 3"_s, u"loma | -1 | 3"_s);
    row(u"Отпуск, часть 3"_s, u"отпуск | -1 | 3"_s);
    row(u"物語 第12話"_s, u"物語 | -1 | 12"_s);
    row(u"故事 第2季 第05集"_s, u"故事 | 2 | 5"_s);
    row(u"المسلسل الحلقة 4"_s, u"المسلسل | -1 | 4"_s);
    row(u"The Film Part II"_s, u"the film | -1 | 2"_s);
    row(u"The Film Part IX"_s, u"the film | -1 | 9"_s);
    row(u"Lesson #7"_s, u"lesson | -1 | 7"_s);
    row(u"Episode 7"_s, u" | -1 | 7"_s);
}

void TestEpisodeName::names()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    QCOMPARE(shown(episodeOf(name)), expected);
}

void TestEpisodeName::noEpisodes_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name :
         {u""_s, u"A film"_s, u"Film 2019"_s, u"VID_20230401_120000"_s, u"clip 1920x1080"_s, u"clip 720p"_s,
          u"16x9"_s, u"party 3"_s, u"Department 5"_s, u"part of it"_s, u"steps 3"_s, u"IMG_0012"_s,
          u"Part 99999"_s, u"H264 and x265"_s, u"part five"_s})
        QTest::newRow(qPrintable(name)) << name;
}

void TestEpisodeName::noEpisodes()
{
    QFETCH(QString, name);
    QCOMPARE(shown(episodeOf(name)), u"none"_s);
}

void TestEpisodeName::otherNumbersInTheSameSpelling()
{
    const NumberedName name = numberedName(u"The_Show.s01e09.The.End.mkv"_s);
    QCOMPARE(name.series, u"The_Show."_s);
    QCOMPARE(name.upTo(8), QStringList({u"The_Show.s01e08"_s, u"The_Show.s01e8"_s}));
    QCOMPARE(name.upTo(10), QStringList{u"The_Show.s01e10"_s});
    QCOMPARE(name.after, u".The.End.mkv"_s);
    QCOMPARE(numberedName(u"Holiday, part 3"_s).upTo(12), QStringList{u"Holiday, part 12"_s});
    // Numbers in letters have a series, but no other numbers.
    QCOMPARE(numberedName(u"The Film Part II"_s).series, u"The Film "_s);
    QVERIFY(!numberedName(u"The Film Part II"_s).isNumbered());
    QVERIFY(!numberedName(u"VID_20200101"_s).isNumbered());
}

QTEST_APPLESS_MAIN(TestEpisodeName)
#include "tst_episodename.moc"
