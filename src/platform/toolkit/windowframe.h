// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace toolkit {

// Where the compositor draws no frames, the window's own is of the theme's colours, now and when they change.
// To be called before the window is shown; nothing happens but on Wayland.
void keepFrameInTheme(QWidget *window);

} // namespace toolkit
