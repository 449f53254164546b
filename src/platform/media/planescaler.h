// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The weights with which the samples of a line make the pixels of a shorter or longer one. Linear in between;
// where it gets shorter every sample has its share.
class ScaleTaps
{
public:
    static constexpr int UnitBits = 14;

    // Pixel i of `wanted` lies upon sample (i + 0.5) * span / wanted - 0.5 + `shift` of `given`; the span is
    // smaller than `given` where the last sample is only half in the picture.
    ScaleTaps(int given, double span, int wanted, double shift);

    [[nodiscard]] bool isIdentity() const { return m_identity; }
    [[nodiscard]] int count() const { return m_count; } // of weights of each pixel
    [[nodiscard]] int first(int pixel) const { return m_first[size_t(pixel)]; }
    [[nodiscard]] const int16_t *weights(int pixel) const
    {
        return m_weights.data() + size_t(pixel) * size_t(m_count);
    }
    [[nodiscard]] int wanted() const { return int(m_first.size()); }

private:
    int m_count = 1;
    bool m_identity = false;
    std::vector<int> m_first;
    std::vector<int16_t> m_weights;
};

// One component of a picture, from which scaled lines are read: values of 10 bits.
struct ScalePlane
{
    const std::byte *data;
    int stride; // bytes
    int step; // samples from pixel to pixel
    int width;
    int sampleBytes;
    int shiftRight; // to 10 bits; negative: left
};

// Scales a plane line by line; each thread has one of its own.
class PlaneScaler
{
public:
    PlaneScaler(const ScalePlane &plane, const ScaleTaps &across, const ScaleTaps &down);

    // Line `number` of the scaled plane. Valid until the next call.
    [[nodiscard]] const int16_t *line(int number);

private:
    void gather(int number);

    ScalePlane m_plane;
    const ScaleTaps &m_across;
    const ScaleTaps &m_down;
    std::vector<int32_t> m_sums;
    std::vector<int16_t> m_gathered;
    std::vector<int16_t> m_scaled;
};
