// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "libraryquestions.h"
#include "relatedvideo.h"

#include <QHash>
#include <QObject>

#include <functional>
#include <memory>

class StorePeer;

// Reads what the library knows of videos, by their identifiers.
class VideoLookup : public QObject
{
    Q_OBJECT

public:
    // The store outlives the look-up.
    explicit VideoLookup(StorePeer &store, QObject *parent = nullptr);

    using Found = std::function<void(const QList<RelatedVideo> &videos)>;
    // Those that are videos, in this order. Answered once, unless failed() or clear() comes first.
    void look(const QList<int> &ids, const Found &found);
    // Forgets what was read, and what is being read.
    void clear();

Q_SIGNALS:
    void failed(QString reason);

private:
    struct Entry
    {
        RelatedVideo video;
        int season = 0; // its resource
        int parts = 0;
    };
    struct Request
    {
        QList<int> ids;
        Found found;
        int open = 0; // questions without an answer
    };
    using SharedRequest = std::shared_ptr<Request>;
    using Row = std::function<void(int id, const QStringList &row)>;

    void ask(const SharedRequest &request, const QString &question, const Row &row,
             void (VideoLookup::*next)(const SharedRequest &));
    void askSeasons(const SharedRequest &request);
    void answer(const SharedRequest &request);

    struct Season
    {
        QString series;
        int number = -1;
    };
    StorePeer &m_store;
    QHash<int, Entry> m_entries;
    QHash<int, Season> m_seasons;
};
