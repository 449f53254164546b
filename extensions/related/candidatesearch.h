// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedvideo.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <array>
#include <functional>

class StorePeer;

// Finds which videos of the library may belong to one, by questions that go by an index each, all at once.
class CandidateSearch : public QObject
{
    Q_OBJECT

public:
    // The store outlives the search.
    explicit CandidateSearch(StorePeer &store, QObject *parent = nullptr);

    // Ends with finished() or failed(), never before this returns. What was searched before is forgotten; the
    // one who starts sees to it that the store forgets too.
    void start(const RelatedVideo &video);
    [[nodiscard]] bool isRunning() const { return m_open > 0; }
    // What was found so far, the closest kin first.
    [[nodiscard]] QList<int> ids() const;

    static constexpr int mostIds = 600;

Q_SIGNALS:
    void finished();
    void failed(QString reason);

private:
    enum Group { Series, Day, Folder, Similar, groups };
    using Rows = QList<QStringList>;

    void ask(const QString &question, const std::function<void(const Rows &rows)> &take);
    void askIds(Group group, const QString &question);
    void askNeighbours(bool after, const QString &from, qsizetype missing, int steps);
    void takeNeighbours(bool after, const Rows &rows, qsizetype missing, int steps);
    void askDay();
    void askSeries();
    void takeEpisodes(const Rows &rows);
    void takeNearest();
    void done();

    struct Episode
    {
        int id = 0;
        int season = 0;
    };
    StorePeer &m_store;
    RelatedVideo m_video;
    std::array<QList<int>, groups> m_ids;
    QList<Episode> m_episodes; // of the series, when these are many
    QHash<int, int> m_numbers; // of episodes, and of the seasons
    int m_open = 0; // questions without an answer
};
