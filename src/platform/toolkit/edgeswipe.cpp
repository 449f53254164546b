// SPDX-License-Identifier: GPL-3.0-or-later
#include "edgeswipe.h"

#include <cmath>

namespace toolkit {

namespace {

constexpr qreal edgeWidth = 16;
constexpr qreal distance = 96;
constexpr qreal steepest = 0.6; // of the way sideways

} // namespace

void EdgeSwipe::press(const QPointF &position, const QSizeF &scene, Qt::LayoutDirection direction)
{
    const bool mirrored = direction == Qt::RightToLeft;
    m_inwards = mirrored ? -1 : 1;
    m_start = position;
    m_possible = mirrored ? position.x() >= scene.width() - edgeWidth : position.x() <= edgeWidth;
}

bool EdgeSwipe::move(const QPointF &position)
{
    if (!m_possible)
        return false;
    const QPointF way = position - m_start;
    const qreal inwards = way.x() * m_inwards;
    if (std::abs(way.y()) > edgeWidth && std::abs(way.y()) > inwards * steepest) {
        m_possible = false;
        return false;
    }
    if (inwards < distance)
        return false;
    m_possible = false;
    return true;
}

} // namespace toolkit
