// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedrows.h"

#include "relatedtexts.h"
#include "textrow.h"
#include "videorow.h"

#include <QLocale>

#include <algorithm>

namespace {

const char *headingId(Kinship kinship)
{
    switch (kinship) {
    case Kinship::NextEpisode:
        return "related_next";
    case Kinship::PreviousEpisode:
        return "related_previous";
    case Kinship::SameDay:
        return "related_same_day";
    case Kinship::SameFolder:
        return "related_same_folder";
    case Kinship::SimilarTitle:
        return "related_similar";
    case Kinship::Online:
        break;
    }
    return "related_online";
}

} // namespace

RelatedRows::RelatedRows(const RelatedTexts &texts, Pictures &pictures, QObject *parent)
    : QObject(parent),
      m_texts(texts),
      m_pictures(pictures)
{
}

QList<TouchRow *> RelatedRows::few(const List &list)
{
    const QList<RelatedEntry> &entries = list.entries;
    QList<TouchRow *> rows{new TextRow(TextRow::Kind::Title, m_texts.text("related_videos"))};
    appendState(rows, list);
    appendVideos(rows, entries.first(std::min<qsizetype>(entries.size(), fewEntries)));
    if (entries.size() > fewEntries) {
        auto *row = new TextRow(TextRow::Kind::Button,
                                m_texts.text("related_show_all").arg(QLocale().toString(entries.size())));
        connect(row, &TouchRow::tapped, this, &RelatedRows::allWanted);
        rows.append(row);
    }
    appendFailure(rows, list);
    return rows;
}

QList<TouchRow *> RelatedRows::all(const List &list)
{
    QList<TouchRow *> rows;
    appendState(rows, list);
    appendVideos(rows, list.entries);
    appendFailure(rows, list);
    return rows;
}

void RelatedRows::appendMessage(QList<TouchRow *> &rows, const char *id)
{
    rows.append(new TextRow(TextRow::Kind::Message, m_texts.text(id)));
}

// Of the library, whose part comes first.
void RelatedRows::appendState(QList<TouchRow *> &rows, const List &list)
{
    if (list.state == RelatedFinder::State::Failed) {
        appendMessage(rows, "related_failed");
        if (!list.hasProviderFailed)
            appendAgain(rows);
    } else if (list.entries.isEmpty()) {
        appendMessage(rows, list.state == RelatedFinder::State::Looking ? "related_looking" : "related_none");
    }
}

// Of the provider, in the place of its part. One button is for both.
void RelatedRows::appendFailure(QList<TouchRow *> &rows, const List &list)
{
    if (!list.hasProviderFailed)
        return;
    appendMessage(rows, "related_online_failed");
    appendAgain(rows);
}

void RelatedRows::appendAgain(QList<TouchRow *> &rows)
{
    auto *row = new TextRow(TextRow::Kind::Button, m_texts.text("related_try_again"));
    connect(row, &TouchRow::tapped, this, &RelatedRows::againWanted);
    rows.append(row);
}

void RelatedRows::appendVideos(QList<TouchRow *> &rows, const QList<RelatedEntry> &entries)
{
    const RelatedEntry *before = nullptr;
    for (const RelatedEntry &entry : entries) {
        if (!before || before->kinship != entry.kinship)
            rows.append(new TextRow(TextRow::Kind::Heading, m_texts.text(headingId(entry.kinship))));
        before = &entry;
        auto *row = new VideoRow(entry.video, m_texts, m_pictures);
        connect(row, &TouchRow::tapped, this, [this, url = entry.video.url] { Q_EMIT chosen(url); });
        rows.append(row);
    }
}
