// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/videoframe.h>

#include <QList>
#include <QString>

// A part of a subtitle's words that looks different.
struct SubtitleSpan
{
    int start = 0;
    int length = 0;
    bool bold = false;
    bool italic = false;
    bool underlined = false;

    [[nodiscard]] bool operator==(const SubtitleSpan &) const = default;
};

// What is to be read.
struct SubtitleText
{
    QString words; // without markup; lines end with \n
    QList<SubtitleSpan> spans; // in order, none over another
    bool above = false; // at the upper edge of the picture, the lower being taken

    [[nodiscard]] bool isEmpty() const { return words.isEmpty(); }
    [[nodiscard]] bool operator==(const SubtitleText &) const = default;
};

struct SubtitleCue
{
    MediaTime start{0};
    MediaTime end{0};
    SubtitleText text;
};

namespace subtitles {

// Beyond these nothing is kept: what people made to be read stays far below.
constexpr qint64 LargestFile = 16 * 1024 * 1024;
constexpr int MostCues = 50'000; // of one track
constexpr int MostCharacters = 8 * 1024 * 1024; // of one track
constexpr int LongestText = 2'000; // characters of one cue
constexpr int MostLines = 12; // of one cue
constexpr int MostSpans = 100; // of one cue
constexpr int MostAtOnce = 6; // cues

} // namespace subtitles
