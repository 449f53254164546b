// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "toldfile.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <optional>

// The questions to the desktop's file index and how its rows are read.

// A question whose rows begin with the file; the other columns are some of what is known of a video.
struct IndexQuestion
{
    QString text;
    int firstColumn = 0;
    // Its rows are the videos; those of the questions before it are details of some.
    [[nodiscard]] bool isLast() const;
};

// Every video that it knows, and the video files that it has not read yet; to be asked in this order.
[[nodiscard]] QList<IndexQuestion> allVideosQuestions();
// How many rows those have at most.
[[nodiscard]] QString fileCountQuery();
// The same of resources, which may be files or what lies in them. Names that cannot stand in a query are left
// out; empty when none is left.
[[nodiscard]] QList<IndexQuestion> videosQuestions(const QStringList &urns);
// Those among resources that are folders which the index follows.
[[nodiscard]] QString indexedFoldersQuery(const QStringList &urns);

// Keeps a row of details, by the file's name in the index.
void takeDetails(const IndexQuestion &question, const QStringList &cells,
                 QHash<QString, QStringList> *details);
// A row of a last question; none when it is not about a local file.
[[nodiscard]] std::optional<ToldFile> toldFileOf(const QStringList &row,
                                                 const QHash<QString, QStringList> &details);
