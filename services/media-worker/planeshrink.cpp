// SPDX-License-Identifier: GPL-3.0-or-later
#include "planeshrink.h"

#include <algorithm>
#include <cstddef>

namespace {

const std::uint8_t *rowOf(const Plane &plane, int y)
{
    return plane.samples + std::ptrdiff_t(y) * plane.stride;
}

// The usual case, written so that compilers vectorise it.
void halveRow(const std::uint8_t *upper, const std::uint8_t *lower, std::uint8_t *to, int width)
{
    for (int x = 0; x < width; ++x)
        to[x] = static_cast<std::uint8_t>(
            (upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1] + 2) >> 2);
}

std::uint8_t meanAt(const Plane &from, int left, int top, int factor)
{
    unsigned sum = 0;
    for (int y = 0; y < factor; ++y) {
        const std::uint8_t *const row = rowOf(from, top + y) + left;
        for (int x = 0; x < factor; ++x)
            sum += row[x];
    }
    const auto count = static_cast<unsigned>(factor * factor);
    return static_cast<std::uint8_t>((sum + count / 2) / count);
}

} // namespace

void shrinkPlane(const Plane &from, const Plane &to, int factor)
{
    for (int y = 0; y < to.height; ++y) {
        const int top = std::min(y * factor, from.height - factor);
        std::uint8_t *const row = to.samples + std::ptrdiff_t(y) * to.stride;
        int x = 0;
        if (factor == 2) {
            x = std::min(to.width, from.width / 2);
            halveRow(rowOf(from, top), rowOf(from, top + 1), row, x);
        }
        for (; x < to.width; ++x)
            row[x] = meanAt(from, std::min(x * factor, from.width - factor), top, factor);
    }
}
