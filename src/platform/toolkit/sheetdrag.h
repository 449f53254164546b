// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>

namespace toolkit {

// The finger that pulls a sheet down: tells a drag from a tap, and at its end whether the sheet goes or
// springs back. Scene coordinates, milliseconds.
class SheetDrag
{
public:
    void press(const QPointF &position, qint64 time);
    // True while the finger drags. A movement that is not a downward one leaves the press alone for good.
    [[nodiscard]] bool move(const QPointF &position, qint64 time);
    // How far the sheet is pulled down; never negative.
    [[nodiscard]] qreal distance() const;
    [[nodiscard]] bool isDragging() const { return m_state == State::Dragging; }
    // True when a sheet of this height is to go.
    [[nodiscard]] bool release(qreal sheetHeight, qint64 time);
    void cancel() { m_state = State::None; }

private:
    enum class State { None, Undecided, Dragging };

    State m_state = State::None;
    QPointF m_start;
    QPointF m_last;
    qint64 m_lastTime = 0;
    qreal m_speed = 0; // downwards, a millisecond
};

} // namespace toolkit
