// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

// The second within which a place in a video lies, as it is told outside and read by people.
[[nodiscard]] constexpr uint wholeSeconds(MediaTime place)
{
    return uint(place / std::chrono::seconds(1));
}
