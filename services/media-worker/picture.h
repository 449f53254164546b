// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"
#include "tagcollector.h"

#include <cstdint>
#include <vector>

struct PictureSize
{
    int width = 0;
    int height = 0;

    friend bool operator==(const PictureSize &, const PictureSize &) = default;
};

// Upright pixels of four bytes (blue, green, red, unused), rows without padding.
struct Picture
{
    PictureSize size;
    std::vector<std::uint8_t> pixels;

    [[nodiscard]] bool isEmpty() const { return pixels.empty(); }
};

// As shown: pixel aspect applied (never by shrinking a side), turned upright.
[[nodiscard]] PictureSize displayedSize(const GstCaps *caps, const TagCollector::Orientation &orientation);

// `size` made to cover `cover` with its aspect kept, never enlarged; `size` itself when `cover` is empty.
[[nodiscard]] PictureSize coveringSize(PictureSize size, PictureSize cover);

// A decoded picture, scaled to cover `cover` and turned upright. Empty when it cannot be converted.
[[nodiscard]] Picture makePicture(GstSample *decoded, const TagCollector::Orientation &orientation,
                                  PictureSize cover);

// Turned as `orientation` says.
[[nodiscard]] Picture turned(Picture picture, const TagCollector::Orientation &orientation);

// Mean brightness, 0 to 255, of a sparse grid of pixels.
[[nodiscard]] int brightness(const Picture &picture);
// A picture this dark tells nothing: a fade, a black lead-in.
constexpr int DarkBrightness = 16;
