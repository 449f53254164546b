// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "menu.h"

namespace toolkit {

// The menu of one thing on a page, at the finger that rests on it. Offers those of its actions() that have
// the object menu among their locations; kept by its owner and shown again and again.
class ObjectMenu : public Menu
{
    Q_OBJECT

public:
    enum class State { Hidden, Appearing, Shown, Disappearing };
    Q_ENUM(State)

    using Menu::Menu;

    // Where the finger, pointer or keyboard is, in the scene.
    void setCursorPosition(const QPointF &position) { setPoint(position); }
    [[nodiscard]] QPointF cursorPosition() const { return point(); }
    // Nothing without a window, and nothing when no action is offered.
    void appear(ApplicationWindow *window);
    [[nodiscard]] State state() const;
    // Between its appearing and its disappearing.
    [[nodiscard]] bool isVisibleToUser() const { return isActive(); }
};

} // namespace toolkit
