// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

// A video that is left this close to its end begins anew the next time.
constexpr quint32 endMarginSeconds = 2;

// Both in seconds. Unsigned on purpose: a position beyond a duration that the store has wrong, or not at all,
// counts as in the middle.
[[nodiscard]] constexpr bool isLeftAtEnd(quint32 duration, quint32 position)
{
    return duration - position <= endMarginSeconds;
}

// The place that is kept of a video which was left at `position`.
[[nodiscard]] constexpr quint32 resumePosition(quint32 duration, quint32 position)
{
    return isLeftAtEnd(duration, position) ? 0 : position;
}
