// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRectF>
#include <QSizeF>

namespace toolkit {

// Where something of this height stands in the scene without touching the areas that are kept free: in the
// lowest gap between them that has room for it, above its foot. Where no gap has, in the highest gap, within
// the scene. An area as high as the scene narrows it to one side.
class BannerRoom
{
public:
    BannerRoom(const QSizeF &scene, const QList<QRectF> &keptFree);

    [[nodiscard]] qreal widest() const;
    [[nodiscard]] QRectF place(const QSizeF &size) const;

private:
    struct Gap
    {
        qreal top;
        qreal bottom;
    };
    [[nodiscard]] QList<Gap> gaps() const; // the lowest first

    QRectF m_area;
    QList<QRectF> m_keptFree;
};

} // namespace toolkit
