// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

#include <QString>

// One of the sound or subtitle tracks of a video.
struct MediaTrack
{
    QString id; // the same whenever this file is played
    QString language; // as the file has it: ISO 639 code, or empty
    QString title; // the file's own name for it, or empty
    QString codec; // in words, or empty
    bool external = false; // from a file beside the video

    [[nodiscard]] bool operator==(const MediaTrack &) const = default;
};

struct MediaChapter
{
    MediaTime start{0};
    MediaTime end{0}; // 0: up to the next one, or to the end
    QString title;

    [[nodiscard]] bool operator==(const MediaChapter &) const = default;
};

// Plays from `start` to `end`, and from `start` again.
struct MediaSection
{
    MediaTime start{0};
    MediaTime end{0};

    [[nodiscard]] bool operator==(const MediaSection &) const = default;
};
