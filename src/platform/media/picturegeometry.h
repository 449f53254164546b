// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QSize>

// How a picture is to be seen, or seen on a device that is turned: mirrored first, then turned clockwise by
// quarters.
struct Turn
{
    bool mirrored = false;
    int quarters = 0;

    bool operator==(const Turn &) const = default;
};

[[nodiscard]] inline Turn turnedFurther(const Turn &turn, int degrees)
{
    return {turn.mirrored, (turn.quarters + degrees / 90) % 4};
}

[[nodiscard]] inline QSize turned(const QSize &size, const Turn &turn)
{
    return turn.quarters % 2 == 0 ? size : size.transposed();
}

// Where a picture lies on the screen: one reckoning for all ways of painting, so that they differ by no
// pixel.
namespace picturegeometry {

constexpr int LargestSide = 8192; // the painter enlarges what was not made as large as asked for
constexpr int Unseen = 2; // pixels; a border as thin as this looks like a fault

// Fitting in the room or covering it, in its own shape.
[[nodiscard]] inline QSize scaled(const QSize &square, const QSize &room, bool fill)
{
    QSize size = square;
    if (!room.isEmpty()) {
        size.scale(room, fill ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio);
        if (qAbs(room.width() - size.width()) <= Unseen && qAbs(room.height() - size.height()) <= Unseen)
            size = room;
    }
    if (size.width() > LargestSide || size.height() > LargestSide)
        size.scale(LargestSide, LargestSide, Qt::KeepAspectRatio);
    return size.expandedTo(QSize(1, 1));
}

// In the middle of the area, on whole pixels of a device that has `ratio` of them to a unit.
[[nodiscard]] inline QRectF centred(const QSizeF &size, const QRectF &area, qreal ratio)
{
    const QPointF corner = area.center() - QPointF(size.width(), size.height()) / 2;
    return {QPointF(qRound(corner.x() * ratio), qRound(corner.y() * ratio)) / ratio, size};
}

} // namespace picturegeometry
