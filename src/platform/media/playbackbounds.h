// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

// What can be chosen for a video: of more or less nobody would hear or see anything sensible.
namespace playbackbounds {

constexpr double SlowestRate = 0.25;
constexpr double FastestRate = 4;
constexpr qreal SmallestSubtitles = 0.5; // times as large as usual
constexpr qreal LargestSubtitles = 3;
constexpr MediaTime LongestDelay = std::chrono::hours(1); // of subtitles, both ways

} // namespace playbackbounds
