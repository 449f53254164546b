// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>

#include <gst/gst.h>

// Takes pictures out, before they are decoded, that lie before the place of an exact seek and that no other
// picture is made from: in H.264 and HEVC half of them or more. To be called before the pipeline starts.
void leavePassedPicturesOut(GstElement *playbin);

// What a decoder is told of a stream of pictures.
struct PictureFormat
{
    enum class Codec { Other, H264, Hevc };

    Codec codec = Codec::Other;
    int lengthBytes = 0; // of the length before each unit; 0: start codes (ITU-T H.264, H.265 annex B)

    // Codec::Other also where it cannot be known whether others are made from a picture.
    [[nodiscard]] static PictureFormat of(const GstCaps *caps);
};

// No other picture is made from this one. False where that is not known.
[[nodiscard]] bool isPictureAlone(const PictureFormat &format, std::span<const std::uint8_t> data);
