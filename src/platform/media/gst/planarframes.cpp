// SPDX-License-Identifier: GPL-3.0-or-later
#include "planarframes.h"

#include <algorithm>

namespace planarframes {

namespace {

// Nits that a film may promise: less is not high dynamic range, more is not in the format.
constexpr int LeastPeak = 203;
constexpr int MostPeak = 10000;
constexpr int UsualPeak = 1000;

PictureColours::Matrix matrixOf(GstVideoColorMatrix matrix)
{
    switch (matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
    case GST_VIDEO_COLOR_MATRIX_FCC:
        return PictureColours::Matrix::Bt601;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
        return PictureColours::Matrix::Bt2020;
    case GST_VIDEO_COLOR_MATRIX_SMPTE240M:
        return PictureColours::Matrix::Smpte240m;
    default:
        return PictureColours::Matrix::Bt709;
    }
}

PictureColours::Transfer transferOf(GstVideoTransferFunction transfer)
{
    switch (transfer) {
    case GST_VIDEO_TRANSFER_SMPTE2084:
        return PictureColours::Transfer::Pq;
    case GST_VIDEO_TRANSFER_ARIB_STD_B67:
        return PictureColours::Transfer::Hlg;
    default:
        return PictureColours::Transfer::Sdr;
    }
}

PictureColours::Primaries primariesOf(GstVideoColorPrimaries primaries)
{
    switch (primaries) {
    case GST_VIDEO_COLOR_PRIMARIES_BT2020:
        return PictureColours::Primaries::Bt2020;
    case GST_VIDEO_COLOR_PRIMARIES_SMPTEEG432:
        return PictureColours::Primaries::DisplayP3;
    default: // those of the older standards differ from BT.709 by less than screens do
        return PictureColours::Primaries::Bt709;
    }
}

// What the light levels of the film and the screen it was made on say, in this order.
int peakOf(const GstCaps *caps)
{
    GstVideoContentLightLevel level;
    if (gst_video_content_light_level_from_caps(&level, caps) && level.max_content_light_level > LeastPeak)
        return std::min<int>(level.max_content_light_level, MostPeak);
    GstVideoMasteringDisplayInfo display;
    if (gst_video_mastering_display_info_from_caps(&display, caps)) {
        const guint nits = display.max_display_mastering_luminance / 10000;
        if (nits > LeastPeak)
            return int(std::min<guint>(nits, MostPeak));
    }
    return UsualPeak;
}

} // namespace

GstCaps *caps()
{
    return gst_caps_from_string(
        "video/x-raw, format=(string){ I420, NV12, I420_10LE, P010_10LE, Y42B, I422_10LE, "
        "Y444, Y444_10LE, I420_12LE, I422_12LE, Y444_12LE, P012_LE }");
}

PictureColours colours(const GstVideoInfo &info, const GstCaps *caps)
{
    PictureColours colours;
    colours.matrix = matrixOf(info.colorimetry.matrix);
    colours.transfer = transferOf(info.colorimetry.transfer);
    colours.primaries = primariesOf(info.colorimetry.primaries);
    colours.fullRange = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    colours.depth = int(GST_VIDEO_INFO_COMP_DEPTH(&info, 0));
    if (colours.transfer == PictureColours::Transfer::Pq && caps != nullptr)
        colours.peak = peakOf(caps);
    return colours;
}

std::shared_ptr<const PlanarPicture> picture(GstSample *sample, const Turn &turn,
                                             const std::optional<PictureColours> &colours)
{
    GstVideoInfo info;
    GstCaps *caps = gst_sample_get_caps(sample);
    if (caps == nullptr || !gst_video_info_from_caps(&info, caps) || !GST_VIDEO_INFO_IS_YUV(&info)
        || GST_VIDEO_INFO_N_PLANES(&info) < 2)
        return nullptr;
    const auto frame = std::shared_ptr<GstVideoFrame>(new GstVideoFrame{}, [](GstVideoFrame *frame) {
        if (frame->buffer != nullptr)
            gst_video_frame_unmap(frame);
        delete frame;
    });
    if (!gst_video_frame_map(frame.get(), &info, gst_sample_get_buffer(sample), GST_MAP_READ)) {
        frame->buffer = nullptr;
        return nullptr;
    }
    const GstVideoFormatInfo *format = info.finfo;
    auto picture = std::make_shared<PlanarPicture>();
    picture->sampleBytes = GST_VIDEO_FORMAT_INFO_DEPTH(format, 0) > 8 ? 2 : 1;
    picture->depth = int(GST_VIDEO_FORMAT_INFO_DEPTH(format, 0));
    picture->lowBit = int(GST_VIDEO_FORMAT_INFO_SHIFT(format, 0));
    for (guint i = 0; i < 3; ++i) {
        PlanarPicture::Component &component = picture->components[i];
        component.data = reinterpret_cast<const std::byte *>(GST_VIDEO_FRAME_COMP_DATA(frame.get(), i));
        component.stride = GST_VIDEO_FRAME_COMP_STRIDE(frame.get(), i);
        component.step = GST_VIDEO_FRAME_COMP_PSTRIDE(frame.get(), i) / picture->sampleBytes;
    }
    picture->size = QSize(GST_VIDEO_FRAME_WIDTH(frame.get()), GST_VIDEO_FRAME_HEIGHT(frame.get()));
    picture->chromaShiftX = int(GST_VIDEO_FORMAT_INFO_W_SUB(format, 1));
    picture->chromaShiftY = int(GST_VIDEO_FORMAT_INFO_H_SUB(format, 1));
    picture->chromaAtLeft = (info.chroma_site & GST_VIDEO_CHROMA_SITE_NONE) == 0;
    picture->chromaAtTop = (info.chroma_site & GST_VIDEO_CHROMA_SITE_V_COSITED) != 0;
    picture->colours = colours.value_or(planarframes::colours(info, caps));
    picture->colours.depth = picture->depth;
    picture->squareSize = squarePixelSize(info);
    picture->mirrored = turn.mirrored;
    picture->quarters = turn.quarters;
    picture->owner = frame;
    return picture;
}

} // namespace planarframes
