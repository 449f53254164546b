// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "episodename.h"
#include "relatedvideo.h"

#include <QList>

// Where a video stands in its series: by its metadata, else by its title, else by the name of its file. An
// episode without a name of the series belongs to its folder.
[[nodiscard]] EpisodeName episodeOf(const RelatedVideo &video);

// Steps from one episode to another of the same series; negative: to one before it.
[[nodiscard]] double episodeDistance(const EpisodeName &from, const EpisodeName &to);

// The words by which titles are similar: no numbers, no single letters, no word that stands in every title.
[[nodiscard]] QStringList tellingWords(const RelatedVideo &video);

// From 0 (nothing in common) to 1 (the same words).
[[nodiscard]] double similarity(const QStringList &words, const QStringList &others);

// Puts what may belong to a video into order, each of them once and at most `most`: the episodes that follow,
// those before it, videos recorded on the same day, the neighbours in the same folder, similar titles.
// What belongs to it in no way is left out.
[[nodiscard]] QList<RelatedEntry> ranked(const RelatedVideo &video, const QList<RelatedVideo> &candidates,
                                         int most);
