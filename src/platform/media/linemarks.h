// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controlslider.h"
#include "mediatracks.h"

#include <QList>

// Where chapters begin on a line from 0 to 1; the very beginning is none.
[[nodiscard]] QList<qreal> chapterMarks(const QList<MediaChapter> &chapters, MediaTime duration);
// Nothing: none of it is on the line of a video of this length (0: unknown).
[[nodiscard]] std::optional<LinePart> sectionOnLine(const MediaSection &section, MediaTime duration);
// Of the chapter that plays at a time; empty between chapters.
[[nodiscard]] QString chapterTitle(const QList<MediaChapter> &chapters, MediaTime time);
