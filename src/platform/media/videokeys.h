// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeyEvent>

// What a key asks of a video widget. Space, Left, Right, Backspace and Escape belong to the page and the
// window.
enum class VideoKey {
    None, // shows the controls
    Silent, // not even that: a part of a combination, or one that others take
    Louder,
    Quieter,
    Mute,
    FullScreen,
    Start,
};

[[nodiscard]] VideoKey videoKey(const QKeyEvent *event);
