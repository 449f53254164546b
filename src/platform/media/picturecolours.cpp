// SPDX-License-Identifier: GPL-3.0-or-later
#include "picturecolours.h"

namespace {

// The weights of red and blue in luma: ITU-R BT.601, BT.709, BT.2020, SMPTE 240M.
struct Weights
{
    double red, blue;
};

Weights weights(PictureColours::Matrix matrix)
{
    switch (matrix) {
    case PictureColours::Matrix::Bt601:
        return {0.299, 0.114};
    case PictureColours::Matrix::Bt709:
        return {0.2126, 0.0722};
    case PictureColours::Matrix::Bt2020:
        return {0.2627, 0.0593};
    case PictureColours::Matrix::Smpte240m:
        return {0.212, 0.087};
    }
    return {0.2126, 0.0722};
}

} // namespace

Rgb codedRgb(const YCbCr &code, const PictureColours &colours)
{
    const double top = colours.depth > 8 ? 1023 : 1020;
    const double y = colours.fullRange ? code[0] / top : (code[0] - 64) / 876;
    const double span = colours.fullRange ? top : 896;
    const double cb = (code[1] - 512) / span;
    const double cr = (code[2] - 512) / span;
    const auto [kr, kb] = weights(colours.matrix);
    const double red = y + 2 * (1 - kr) * cr;
    const double blue = y + 2 * (1 - kb) * cb;
    return {red, (y - kr * red - kb * blue) / (1 - kr - kb), blue};
}
