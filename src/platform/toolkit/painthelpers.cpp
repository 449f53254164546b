// SPDX-License-Identifier: GPL-3.0-or-later
#include "painthelpers.h"

#include "theme.h"

#include <QLinearGradient>
#include <QPaintDevice>
#include <QPainter>
#include <QtMath>

#include <algorithm>

namespace toolkit {

qreal pixelScale(const QPainter *painter)
{
    const qreal area = std::abs(painter->worldTransform().determinant());
    const qreal ratio = painter->device() != nullptr ? painter->device()->devicePixelRatioF() : 1;
    return area > 0 ? std::sqrt(area) * ratio : ratio;
}

void drawIcon(QPainter *painter, const QString &iconId, const QRectF &place, const QColor &color,
              Qt::LayoutDirection direction)
{
    const QSize pixels = (place.size() * pixelScale(painter)).toSize();
    const QPixmap pixmap = Theme::instance()->icon(iconId, pixels, color);
    if (pixmap.isNull())
        return;
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const bool mirrored = direction == Qt::RightToLeft && Theme::instance()->isDirectional(iconId);
    if (mirrored) {
        painter->save();
        painter->translate(2 * place.center().x(), 0);
        painter->scale(-1, 1);
    }
    painter->drawPixmap(place, pixmap, QRectF(pixmap.rect()));
    if (mirrored)
        painter->restore();
}

QRectF leadingPart(const QRectF &bar, qreal fraction, Qt::LayoutDirection direction)
{
    QRectF part = bar;
    part.setWidth(bar.width() * fraction);
    if (direction == Qt::RightToLeft)
        part.moveRight(bar.right());
    return part;
}

void fillRounded(QPainter *painter, const QRectF &rect, qreal radius, const QColor &color)
{
    if (!color.isValid() || color.alpha() == 0)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    if (radius > 0)
        painter->drawRoundedRect(rect, radius, radius);
    else
        painter->drawRect(rect);
}

void drawOutline(QPainter *painter, const QRectF &rect, qreal radius, qreal width, const QColor &color)
{
    if (!color.isValid() || width <= 0)
        return;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, width));
    painter->setBrush(Qt::NoBrush);
    const qreal half = width / 2;
    const qreal middle = std::max(0.0, radius - half);
    painter->drawRoundedRect(rect.adjusted(half, half, -half, -half), middle, middle);
}

void fadeInto(QPainter *painter, const QRectF &area, Qt::Edge edge, const QColor &ground)
{
    QLinearGradient gradient;
    switch (edge) {
    case Qt::LeftEdge:
        gradient = QLinearGradient(area.topRight(), area.topLeft());
        break;
    case Qt::RightEdge:
        gradient = QLinearGradient(area.topLeft(), area.topRight());
        break;
    case Qt::TopEdge:
        gradient = QLinearGradient(area.bottomLeft(), area.topLeft());
        break;
    case Qt::BottomEdge:
        gradient = QLinearGradient(area.topLeft(), area.bottomLeft());
        break;
    }
    QColor clear = ground;
    clear.setAlpha(0);
    gradient.setColorAt(0, clear);
    gradient.setColorAt(1, ground);
    painter->fillRect(area, gradient);
}

void drawFocus(QPainter *painter, const QRectF &rect, qreal radius, const QColor &color)
{
    constexpr qreal thickness = 2;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, thickness));
    painter->setBrush(Qt::NoBrush);
    const QRectF inner = rect.adjusted(thickness, thickness, -thickness, -thickness);
    painter->drawRoundedRect(inner, radius, radius);
}

} // namespace toolkit
