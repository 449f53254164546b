// SPDX-License-Identifier: GPL-3.0-or-later
#include "edgefade.h"

#include "painthelpers.h"

#include <algorithm>

namespace toolkit {

namespace {

constexpr qreal fadeDepth = 28;

} // namespace

EdgeFade::EdgeFade(QGraphicsItem *parent) : QGraphicsItem(parent)
{
    setAcceptedMouseButtons(Qt::NoButton);
    setZValue(0.5); // over the content, under the indicator
    setVisible(false);
}

void EdgeFade::setGround(const QColor &ground)
{
    if (m_ground == ground)
        return;
    m_ground = ground;
    setVisible(ground.isValid());
    update();
}

qreal EdgeFade::depth() const
{
    return m_ground.isValid() ? fadeDepth : 0;
}

void EdgeFade::setEdges(const QRectF &area, qreal beyondHead, qreal beyondFoot)
{
    const qreal atHead = std::clamp(beyondHead / fadeDepth, 0.0, 1.0);
    const qreal atFoot = std::clamp(beyondFoot / fadeDepth, 0.0, 1.0);
    if (area == m_area && atHead == m_atHead && atFoot == m_atFoot)
        return;
    prepareGeometryChange();
    m_area = area;
    m_atHead = atHead;
    m_atFoot = atFoot;
    update();
}

void EdgeFade::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    QColor ground = m_ground;
    if (m_atHead > 0) {
        ground.setAlphaF(float(m_ground.alphaF() * m_atHead));
        fadeInto(painter, QRectF(m_area.topLeft(), QSizeF(m_area.width(), fadeDepth)), Qt::TopEdge, ground);
    }
    if (m_atFoot > 0) {
        ground.setAlphaF(float(m_ground.alphaF() * m_atFoot));
        fadeInto(painter, QRectF(m_area.left(), m_area.bottom() - fadeDepth, m_area.width(), fadeDepth),
                 Qt::BottomEdge, ground);
    }
}

} // namespace toolkit
