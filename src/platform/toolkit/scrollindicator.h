// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsObject>
#include <QPropertyAnimation>
#include <QTimer>

namespace toolkit {

// A thin bar that tells which part of a content is seen. It fades when nothing has moved for a while.
class ScrollIndicator : public QGraphicsObject
{
    Q_OBJECT

public:
    explicit ScrollIndicator(QGraphicsItem *parent);

    // The bar of this place and size; an empty one when everything is seen.
    void setBar(const QRectF &bar, const QColor &color);
    // Shows it for a while.
    void wake();

    QRectF boundingRect() const override { return m_bar; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    // Where the bar stands for `position` of a content behind a viewport; pure geometry.
    [[nodiscard]] static QRectF barFor(const QSizeF &viewport, qreal contentHeight, qreal position,
                                       qreal width, qreal margin, bool mirrored);

private:
    QRectF m_bar;
    QColor m_color;
    QTimer m_rest;
    QPropertyAnimation m_fade;
};

} // namespace toolkit
