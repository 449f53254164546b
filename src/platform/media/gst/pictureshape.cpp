// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictureshape.h"

#include <QtGlobal>

namespace {

constexpr double OddestPixel = 16; // how many times as wide as high, or as high as wide
constexpr qint64 MostPixels = 8192 * 8192;

constexpr GstVideoOrientationMethod Methods[2][4]
    = {{GST_VIDEO_ORIENTATION_IDENTITY, GST_VIDEO_ORIENTATION_90R, GST_VIDEO_ORIENTATION_180,
        GST_VIDEO_ORIENTATION_90L},
       {GST_VIDEO_ORIENTATION_HORIZ, GST_VIDEO_ORIENTATION_UR_LL, GST_VIDEO_ORIENTATION_VERT,
        GST_VIDEO_ORIENTATION_UL_LR}};

} // namespace

Turn turnOf(GstVideoOrientationMethod method)
{
    for (int mirrored = 0; mirrored < 2; ++mirrored) {
        for (int quarters = 0; quarters < 4; ++quarters) {
            if (Methods[mirrored][quarters] == method)
                return {mirrored == 1, quarters};
        }
    }
    return {};
}

QSize squarePixelSize(const GstVideoInfo &info)
{
    QSize size(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info));
    const double aspect = double(GST_VIDEO_INFO_PAR_N(&info)) / qMax(1, GST_VIDEO_INFO_PAR_D(&info));
    if (aspect > OddestPixel || aspect < 1 / OddestPixel)
        return size;
    if (aspect > 1)
        size.setWidth(qRound(size.width() * aspect));
    else
        size.setHeight(qRound(size.height() / aspect));
    return size;
}

QSize scaledFor(const VideoOutput &output, const QSize &square, const Turn &turn)
{
    return picturegeometry::scaled(square, turned(output.size, turn), output.fill);
}

bool isTooLarge(const GstVideoInfo &info)
{
    return qint64(GST_VIDEO_INFO_WIDTH(&info)) * GST_VIDEO_INFO_HEIGHT(&info) > MostPixels;
}
