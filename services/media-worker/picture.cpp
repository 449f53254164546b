// SPDX-License-Identifier: GPL-3.0-or-later
#include "picture.h"

#include "planeshrink.h"

#include "common/workerprotocol.h"

#include <gst/video/video.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int BytesPerPixel = 4;

PictureSize transposed(PictureSize size)
{
    return {size.height, size.width};
}

PictureSize withPixelAspect(int width, int height, int numerator, int denominator)
{
    if (numerator <= 0 || denominator <= 0 || numerator > 100 * denominator || denominator > 100 * numerator)
        return {width, height};
    const double aspect = double(numerator) / denominator;
    if (aspect >= 1)
        return {static_cast<int>(std::lround(width * aspect)), height};
    return {width, static_cast<int>(std::lround(height / aspect))};
}

bool isSideways(const TagCollector::Orientation &orientation)
{
    return orientation.quarterTurns % 2 == 1;
}

bool isReasonable(PictureSize size)
{
    return size.width > 0 && size.height > 0 && size.width <= int(WorkerProtocol::MaximumSide)
        && size.height <= int(WorkerProtocol::MaximumSide)
        && std::uint64_t(size.width) * std::uint64_t(size.height) <= WorkerProtocol::MaximumPixels;
}

Picture convert(GstVideoFrame &source, PictureSize size)
{
    Picture picture;
    const GstVideoInfo &from = source.info;
    GstVideoInfo to;
    gst_video_info_set_format(&to, GST_VIDEO_FORMAT_BGRx, static_cast<guint>(size.width),
                              static_cast<guint>(size.height));
    // The converter refuses to change anything but the picture.
    GST_VIDEO_INFO_FPS_N(&to) = GST_VIDEO_INFO_FPS_N(&from);
    GST_VIDEO_INFO_FPS_D(&to) = GST_VIDEO_INFO_FPS_D(&from);
    GST_VIDEO_INFO_INTERLACE_MODE(&to) = GST_VIDEO_INFO_INTERLACE_MODE(&from);
    GstStructure *const options = gst_structure_new(
        "options", GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD, GST_TYPE_VIDEO_RESAMPLER_METHOD,
        GST_VIDEO_RESAMPLER_METHOD_LINEAR, GST_VIDEO_CONVERTER_OPT_DITHER_METHOD,
        GST_TYPE_VIDEO_DITHER_METHOD, GST_VIDEO_DITHER_NONE, nullptr);
    if (GstVideoConverter *const converter = gst_video_converter_new(&from, &to, options)) {
        picture.size = size;
        picture.pixels.resize(GST_VIDEO_INFO_SIZE(&to));
        GstBuffer *const buffer
            = gst_buffer_new_wrapped_full(GstMemoryFlags(0), picture.pixels.data(), picture.pixels.size(), 0,
                                          picture.pixels.size(), nullptr, nullptr);
        GstVideoFrame target;
        if (gst_video_frame_map(&target, &to, buffer, GST_MAP_WRITE)) {
            gst_video_converter_frame(converter, &source, &target);
            gst_video_frame_unmap(&target);
        }
        gst_buffer_unref(buffer);
        gst_video_converter_free(converter);
    }
    return picture;
}

Plane planeOf(GstVideoFrame &frame, int component)
{
    const auto number = static_cast<guint>(component);
    return {static_cast<std::uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&frame, number)),
            GST_VIDEO_FRAME_COMP_STRIDE(&frame, number), GST_VIDEO_FRAME_COMP_WIDTH(&frame, number),
            GST_VIDEO_FRAME_COMP_HEIGHT(&frame, number)};
}

// The whole number by which the planes of the usual format can be shrunk before the converter has to see to
// the rest; its own scaler takes several times as long. 1 where they cannot.
int shrinkFactor(const GstVideoInfo &info, PictureSize size)
{
    if (GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420 || GST_VIDEO_INFO_IS_INTERLACED(&info))
        return 1;
    const int width = GST_VIDEO_INFO_WIDTH(&info);
    const int height = GST_VIDEO_INFO_HEIGHT(&info);
    // The colour planes are half as large, and a square has to fit into them too.
    return std::min({width / size.width, height / size.height, width / 2, height / 2});
}

