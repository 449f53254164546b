// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/picturegeometry.h>

#include <QSize>

#include <gst/video/video.h>

// How frames are to be delivered.
struct VideoOutput
{
    QSize size; // device pixels; empty: the video's own
    bool fill = false; // cover the size instead of fitting in it
    int rotation = 0; // clockwise: 0, 90, 180, 270
    bool planes = false; // as the decoder makes them, where that can be: who asked draws them by a shader

    bool operator==(const VideoOutput &) const = default;
};

[[nodiscard]] Turn turnOf(GstVideoOrientationMethod method);

// The picture with square pixels, before any turn. A pixel aspect that no camera or disc has is taken for a
// fault of the file.
[[nodiscard]] QSize squarePixelSize(const GstVideoInfo &info);

// The size that a picture of `square` gets for the output, before it is turned: both share the `turn`, which
// contains the output's own.
[[nodiscard]] QSize scaledFor(const VideoOutput &output, const QSize &square, const Turn &turn);

// More than any screen shows and any device decodes in time; its buffers would take the memory of everything
// else.
[[nodiscard]] bool isTooLarge(const GstVideoInfo &info);
