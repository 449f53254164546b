// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QGraphicsItem>

namespace toolkit {

// Over what is panned: it runs out into its ground at an edge where it goes on, so that nothing looks cut
// off.
class EdgeFade : public QGraphicsItem
{
public:
    explicit EdgeFade(QGraphicsItem *parent);

    void setGround(const QColor &ground); // invalid: nothing fades
    // What stands so far from an edge is whole.
    [[nodiscard]] qreal depth() const;
    // How much of the content lies beyond either edge: the fade comes with the first of it, not at once.
    void setEdges(const QRectF &area, qreal beyondHead, qreal beyondFoot);

    [[nodiscard]] QRectF boundingRect() const override { return m_area; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    QColor m_ground;
    QRectF m_area;
    qreal m_atHead = 0; // share of the ground's opacity, 0 to 1
    qreal m_atFoot = 0;
};

} // namespace toolkit
