// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "planarpicture.h"

#include <QImage>
#include <QList>
#include <QThreadPool>

namespace plainpixels {
struct Packed;
}

// Makes of a decoder's picture what the screen shows, with the processor alone: scaled, its colours mapped,
// turned. Used by one thread at a time; large pictures are shared among several of its own.
class PictureConverter
{
public:
    PictureConverter();

    // `size` is that before the turn. The image is one of a few that are used again when nobody holds them.
    [[nodiscard]] QImage convert(const PlanarPicture &picture, const QSize &size);
    [[nodiscard]] QImage convert(const plainpixels::Packed &picture, const QSize &size);
    // The same picture mirrored, then turned clockwise by quarters.
    [[nodiscard]] static QImage turned(const QImage &image, bool mirrored, int quarters);

private:
    [[nodiscard]] QImage freeImage(const QSize &size);
    void keep(const QImage &image);
    void map(const PlanarPicture &picture, QImage *image);

    QThreadPool m_pool;
    QList<QImage> m_images;
};
