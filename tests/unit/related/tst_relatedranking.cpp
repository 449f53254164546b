// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedranking.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestRelatedRanking : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void order_data();
    void order();
    void episodesOfMetadata();
    void sameDayIsThatOfTheReader();
    void eachOnceAndNeverItself();
    void noMoreThanAskedFor();
    void tellingWords_data();
    void tellingWords();
};

namespace {

// "folder/name", with a day of its own unless one is given.
RelatedVideo video(const QString &path, const QDateTime &created = {})
{
    RelatedVideo video;
    video.url = u"file:///home/user/Videos/"_s + path;
    video.fileName = path.section(u'/', -1);
    video.created = created;
    return video;
}

QStringList shown(const QList<RelatedEntry> &entries)
{
    const QStringList kinds{u"next"_s, u"previous"_s, u"day"_s, u"folder"_s, u"similar"_s, u"online"_s};
    QStringList list;
    for (const RelatedEntry &entry : entries)
        list.append(kinds.at(int(entry.kinship)) + u' ' + shownTitle(entry.video));
    return list;
}

} // namespace

void TestRelatedRanking::order_data()
{
    QTest::addColumn<QString>("itself");
    QTest::addColumn<QStringList>("others");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("next first, then back")
        << u"a/Show S01E03.mp4"_s
        << QStringList{u"a/Show S01E01.mp4"_s, u"a/Show S01E05.mp4"_s, u"b/show.1x04.mkv"_s,
                       u"a/Show S01E02.mp4"_s}
        << QStringList{u"next show.1x04"_s, u"next Show S01E05"_s, u"previous Show S01E02"_s,
                       u"previous Show S01E01"_s};
    QTest::newRow("over the end of a season")
        << u"a/Show S01E10.mp4"_s
        << QStringList{u"a/Show S02E02.mp4"_s, u"a/Show S02E01.mp4"_s, u"a/Show S01E09.mp4"_s}
        << QStringList{u"next Show S02E01"_s, u"next Show S02E02"_s, u"previous Show S01E09"_s};
    QTest::newRow("ten comes after nine")
        << u"a/Trip part 9.mp4"_s << QStringList{u"a/Trip part 10.mp4"_s, u"a/Trip part 1.mp4"_s}
        << QStringList{u"next Trip part 10"_s, u"previous Trip part 1"_s};
    QTest::newRow("another series is no episode of this")
        << u"a/Show S01E03.mp4"_s << QStringList{u"b/Other S01E04.mp4"_s} << QStringList();
    QTest::newRow("nameless episodes belong to their folder")
        << u"a/S01E03.mp4"_s << QStringList{u"b/S01E04.mp4"_s, u"a/S01E04.mp4"_s}
        << QStringList{u"next S01E04"_s};
    QTest::newRow("the folder goes on after the video, then from its start")
        << u"a/clip 5.mp4"_s
        << QStringList{u"a/clip 2.mp4"_s, u"a/clip 10.mp4"_s, u"a/clip 6.mp4"_s, u"a/clip 1.mp4"_s,
                       u"a/sub/clip 7.mp4"_s}
        << QStringList{u"folder clip 6"_s, u"folder clip 10"_s, u"folder clip 1"_s, u"folder clip 2"_s};
    QTest::newRow("similar titles, the closest first")
        << u"a/Sunset on the beach.mp4"_s
        << QStringList{u"c/Beach sunset at night.mp4"_s, u"b/A beach.mp4"_s, u"d/Beach sunset.mp4"_s,
                       u"e/Mountains.mp4"_s}
        << QStringList{u"similar Beach sunset"_s, u"similar Beach sunset at night"_s, u"similar A beach"_s};
    QTest::newRow("nothing in common")
        << u"a/Sunset.mp4"_s << QStringList{u"b/Mountains.mp4"_s} << QStringList();
}

void TestRelatedRanking::order()
{
    QFETCH(QString, itself);
    QFETCH(QStringList, others);
    QFETCH(QStringList, expected);
    QList<RelatedVideo> candidates;
    for (const QString &other : std::as_const(others))
        candidates.append(video(other));
    QCOMPARE(shown(ranked(video(itself), candidates, 100)), expected);
}

void TestRelatedRanking::episodesOfMetadata()
{
    const auto episode = [](const QString &path, int season, int number) {
        RelatedVideo made = video(path);
        made.series = u"The Show"_s;
        made.season = season;
        made.episode = number;
        return made;
    };
    // Whatever the files are called, and one whose name alone tells it.
    const QList<RelatedVideo> candidates{episode(u"b/xyz.mp4"_s, 1, 2), episode(u"c/abc.mp4"_s, 2, 1),
                                         video(u"d/The Show S01E04.mp4"_s)};
    QCOMPARE(shown(ranked(episode(u"a/qqq.mp4"_s, 1, 3), candidates, 100)),
             QStringList({u"next The Show S01E04"_s, u"next abc"_s, u"previous xyz"_s}));
}

// A video of shortly before midnight and one of shortly after are of two days where the reader lives.
void TestRelatedRanking::sameDayIsThatOfTheReader()
{
    const QDateTime midnight(QDate(2024, 6, 15), QTime(0, 0));
    const auto at
        = [&](const QString &path, int seconds) { return video(path, midnight.addSecs(seconds).toUTC()); };
    const QList<RelatedVideo> candidates{at(u"b/before.mp4"_s, -60), at(u"c/evening.mp4"_s, 80'000),
                                         at(u"d/morning.mp4"_s, 30'000)};
    QCOMPARE(shown(ranked(at(u"a/night.mp4"_s, 60), candidates, 100)),
             QStringList({u"day morning"_s, u"day evening"_s}));
}

void TestRelatedRanking::eachOnceAndNeverItself()
{
    const RelatedVideo itself = video(u"a/Show S01E01.mp4"_s);
    const RelatedVideo next = video(u"a/Show S01E02.mp4"_s);
    QCOMPARE(shown(ranked(itself, {next, itself, next, {}}, 100)), QStringList(u"next Show S01E02"_s));
}

void TestRelatedRanking::noMoreThanAskedFor()
{
    QList<RelatedVideo> candidates;
    for (int i = 2; i < 30; ++i)
        candidates.prepend(video(u"a/Show S01E%1.mp4"_s.arg(i)));
    QCOMPARE(shown(ranked(video(u"a/Show S01E1.mp4"_s), candidates, 2)),
             QStringList({u"next Show S01E2"_s, u"next Show S01E3"_s}));
}

void TestRelatedRanking::tellingWords_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");
    QTest::newRow("small words") << u"The beach and the sea"_s << u"beach sea"_s;
    QTest::newRow("camera") << u"VID_20230401_120000"_s << QString();
    QTest::newRow("formats") << u"Film.Name.2019.1080p.x264"_s << u"name"_s;
    QTest::newRow("episode") << u"Show S01E02 Ending"_s << u"show ending"_s;
    QTest::newRow("twice") << u"Beach beach BEACH"_s << u"beach"_s;
    QTest::newRow("japanese") << u"東京 旅行"_s << u"東京 旅行"_s;
}

void TestRelatedRanking::tellingWords()
{
    QFETCH(QString, name);
    QFETCH(QString, expected);
    RelatedVideo titled;
    titled.title = name;
    QCOMPARE(::tellingWords(titled).join(u' '), expected);
}

QTEST_APPLESS_MAIN(TestRelatedRanking)
#include "tst_relatedranking.moc"
