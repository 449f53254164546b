// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "edgeswipe.h"

class QKeyEvent;
class QMouseEvent;

namespace toolkit {

class ApplicationWindow;

// The keys and gestures that belong to the window and not to what stands on a page: back, full screen,
// scrolling by keys.
class WindowInput
{
public:
    explicit WindowInput(ApplicationWindow *window) : m_window(window) { }

    // A key that nothing on the page took; true when it was used.
    bool key(QKeyEvent *event);
    // True: the event is used up. Positions in scene coordinates.
    bool press(QMouseEvent *event, const QPointF &position);
    bool move(const QPointF &position);
    void release();
    // Nobody gets what the fingers were about to do.
    void cancel();

private:
    void back();
    bool leaveFullScreen(); // false: there is none to leave
    [[nodiscard]] bool offeredToPage(QKeyEvent *event);

    ApplicationWindow *m_window;
    EdgeSwipe m_edgeSwipe;
};

} // namespace toolkit
