// SPDX-License-Identifier: GPL-3.0-or-later
#include "planescaler.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int Unit = 1 << ScaleTaps::UnitBits;
constexpr int Half = Unit / 2;

template <typename Sample, int Step>
void toTenBits(const Sample *from, int16_t *to, int width, int shiftRight)
{
    if (shiftRight >= 0) {
        for (int x = 0; x < width; ++x)
            to[x] = int16_t(from[x * Step] >> shiftRight);
    } else {
        for (int x = 0; x < width; ++x)
            to[x] = int16_t(from[x * Step] << -shiftRight);
    }
}

void readLine(const ScalePlane &plane, int line, int16_t *to)
{
    const std::byte *row = plane.data + ptrdiff_t(line) * plane.stride;
    if (plane.sampleBytes == 1) {
        const auto *from = reinterpret_cast<const uint8_t *>(row);
        if (plane.step == 1)
            toTenBits<uint8_t, 1>(from, to, plane.width, plane.shiftRight);
        else
            toTenBits<uint8_t, 2>(from, to, plane.width, plane.shiftRight);
    } else {
        const auto *from = reinterpret_cast<const uint16_t *>(row);
        if (plane.step == 1)
            toTenBits<uint16_t, 1>(from, to, plane.width, plane.shiftRight);
        else
            toTenBits<uint16_t, 2>(from, to, plane.width, plane.shiftRight);
    }
}

void addWeighted(int32_t *sums, const int16_t *line, int16_t weight, size_t width)
{
    for (size_t x = 0; x < width; ++x)
        sums[x] += int32_t(line[x]) * weight;
}

} // namespace

ScaleTaps::ScaleTaps(int given, double span, int wanted, double shift)
{
    const double ratio = span / wanted;
    const double reach = std::max(1.0, ratio);
    m_identity = ratio == 1 && shift == 0;
    m_count = std::min(given, int(std::ceil(2 * reach)));
    m_first.resize(size_t(wanted));
    m_weights.resize(size_t(wanted) * size_t(m_count));
    std::vector<double> exact(static_cast<size_t>(m_count));
    for (int pixel = 0; pixel < wanted; ++pixel) {
        const double centre = std::clamp((pixel + 0.5) * ratio - 0.5 + shift, 0.0, given - 1.0);
        const int first = std::clamp(int(std::floor(centre - reach)) + 1, 0, given - m_count);
        double sum = 0;
        for (int tap = 0; tap < m_count; ++tap) {
            exact[size_t(tap)] = std::max(0.0, 1 - std::abs(first + tap - centre) / reach);
            sum += exact[size_t(tap)];
        }
        int16_t *weights = m_weights.data() + size_t(pixel) * size_t(m_count);
        int rest = Unit;
        int heaviest = 0;
        for (int tap = 0; tap < m_count; ++tap) {
            weights[tap] = int16_t(std::lround(exact[size_t(tap)] / sum * Unit));
            rest -= weights[tap];
            if (weights[tap] > weights[heaviest])
                heaviest = tap;
        }
        weights[heaviest] = int16_t(weights[heaviest] + rest);
        m_first[size_t(pixel)] = first;
    }
}

PlaneScaler::PlaneScaler(const ScalePlane &plane, const ScaleTaps &across, const ScaleTaps &down)
    : m_plane(plane),
      m_across(across),
      m_down(down),
      m_sums(size_t(plane.width)),
      m_gathered(size_t(plane.width)),
      m_scaled(size_t(std::max(plane.width, across.wanted())))
{
}

// All lines that have a share in this one, at the plane's own width.
void PlaneScaler::gather(int number)
{
    const int first = m_down.first(number);
    const int16_t *weights = m_down.weights(number);
    for (int tap = 0; tap < m_down.count(); ++tap) {
        if (weights[tap] == Unit) {
            readLine(m_plane, first + tap, m_gathered.data());
            return;
        }
    }
    std::fill(m_sums.begin(), m_sums.end(), Half);
    for (int tap = 0; tap < m_down.count(); ++tap) {
        if (weights[tap] == 0)
            continue;
        readLine(m_plane, first + tap, m_scaled.data());
        addWeighted(m_sums.data(), m_scaled.data(), weights[tap], m_sums.size());
    }
    for (size_t x = 0; x < m_sums.size(); ++x)
        m_gathered[x] = int16_t(m_sums[x] >> ScaleTaps::UnitBits);
}

const int16_t *PlaneScaler::line(int number)
{
    gather(number);
    if (m_across.isIdentity())
        return m_gathered.data();
    const int count = m_across.count();
    for (int x = 0; x < m_across.wanted(); ++x) {
        const int16_t *from = m_gathered.data() + m_across.first(x);
        const int16_t *weights = m_across.weights(x);
        int32_t sum = Half;
        for (int tap = 0; tap < count; ++tap)
            sum += int32_t(from[tap]) * weights[tap];
        m_scaled[size_t(x)] = int16_t(sum >> ScaleTaps::UnitBits);
    }
    return m_scaled.data();
}
