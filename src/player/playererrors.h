// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// What a renderer's error code means for the person and for the playback.
struct PlayerError
{
    const char *messageId = nullptr; // null: nothing is said
    bool critical = false; // the playback is over
};

[[nodiscard]] PlayerError playerErrorFor(int code, bool callActive);
