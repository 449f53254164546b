// SPDX-License-Identifier: GPL-3.0-or-later
#include "pagebackground.h"

#include "platform/toolkit/theme.h"

#include <QPixmap>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr QSize BackgroundSize{480, 854};
constexpr int MatrixSize = 16;
using Matrix = std::array<std::array<int, MatrixSize>, MatrixSize>;

// The Bayer index matrix: its first row begins 0, 192, 48, 240, its second 128, 64, 176, 112.
constexpr Matrix bayerMatrix()
{
    Matrix matrix{};
    for (int row = 0; row < MatrixSize; ++row) {
        for (int column = 0; column < MatrixSize; ++column) {
            int index = 0;
            for (int bit = 0; bit < 4; ++bit) {
                const int r = row >> bit & 1;
                const int c = column >> bit & 1;
                index = index << 2 | ((r ^ c) << 1) | c;
            }
            matrix[size_t(row)][size_t(column)] = index;
        }
    }
    return matrix;
}

constexpr Matrix Thresholds = bayerMatrix();

int fiveBits(int component, int threshold)
{
    return component < 248 && threshold < component * 32 % 256 ? component + 8 : component;
}

int sixBits(int component, int threshold)
{
    return component < 252 && threshold < component * 64 % 256 ? component + 4 : component;
}

} // namespace

QImage ditheredTo16Bit(const QImage &source)
{
    QImage result(source.size(), QImage::Format_RGB16);
    if (source.depth() != 32) {
        result.fill(Qt::black);
        return result;
    }
    for (int y = 0; y < source.height(); ++y) {
        const auto *from = reinterpret_cast<const QRgb *>(source.constScanLine(y));
        auto *to = reinterpret_cast<quint16 *>(result.scanLine(y));
        for (int x = 0; x < source.width(); ++x) {
            const int threshold = Thresholds[size_t(x % MatrixSize)][size_t(y % MatrixSize)];
            const int red = fiveBits(qRed(from[x]), threshold);
            const int green = sixBits(qGreen(from[x]), threshold);
            const int blue = fiveBits(qBlue(from[x]), threshold);
            to[x] = quint16((red >> 3) << 11 | (green >> 2) << 5 | blue >> 3);
        }
    }
    return result;
}

QImage drawnPageBackground()
{
    toolkit::Theme *theme = toolkit::Theme::instance();
    const QString style = u"VideoApplicationPage"_s;
    if (!theme->hasStyle(style))
        return {};
    const QString image = theme->style(style).images.value(u"backgroundImage"_s);
    if (image.isEmpty())
        return {};
    const QPixmap pixmap = theme->hasIcon(image) ? theme->icon(image, BackgroundSize) : QPixmap(image);
    if (pixmap.isNull())
        return {};
    return ditheredTo16Bit(
        pixmap.toImage().scaled(BackgroundSize, Qt::IgnoreAspectRatio, Qt::FastTransformation));
}

const QImage &pageBackground()
{
    static const QImage background = drawnPageBackground();
    return background;
}
