// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>
#include <QSize>

#include <chrono>
#include <memory>

struct PlanarPicture;

// Time within a video, exact. Whole seconds exist at the outer interface only.
using MediaTime = std::chrono::nanoseconds;

// One picture, ready to be painted: an image with square pixels, scaled and turned for the output; or, where
// that was asked for, the planes of the decoder, which a shader draws. Copies share the pixels, which may be
// a back end's own buffer: it goes back to the back end with the last copy.
struct VideoFrame
{
    QImage image;
    MediaTime time{0}; // where in the video it belongs
    int rotation = 0; // the turn already made for the output, clockwise; of the image alone
    std::shared_ptr<const PlanarPicture> planes = {};
    QSize planesSize = {}; // that of the image that would be made of them, before it is turned

    [[nodiscard]] bool isNull() const { return image.isNull() && !planes; }
};
