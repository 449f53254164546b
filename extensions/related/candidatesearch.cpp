// SPDX-License-Identifier: GPL-3.0-or-later
#include "candidatesearch.h"

#include "libraryquestions.h"
#include "relatedranking.h"
#include "storepeer.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr int mostOfADay = 60;
// A folder may hold folders with thousands of videos, which stand among its own.
constexpr int mostSteps = 8;
constexpr qsizetype fewEpisodes = 200;

} // namespace

CandidateSearch::CandidateSearch(StorePeer &store, QObject *parent) : QObject(parent), m_store(store) { }

void CandidateSearch::start(const RelatedVideo &video)
{
    m_video = video;
    m_ids = {};
    m_episodes.clear();
    m_numbers.clear();
    m_open = 1; // answers come later, in any case
    askSeries();
    for (const QString &question : LibraryQuestions::episodes(video))
        askIds(Series, question);
    askDay();
    if (video.url.startsWith(QLatin1String("file:"))) {
        for (const bool after : {true, false})
            askNeighbours(after, video.url, LibraryQuestions::mostOfASide, mostSteps);
    }
    for (const QString &question : LibraryQuestions::similar(video))
        askIds(Similar, question);
    --m_open;
    if (m_open == 0)
        QMetaObject::invokeMethod(this, &CandidateSearch::finished, Qt::QueuedConnection);
}

QList<int> CandidateSearch::ids() const
{
    QList<int> all;
    QSet<int> seen{m_video.id, 0};
    for (const QList<int> &group : m_ids) {
        for (const int id : group) {
            if (all.size() < mostIds && !seen.contains(id))
                all.append(id);
            seen.insert(id);
        }
    }
    return all;
}

void CandidateSearch::ask(const QString &question, const std::function<void(const Rows &rows)> &take)
{
    ++m_open;
    m_store.ask(question, [this, take](const Rows &rows, const QString &error) {
        if (!error.isEmpty()) {
            m_open = 0;
            Q_EMIT failed(error);
            return;
        }
        take(rows);
        done();
    });
}

void CandidateSearch::done()
{
    if (--m_open == 0)
        Q_EMIT finished();
}

void CandidateSearch::askIds(Group group, const QString &question)
{
    ask(question, [this, group](const Rows &rows) {
        for (const QStringList &row : rows)
            m_ids[group].append(row.value(0).toInt());
    });
}

void CandidateSearch::askNeighbours(bool after, const QString &from, qsizetype missing, int steps)
{
    const QString folder = folderOf(m_video.url);
    const QString end = after ? LibraryQuestions::endOf(folder) : folder;
    ask(LibraryQuestions::nextTo(from, end, after),
        [this, after, missing, steps](const Rows &rows) { takeNeighbours(after, rows, missing, steps - 1); });
}

void CandidateSearch::takeNeighbours(bool after, const Rows &rows, qsizetype missing, int steps)
{
    const QString folder = folderOf(m_video.url);
    for (const QStringList &row : rows) {
        if (folderOf(row.value(1)) == folder) {
            m_ids[Folder].append(row.value(0).toInt());
            --missing;
        }
    }
    if (rows.size() < LibraryQuestions::mostOfASide || missing <= 0 || steps <= 0)
        return;
    // From beyond the folder in which these end.
    QString last = rows.constLast().value(1);
    if (const qsizetype slash = last.indexOf(u'/', folder.size()); slash >= 0) {
        last.truncate(slash + 1);
        if (after)
            last = LibraryQuestions::endOf(last);
    }
    askNeighbours(after, last, missing, steps);
}

void CandidateSearch::askDay()
{
    if (!m_video.created.isValid())
        return;
    const QDateTime start = m_video.created.toLocalTime().date().startOfDay();
    ++m_open;
    m_store.askRecorded(start, start.addDays(1), m_video.created, mostOfADay, [this](const QList<int> &ids) {
        m_ids[Day] = ids;
        done();
    });
}

void CandidateSearch::askSeries()
{
    if (m_video.series.isEmpty())
        return;
    ask(LibraryQuestions::seasons(m_video.series), [this](const Rows &rows) {
        QList<int> seasons;
        for (const QStringList &row : rows)
            seasons.append(row.value(0).toInt());
        if (!seasons.isEmpty())
            ask(LibraryQuestions::episodesOf(seasons), [this](const Rows &found) { takeEpisodes(found); });
    });
}

void CandidateSearch::takeEpisodes(const Rows &rows)
{
    if (rows.size() <= fewEpisodes) {
        for (const QStringList &row : rows)
            m_ids[Series].append(row.value(0).toInt());
        return;
    }
    QSet<int> seasons;
    for (const QStringList &row : rows) {
        m_episodes.append({row.value(0).toInt(), row.value(1).toInt()});
        seasons.insert(m_episodes.constLast().season);
    }
    const auto unanswered = std::make_shared<int>(2);
    const auto take = [this, unanswered](const Rows &found) {
        for (const QStringList &row : found)
            m_numbers.insert(row.value(0).toInt(), LibraryQuestions::numberOf(row.value(1)));
        if (--*unanswered == 0)
            takeNearest();
    };
    // Videos of a series came into the library together, most of the time.
    const auto [first, last]
        = std::minmax_element(m_episodes.cbegin(), m_episodes.cend(),
                              [](const Episode &one, const Episode &other) { return one.id < other.id; });
    ask(LibraryQuestions::episodesNumbered(episodeOf(m_video).episode, first->id, last->id), take);
    ask(LibraryQuestions::seasonNumbers(seasons.values()), take);
}

// The nearest on either side.
void CandidateSearch::takeNearest()
{
    const EpisodeName own = episodeOf(m_video);
    QList<std::pair<double, int>> sides[2];
    for (const Episode &episode : std::as_const(m_episodes)) {
        const int number = m_numbers.value(episode.id, -1);
        if (number < 0)
            continue;
        const double steps = episodeDistance(own, {QString(), m_numbers.value(episode.season, -1), number});
        sides[steps > 0 ? 0 : 1].append({std::abs(steps), episode.id});
    }
    for (auto &side : sides) {
        std::sort(side.begin(), side.end());
        side.resize(std::min(side.size(), fewEpisodes / 2));
        for (const auto &[steps, id] : std::as_const(side))
            m_ids[Series].append(id);
    }
}
