// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "picturecolours.h"

#include <cstdint>
#include <memory>
#include <vector>

// From the codes of a picture to what the screen is sent, by a table whose nodes are interpolated: whatever
// has to be done about range, gamut and light costs the same for every pixel.
//
// Codes have 10 bits. A node lies every LumaStep of Y' and every ChromaStep of Cb and Cr; its four values are
// blue, green, red and the full 255, each times Scale. What a matrix alone makes is kept beyond black and
// white too, so that it is exact in between.
class ColourMap
{
public:
    static constexpr int LumaBits = 4;
    static constexpr int ChromaBits = 5;
    static constexpr int LumaNodes = (1024 >> LumaBits) + 1;
    static constexpr int ChromaNodes = (1024 >> ChromaBits) + 1;
    static constexpr int ScaleBits = 2;
    static constexpr int Scale = 1 << ScaleBits;
    static constexpr int Channels = 4;

    explicit ColourMap(const PictureColours &colours);
    // The last few that were made are kept. From any thread.
    [[nodiscard]] static std::shared_ptr<const ColourMap> of(const PictureColours &colours);

    [[nodiscard]] const PictureColours &colours() const { return m_colours; }
    // Node (cb, cr, y) is at ((cb * ChromaNodes + cr) * LumaNodes + y) * Channels.
    [[nodiscard]] const int16_t *nodes() const { return m_nodes.data(); }

private:
    PictureColours m_colours;
    std::vector<int16_t> m_nodes;
};
