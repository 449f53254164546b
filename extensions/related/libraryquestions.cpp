// SPDX-License-Identifier: GPL-3.0-or-later
#include "libraryquestions.h"

#include "relatedranking.h"
#include "storepeer.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int mostSeasons = 500;
constexpr int mostNames = 120; // rows of a series by its name
constexpr int mostOfANumber = 24; // the words of "Part 2" also begin "Part 20"
constexpr int mostOfAWord = 40;
constexpr int mostWords = 5;
constexpr int mostPairs = 3;
constexpr int episodesAround = 4;
constexpr int numbersAround = 100;
constexpr int mostNumbered = 5000;

QString select(const QString &columns, const QString &where, const QString &end = {})
{
    return u"SELECT "_s + columns + u" WHERE { "_s + where + u" } "_s + end;
}

QString limit(int rows)
{
    return u"LIMIT %1"_s.arg(rows);
}

QString idList(const QList<int> &ids)
{
    QStringList texts;
    for (const int id : ids)
        texts.append(QString::number(id));
    return texts.join(u',');
}

// Cells of resources, after their identifiers.
QString ofIds(const QString &cells, const QString &type, const QList<int> &ids)
{
    return select(u"tracker:id(?x) "_s + cells,
                  u"?x a "_s + type + u" FILTER (tracker:id(?x) IN ("_s + idList(ids) + u"))"_s);
}

// The full-text index takes a text as words that follow each other, the last of which goes on.
QString beginsWords(const QString &words, int rows)
{
    return select(u"tracker:id(?v)"_s, u"?v fts:match "_s + StorePeer::literal(words) + u" ; a nmm:Video"_s,
                  limit(rows));
}

// On one side of a value, up to an end.
QString range(const QString &property, const QString &from, const QString &end, bool after)
{
    const QString bounds = (after ? u"?x > %1 && ?x < %2"_s : u"?x < %1 && ?x > %2"_s)
                               .arg(StorePeer::literal(from), StorePeer::literal(end));
    return select(
        u"tracker:id(?v) ?x"_s, u"?v a nmm:Video ; "_s + property + u" ?x FILTER ("_s + bounds + u')',
        (after ? u"ORDER BY ?x "_s : u"ORDER BY DESC(?x) "_s) + limit(LibraryQuestions::mostOfASide));
}

// Names that are spelled like this one, with numbers near its own.
QStringList namesAround(const NumberedName &name, int episode)
{
    QStringList names;
    for (int number = std::max(0, episode - episodesAround); number <= episode + episodesAround; ++number) {
        if (number != episode)
            names += name.upTo(number);
    }
    return names;
}

QStringList episodesByFileName(const QString &fileName)
{
    const NumberedName name = numberedName(fileName);
    if (name.series.trimmed().isEmpty() || !name.isNumbered())
        return {};
    const QString end = LibraryQuestions::endOf(name.series);
    QStringList exact;
    for (const QString &other : namesAround(name, name.digits.toInt()))
        exact.append(StorePeer::literal(other + name.after));
    return {range(u"nfo:fileName"_s, fileName, end, true),
            range(u"nfo:fileName"_s, fileName, name.series, false),
            select(u"tracker:id(?v)"_s,
                   u"?v a nmm:Video ; nfo:fileName ?x FILTER (?x IN ("_s + exact.join(u',') + u"))"_s,
                   limit(LibraryQuestions::mostOfASide))};
}

QStringList episodesByWords(const QString &text)
{
    const NumberedName name = numberedName(text);
    QStringList questions;
    if (wordsOf(name.series).isEmpty())
        return questions;
    questions.append(beginsWords(name.series, mostNames));
    if (!name.isNumbered())
        return questions;
    QStringList each;
    for (const QString &words : namesAround(name, name.digits.toInt()))
        each.append(u"{ SELECT ?v { ?v fts:match "_s + StorePeer::literal(words) + u" } "_s
                    + limit(mostOfANumber) + u" }"_s);
    questions.append(select(u"tracker:id(?v)"_s, each.join(u" UNION "_s)));
    return questions;
}

} // namespace

QString LibraryQuestions::nextTo(const QString &url, const QString &end, bool after)
{
    return range(u"nie:url"_s, url, end, after);
}

QString LibraryQuestions::endOf(const QString &beginning)
{
    return beginning + QString::fromUcs4(U"\U0010FFFD"); // after every other character
}

