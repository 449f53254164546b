// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QPointF>

class QEvent;
class QGraphicsObject;
class QGraphicsSceneMouseEvent;

namespace toolkit {

class PanScroller;

// Tells a tap from a drag: what a finger or the left button does over a viewport and its content goes to the
// scroller, and from where it becomes a drag the content no longer has it.
class PanGesture
{
public:
    PanGesture(QGraphicsObject *viewport, PanScroller *scroller);

    void setEnabled(bool enabled) { m_enabled = enabled; }
    // Sees every event of the left button before the content does; true takes it away from the content.
    bool mouse(QEvent *event);
    void lost(); // the viewport holds the pointer no longer

private:
    enum class State { None, Undecided, Passed, Panning };

    bool press(const QGraphicsSceneMouseEvent *event);
    bool move(const QGraphicsSceneMouseEvent *event);
    bool release(const QGraphicsSceneMouseEvent *event);
    void takeOver();
    void end();
    void pullWithoutMotion(const QPointF &position);
    [[nodiscard]] QPointF local(const QGraphicsSceneMouseEvent *event) const;
    [[nodiscard]] qint64 time(const QGraphicsSceneMouseEvent *event) const;

    QGraphicsObject *m_viewport;
    PanScroller *m_scroller;
    State m_state = State::None;
    QPointF m_pressed;
    quint64 m_pressedAt = 0;
    bool m_pulled = false;
    bool m_enabled = true;
    QElapsedTimer m_clock;
};

} // namespace toolkit
