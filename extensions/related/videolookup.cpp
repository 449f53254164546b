// SPDX-License-Identifier: GPL-3.0-or-later
#include "videolookup.h"

#include "storepeer.h"

#include <algorithm>

namespace {

constexpr LibraryQuestions::Part parts[]
    = {LibraryQuestions::Part::Names, LibraryQuestions::Part::Kind, LibraryQuestions::Part::Time};

}

VideoLookup::VideoLookup(StorePeer &store, QObject *parent) : QObject(parent), m_store(store) { }

void VideoLookup::clear()
{
    m_entries.clear();
    m_seasons.clear();
}

void VideoLookup::ask(const SharedRequest &request, const QString &question, const Row &row,
                      void (VideoLookup::*next)(const SharedRequest &))
{
    ++request->open;
    m_store.ask(question, [=, this](const QList<QStringList> &rows, const QString &error) {
        if (!error.isEmpty()) {
            Q_EMIT failed(error);
            return;
        }
        for (const QStringList &cells : rows)
            row(cells.value(0).toInt(), cells);
        if (--request->open == 0)
            (this->*next)(request);
    });
}

void VideoLookup::look(const QList<int> &ids, const Found &found)
{
    const auto request = std::make_shared<Request>(Request{ids, found});
    QList<int> unknown;
    std::copy_if(ids.cbegin(), ids.cend(), std::back_inserter(unknown),
                 [this](int id) { return m_entries.value(id).parts < int(std::size(parts)); });
    if (unknown.isEmpty()) {
        answer(request);
        return;
    }
    for (const LibraryQuestions::Part part : parts) {
        const auto row = [this, part](int id, const QStringList &cells) {
            Entry &entry = m_entries[id];
            LibraryQuestions::takePart(part, cells, entry.video, entry.season);
            ++entry.parts;
        };
        ask(request, LibraryQuestions::part(part, unknown), row, &VideoLookup::askSeasons);
    }
}

void VideoLookup::askSeasons(const SharedRequest &request)
{
    QList<int> seasons;
    for (const int id : std::as_const(request->ids)) {
        const int season = m_entries.value(id).season;
        if (season != 0 && !m_seasons.contains(season) && !seasons.contains(season))
            seasons.append(season);
    }
    if (seasons.isEmpty()) {
        answer(request);
        return;
    }
    const auto number = [this](int id, const QStringList &cells) {
        m_seasons[id].number = LibraryQuestions::numberOf(cells.value(1));
    };
    const auto series = [this](int id, const QStringList &cells) { m_seasons[id].series = cells.value(1); };
    ask(request, LibraryQuestions::seasonNumbers(seasons), number, &VideoLookup::answer);
    ask(request, LibraryQuestions::seriesOf(seasons), series, &VideoLookup::answer);
}

void VideoLookup::answer(const SharedRequest &request)
{
    QList<RelatedVideo> videos;
    for (const int id : std::as_const(request->ids)) {
        const auto entry = m_entries.constFind(id);
        if (entry == m_entries.cend() || entry->parts < int(std::size(parts)))
            continue;
        RelatedVideo video = entry->video;
        if (const auto season = m_seasons.constFind(entry->season); season != m_seasons.cend()) {
            video.series = season->series;
            video.season = season->number;
        }
        videos.append(video);
    }
    request->found(videos);
}