QStringList LibraryQuestions::episodes(const RelatedVideo &video)
{
    const EpisodeName episode = episodeOf(video);
    if (!episode.isEpisode() || episode.series.contains(u'/'))
        return {};
    QStringList questions = episodesByFileName(video.fileName);
    questions += episodesByWords(video.title);
    questions += episodesByWords(video.fileName);
    questions.append(beginsWords(episode.series, mostNames));
    questions.removeDuplicates();
    return questions;
}

QStringList LibraryQuestions::similar(const RelatedVideo &video)
{
    const QStringList all = wordsOf(shownTitle(video));
    QStringList telling = tellingWords(video);
    QStringList questions;
    for (qsizetype i = 0; i + 1 < all.size() && questions.size() < mostPairs; ++i) {
        if (telling.contains(all.at(i)) && telling.contains(all.at(i + 1)))
            questions.append(beginsWords(all.at(i) + u' ' + all.at(i + 1), mostOfAWord));
    }
    // Long words tell more.
    std::stable_sort(telling.begin(), telling.end(),
                     [](const QString &one, const QString &other) { return one.size() > other.size(); });
    for (const QString &word : telling.first(std::min<qsizetype>(telling.size(), mostWords)))
        questions.append(beginsWords(word, mostOfAWord));
    questions.removeDuplicates();
    return questions;
}

QString LibraryQuestions::seasons(const QString &series)
{
    return select(u"tracker:id(?s)"_s,
                  u"?w nie:title "_s + StorePeer::literal(series)
                      + u" ; a nmm:TVSeries . ?s nmm:seasonOf ?w"_s,
                  limit(mostSeasons));
}

QString LibraryQuestions::episodesOf(const QList<int> &seasons)
{
    return select(u"tracker:id(?v) tracker:id(?s)"_s,
                  u"?v nmm:isPartOfSeason ?s FILTER (tracker:id(?s) IN ("_s + idList(seasons) + u"))"_s,
                  limit(mostOfASeries));
}

QString LibraryQuestions::ofUrl(const QString &url)
{
    return select(u"tracker:id(?v)"_s, u"?v nie:url "_s + StorePeer::literal(url) + u" ; a nmm:Video"_s,
                  limit(1));
}

QString LibraryQuestions::part(Part part, const QList<int> &videos)
{
    switch (part) {
    case Part::Names:
        return ofIds(u"nie:url(?x) nfo:fileName(?x) nie:title(?x) nfo:duration(?x) nmm:episodeNumber(?x)"_s,
                     u"nmm:Video"_s, videos);
    case Part::Kind:
        return ofIds(u"nie:mimeType(?x) tracker:id(nmm:isPartOfSeason(?x))"_s, u"nmm:Video"_s, videos);
    case Part::Time:
        break;
    }
    return ofIds(u"nmm:runTime(?x) nie:contentCreated(?x)"_s, u"rdfs:Resource"_s, videos);
}

void LibraryQuestions::takePart(Part part, const QStringList &row, RelatedVideo &video, int &season)
{
    switch (part) {
    case Part::Names:
        video.id = row.value(0).toInt();
        video.url = row.value(1);
        video.fileName = row.value(2);
        video.title = row.value(3);
        video.duration = std::max(0, row.value(4).toInt());
        video.episode = numberOf(row.value(5));
        break;
    case Part::Kind:
        video.mimeType = row.value(1);
        season = row.value(2).toInt();
        break;
    case Part::Time:
        video.position = std::max(0, row.value(1).toInt());
        video.created = QDateTime::fromString(row.value(2), Qt::ISODate);
        break;
    }
}

int LibraryQuestions::numberOf(const QString &cell)
{
    return cell.isEmpty() ? -1 : cell.toInt();
}

QString LibraryQuestions::episodesNumbered(int number, int firstId, int lastId)
{
    return select(u"tracker:id(?v) ?n"_s,
                  u"?v nmm:episodeNumber ?n FILTER (tracker:id(?v) >= %1 && tracker:id(?v) <= %2 "
                  "&& ?n >= %3 && ?n <= %4)"_s.arg(firstId)
                      .arg(lastId)
                      .arg(number - numbersAround)
                      .arg(number + numbersAround),
                  limit(mostNumbered));
}

QString LibraryQuestions::seasonNumbers(const QList<int> &seasons)
{
    return ofIds(u"nmm:seasonNumber(?x)"_s, u"rdfs:Resource"_s, seasons);
}

QString LibraryQuestions::seriesOf(const QList<int> &seasons)
{
    return ofIds(u"nie:title(nmm:seasonOf(?x))"_s, u"rdfs:Resource"_s, seasons);
}
