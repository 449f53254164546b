// SPDX-License-Identifier: GPL-3.0-or-later
#include "sheetdrag.h"

#include <algorithm>
#include <cmath>

namespace toolkit {

namespace {

constexpr qreal threshold = 14; // a finger that rests moves less
constexpr qreal fling = 0.7; // logical pixels a millisecond
constexpr qint64 restTime = 80; // a finger that stood so long has no speed any more
constexpr qreal enough = 0.35; // of the height

} // namespace

void SheetDrag::press(const QPointF &position, qint64 time)
{
    m_state = State::Undecided;
    m_start = position;
    m_last = position;
    m_lastTime = time;
    m_speed = 0;
}

bool SheetDrag::move(const QPointF &position, qint64 time)
{
    if (m_state == State::None)
        return false;
    const QPointF way = position - m_start;
    if (m_state == State::Undecided) {
        if (way.y() >= threshold && way.y() > std::abs(way.x()))
            m_state = State::Dragging;
        else if (std::abs(way.x()) >= threshold || way.y() <= -threshold)
            m_state = State::None;
    }
    if (time > m_lastTime)
        m_speed = (position.y() - m_last.y()) / qreal(time - m_lastTime);
    m_last = position;
    m_lastTime = time;
    return m_state == State::Dragging;
}

qreal SheetDrag::distance() const
{
    // The sheet begins to move from where it stands, without a jump over the threshold.
    return m_state == State::Dragging ? std::max(0.0, m_last.y() - m_start.y() - threshold) : 0;
}

bool SheetDrag::release(qreal sheetHeight, qint64 time)
{
    const bool wasDragging = m_state == State::Dragging;
    const bool far = distance() >= enough * sheetHeight;
    const bool fast = m_speed >= fling && time - m_lastTime < restTime;
    m_state = State::None;
    return wasDragging && (far || fast);
}

} // namespace toolkit
