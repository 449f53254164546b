// SPDX-License-Identifier: GPL-3.0-or-later
#include "cellprogress.h"

#include "platform/toolkit/painthelpers.h"

#include <QPainter>
#include <QPainterPath>

using namespace Qt::Literals::StringLiterals;

CellProgress::CellProgress(QGraphicsItem *parent) : toolkit::Widget(parent)
{
    setStyleName(u"KestrelGridCellProgress"_s);
}

void CellProgress::setFraction(qreal fraction)
{
    m_fraction = qBound(0.0, fraction, 1.0);
    update();
}

void CellProgress::setCornerRadius(qreal radius)
{
    m_radius = radius;
    update();
}

void CellProgress::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const QRectF bar = rect();
    if (m_radius > 0) {
        QPainterPath picture;
        picture.addRoundedRect(bar.adjusted(0, bar.height() - 4 * m_radius, 0, 0), m_radius, m_radius);
        painter->setClipPath(picture, Qt::IntersectClip);
        painter->setRenderHint(QPainter::Antialiasing);
    }
    painter->fillRect(bar, style().color(u"background"_s));
    painter->fillRect(toolkit::leadingPart(bar, m_fraction, layoutDirection()), style().color(u"accent"_s));
}
