// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// One plane of samples of a byte each.
struct Plane
{
    std::uint8_t *samples = nullptr;
    int stride = 0;
    int width = 0;
    int height = 0;
};

// Fills `to` with the means of squares of `factor` by `factor` samples. `from` is at least `factor` wide and
// high; squares that would reach beyond its right or lower edge are moved in.
void shrinkPlane(const Plane &from, const Plane &to, int factor);
