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
    void setEdges(const QRectF &area, bool atHead, bool atFoot);

    [[nodiscard]] QRectF boundingRect() const override { return m_area; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    QColor m_ground;
    QRectF m_area;
    bool m_atHead = false;
    bool m_atFoot = false;
};

} // namespace toolkit
