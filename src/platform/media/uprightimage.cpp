// SPDX-License-Identifier: GPL-3.0-or-later
#include "uprightimage.h"

#include "pictureconverter.h"

#include <QTransform>

QImage uprightImage(const VideoFrame &frame)
{
    if (!frame.planes)
        return frame.rotation == 0 ? frame.image
                                   : frame.image.transformed(QTransform().rotate(-frame.rotation));
    const PlanarPicture &picture = *frame.planes;
    return PictureConverter::turned(PictureConverter().convert(picture, frame.planesSize), picture.mirrored,
                                    picture.quarters);
}
