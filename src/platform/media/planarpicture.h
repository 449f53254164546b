// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "picturecolours.h"

#include <QSize>

#include <array>
#include <cstddef>
#include <memory>

// A picture as a decoder makes it: luma and two colour differences, the latter mostly of fewer pixels.
// Nothing of it is copied; the owner keeps the memory and is let go with the last copy.
struct PlanarPicture
{
    struct Component
    {
        const std::byte *data = nullptr;
        int stride = 0; // bytes from row to row
        int step = 1; // samples from pixel to pixel: 2 where both colour differences share a plane
    };
    std::array<Component, 3> components; // Y', Cb, Cr
    QSize size; // of luma
    int chromaShiftX = 1; // a chroma row has 1 / 2^shift of the pixels, rounded up
    int chromaShiftY = 1;
    int sampleBytes = 1; // 2: little-endian, the value in bits `lowBit` and up
    int lowBit = 0;
    int depth = 8; // bits of a value
    // Where a chroma sample lies: upon the first luma sample of its group, or in the middle of all.
    bool chromaAtLeft = true;
    bool chromaAtTop = false;
    PictureColours colours;
    // As it is to be seen: the size with square pixels, then mirrored, then turned clockwise by quarters.
    QSize squareSize;
    bool mirrored = false;
    int quarters = 0;
    std::shared_ptr<const void> owner;

    [[nodiscard]] QSize chromaSize() const
    {
        return {(size.width() + (1 << chromaShiftX) - 1) >> chromaShiftX,
                (size.height() + (1 << chromaShiftY) - 1) >> chromaShiftY};
    }
    [[nodiscard]] bool sharesChromaPlane() const { return components[1].step == 2; }
};
