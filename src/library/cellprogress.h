// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widget.h"

// The bar along the foot of a picture: how much of the video was watched.
class CellProgress : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit CellProgress(QGraphicsItem *parent = nullptr);

    void setFraction(qreal fraction); // 0 to 1
    [[nodiscard]] qreal fraction() const { return m_fraction; }
    // Rounds the corners that lie on the picture's lower corners.
    void setCornerRadius(qreal radius);

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    qreal m_fraction = 0;
    qreal m_radius = 0;
};