Picture shrinkAndConvert(GstVideoFrame &source, PictureSize size, int factor)
{
    const GstVideoInfo &whole = source.info;
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_I420, static_cast<guint>(whole.width / factor),
                              static_cast<guint>(whole.height / factor));
    info.colorimetry = whole.colorimetry;
    info.chroma_site = whole.chroma_site;
    info.fps_n = whole.fps_n;
    info.fps_d = whole.fps_d;
    const BufferPointer buffer(gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr));
    GstVideoFrame shrunk;
    if (!gst_video_frame_map(&shrunk, &info, buffer.get(), GST_MAP_READWRITE))
        return {};
    for (int component = 0; component < 3; ++component)
        shrinkPlane(planeOf(source, component), planeOf(shrunk, component), factor);
    Picture picture = convert(shrunk, size);
    gst_video_frame_unmap(&shrunk);
    return picture;
}

Picture scale(GstSample *decoded, const GstVideoInfo &info, PictureSize size)
{
    GstVideoFrame source;
    if (!gst_video_frame_map(&source, &info, gst_sample_get_buffer(decoded), GST_MAP_READ))
        return {};
    const int factor = shrinkFactor(info, size);
    Picture picture = factor >= 2 ? shrinkAndConvert(source, size, factor) : convert(source, size);
    gst_video_frame_unmap(&source);
    return picture;
}

} // namespace

PictureSize displayedSize(const GstCaps *caps, const TagCollector::Orientation &orientation)
{
    const GstStructure *const structure = gst_caps_get_structure(caps, 0);
    int width = 0;
    int height = 0;
    int numerator = 1;
    int denominator = 1;
    gst_structure_get_int(structure, "width", &width);
    gst_structure_get_int(structure, "height", &height);
    gst_structure_get_fraction(structure, "pixel-aspect-ratio", &numerator, &denominator);
    const PictureSize size = withPixelAspect(width, height, numerator, denominator);
    return isSideways(orientation) ? transposed(size) : size;
}

PictureSize coveringSize(PictureSize size, PictureSize cover)
{
    if (cover.width <= 0 || cover.height <= 0 || size.width <= 0 || size.height <= 0)
        return size;
    const double factor = std::max(double(cover.width) / size.width, double(cover.height) / size.height);
    if (factor >= 1)
        return size;
    return {std::max(1, static_cast<int>(std::ceil(size.width * factor - 1e-6))),
            std::max(1, static_cast<int>(std::ceil(size.height * factor - 1e-6)))};
}

Picture turned(Picture picture, const TagCollector::Orientation &orientation)
{
    if (orientation.quarterTurns == 0 && !orientation.flipped)
        return picture;
    const int width = picture.size.width;
    const int height = picture.size.height;
    Picture upright;
    upright.size = isSideways(orientation) ? transposed(picture.size) : picture.size;
    upright.pixels.resize(picture.pixels.size());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int flippedX = orientation.flipped ? width - 1 - x : x;
            int toX = flippedX;
            int toY = y;
            switch (orientation.quarterTurns) {
            case 1:
                toX = height - 1 - y;
                toY = flippedX;
                break;
            case 2:
                toX = width - 1 - flippedX;
                toY = height - 1 - y;
                break;
            case 3:
                toX = y;
                toY = width - 1 - flippedX;
                break;
            default:
                break;
            }
            std::memcpy(upright.pixels.data() + (std::size_t(toY) * upright.size.width + toX) * BytesPerPixel,
                        picture.pixels.data() + (std::size_t(y) * width + x) * BytesPerPixel, BytesPerPixel);
        }
    }
    return upright;
}

Picture makePicture(GstSample *decoded, const TagCollector::Orientation &orientation, PictureSize cover)
{
    GstVideoInfo info;
    const GstCaps *const caps = gst_sample_get_caps(decoded);
    if (!caps || !gst_video_info_from_caps(&info, caps))
        return {};
    const PictureSize stored = withPixelAspect(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info),
                                               GST_VIDEO_INFO_PAR_N(&info), GST_VIDEO_INFO_PAR_D(&info));
    const PictureSize size = coveringSize(stored, isSideways(orientation) ? transposed(cover) : cover);
    if (!isReasonable(size))
        return {};
    return turned(scale(decoded, info, size), orientation);
}

int brightness(const Picture &picture)
{
    constexpr int Step = 7;
    std::uint64_t sum = 0;
    std::uint64_t count = 0;
    for (int y = 0; y < picture.size.height; y += Step) {
        const std::uint8_t *row = picture.pixels.data() + std::size_t(y) * picture.size.width * BytesPerPixel;
        for (int x = 0; x < picture.size.width; x += Step, ++count) {
            const std::uint8_t *const pixel = row + std::size_t(x) * BytesPerPixel;
            sum += (pixel[0] * 29u + pixel[1] * 150u + pixel[2] * 77u) >> 8;
        }
    }
    return count == 0 ? 0 : static_cast<int>(sum / count);
}
