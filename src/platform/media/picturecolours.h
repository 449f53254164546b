// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

// What the numbers of a picture mean.
struct PictureColours
{
    enum class Matrix { Bt601, Bt709, Bt2020, Smpte240m };
    enum class Transfer { Sdr, Pq, Hlg };
    enum class Primaries { Bt709, Bt2020, DisplayP3 };

    Matrix matrix = Matrix::Bt709;
    Transfer transfer = Transfer::Sdr;
    Primaries primaries = Primaries::Bt709;
    bool fullRange = false;
    int depth = 8; // bits: full range ends at another tenth of a per cent
    int peak = 1000; // cd/m2, the brightest of the film; of PQ alone

    // A matrix makes what the screen shows of it; else it takes a ColourMap.
    [[nodiscard]] bool isPlain() const { return transfer == Transfer::Sdr && primaries == Primaries::Bt709; }
    bool operator==(const PictureColours &) const = default;
};

// Codes have 10 bits, 0 to 1023; of 8-bit samples they are four times these.
using YCbCr = std::array<double, 3>;
using Rgb = std::array<double, 3>; // 0 to 1 on the screen

// R'G'B' as they are coded, before anything is done about their meaning: below 0 and above 1 too.
[[nodiscard]] Rgb codedRgb(const YCbCr &code, const PictureColours &colours);
