// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "planarpicture.h"

#include <QImage>

// The ordinary road from Y'CbCr of eight bits to the screen: the pixels stay where they are, a matrix makes
// their colours. Within one of 255 of what the standards define; the elements of the pipeline, at four fifths
// of the speed, are up to five beside it.
namespace plainpixels {

// Whether convert() can do it: 4:2:0 of eight bits, plain colours.
[[nodiscard]] bool isConvertible(const PlanarPicture &picture);
// Into an image of the picture's size.
void convert(const PlanarPicture &picture, QImage *image);

// Pixels of four bytes: alpha, which is not looked at, Y', Cb, Cr.
struct Packed
{
    const uchar *data;
    int stride;
    PictureColours colours;
};
void convert(const Packed &picture, QImage *image);

} // namespace plainpixels
