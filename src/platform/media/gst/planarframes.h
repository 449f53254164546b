// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pictureshape.h"

#include <platform/media/planarpicture.h>

#include <memory>
#include <optional>

#include <gst/gst.h>
#include <gst/video/video.h>

// Pictures of the pipeline as others see them who know nothing of it.
namespace planarframes {

// The formats that a PlanarPicture can describe, for the caps of a filter.
[[nodiscard]] GstCaps *caps();

// What the numbers of such a video mean; its caps tell the brightest, where they do.
[[nodiscard]] PictureColours colours(const GstVideoInfo &info, const GstCaps *caps);

// Null: the buffer cannot be read, or it is of another format. Without `colours` those that its caps tell.
// The buffer is kept until the picture goes.
[[nodiscard]] std::shared_ptr<const PlanarPicture> picture(GstSample *sample, const Turn &turn,
                                                           const std::optional<PictureColours> &colours);

} // namespace planarframes
