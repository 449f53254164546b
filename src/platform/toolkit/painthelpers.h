// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;
class QPixmap;

namespace toolkit {

// Device pixels a logical pixel, whichever way the scene is turned.
[[nodiscard]] qreal pixelScale(const QPainter *painter);
// An icon of the theme, sharp at the painter's scale, centred in `place`; mirrored where lines run from right
// to left, when it is one that points along them.
void drawIcon(QPainter *painter, const QString &iconId, const QRectF &place, const QColor &color,
              Qt::LayoutDirection direction = Qt::LeftToRight);
// An antialiased rounded rectangle without an outline.
void fillRounded(QPainter *painter, const QRectF &rect, qreal radius, const QColor &color);
// What lies before `fraction` (0 to 1) of a bar that grows in the direction in which people read.
[[nodiscard]] QRectF leadingPart(const QRectF &bar, qreal fraction, Qt::LayoutDirection direction);
// A line along the edge of a rounded rectangle, all of it inside.
void drawOutline(QPainter *painter, const QRectF &rect, qreal radius, qreal width, const QColor &color);
// What is in the area runs out into the ground towards this edge of it.
void fadeInto(QPainter *painter, const QRectF &area, Qt::Edge edge, const QColor &ground);
// The mark of the keyboard focus, inside `rect`.
void drawFocus(QPainter *painter, const QRectF &rect, qreal radius, const QColor &color);

} // namespace toolkit
