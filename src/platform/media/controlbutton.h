// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/button.h>

// A button among the player's controls. Space is the page's, which pauses and goes on by it wherever the
// focus is; Return presses the button.
class ControlButton : public toolkit::IconButton
{
    Q_OBJECT

public:
    using toolkit::IconButton::IconButton;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
};
