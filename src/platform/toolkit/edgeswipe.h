// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QSizeF>

namespace toolkit {

// The back gesture: a finger that comes in from the edge where lines begin and moves on sideways. Scene
// coordinates.
class EdgeSwipe
{
public:
    void press(const QPointF &position, const QSizeF &scene, Qt::LayoutDirection direction);
    // True once, when the finger has gone far enough.
    [[nodiscard]] bool move(const QPointF &position);
    void release() { m_possible = false; }

private:
    QPointF m_start;
    int m_inwards = 1;
    bool m_possible = false;
};

} // namespace toolkit
