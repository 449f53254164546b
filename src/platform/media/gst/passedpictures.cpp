// SPDX-License-Identifier: GPL-3.0-or-later
#include "passedpictures.h"

#include "elementhooks.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include <gst/video/video.h>

namespace {

using Bytes = std::span<const std::uint8_t>;

// A decoder that has learnt from whole groups how far pictures are stored out of order needs some of them
// again before the one that counts.
constexpr GstClockTime Lead = 160 * GST_MSECOND;

std::string_view field(const GstStructure *structure, const char *name)
{
    const char *text = gst_structure_get_string(structure, name);
    return text == nullptr ? std::string_view() : std::string_view(text);
}

// Of the decoder configuration record (ISO/IEC 14496-15) the byte at that place.
std::optional<std::uint8_t> configuration(const GstStructure *structure, gsize place)
{
    const GValue *value = gst_structure_get_value(structure, "codec_data");
    GstBuffer *record = value == nullptr ? nullptr : gst_value_get_buffer(value);
    std::uint8_t byte = 0;
    if (record == nullptr || gst_buffer_extract(record, place, &byte, 1) != 1)
        return {};
    return byte;
}

// Calls `take` with each unit until that says false.
template <typename Take> void eachUnit(int lengthBytes, Bytes data, Take take)
{
    if (lengthBytes > 0) {
        while (data.size() > std::size_t(lengthBytes)) {
            std::size_t length = 0;
            for (int i = 0; i < lengthBytes; ++i)
                length = length << 8 | data[std::size_t(i)];
            data = data.subspan(std::size_t(lengthBytes));
            length = std::min(length, data.size());
            if (length == 0 || !take(data.first(length)))
                return;
            data = data.subspan(length);
        }
        return;
    }
    for (std::size_t i = 0; i + 3 < data.size(); ++i) {
        if (data[i] == 0 && data[i + 1] == 0 && data[i + 2] == 1 && !take(data.subspan(i + 3)))
            return;
    }
}

enum class Unit { NoPicture, Alone, Needed };

Unit unitOf(PictureFormat::Codec codec, Bytes unit)
{
    if (codec == PictureFormat::Codec::H264) {
        const int type = unit[0] & 0x1f;
        if (type < 1 || type > 5)
            return Unit::NoPicture;
        return (unit[0] & 0x60) == 0 ? Unit::Alone : Unit::Needed; // nal_ref_idc
    }
    const int type = unit[0] >> 1 & 0x3f;
    if (type > 31)
        return Unit::NoPicture;
    return type < 10 && type % 2 == 0 ? Unit::Alone : Unit::Needed; // sub-layer non-reference
}

// What flows into one decoder.
class Passage
{
public:
    static GstPadProbeReturn probed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
    {
        (void)pad;
        Passage &passage = *static_cast<Passage *>(self);
        if ((info->type & GST_PAD_PROBE_TYPE_BUFFER) != 0)
            return passage.isPassed(GST_PAD_PROBE_INFO_BUFFER(info)) ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
        passage.heed(GST_PAD_PROBE_INFO_EVENT(info));
        return GST_PAD_PROBE_OK;
    }

private:
    void heed(GstEvent *event)
    {
        if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
            GstCaps *caps = nullptr;
            gst_event_parse_caps(event, &caps);
            m_format = PictureFormat::of(caps);
        } else if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
            const GstSegment *segment = nullptr;
            gst_event_parse_segment(event, &segment);
            m_start = segment->format == GST_FORMAT_TIME && segment->rate > 0 ? segment->start : 0;
        }
    }

    [[nodiscard]] bool isPassed(GstBuffer *buffer) const
    {
        if (m_format.codec == PictureFormat::Codec::Other || !GST_BUFFER_PTS_IS_VALID(buffer)
            || !GST_BUFFER_DURATION_IS_VALID(buffer)
            || !GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT)
            || GST_BUFFER_PTS(buffer) + GST_BUFFER_DURATION(buffer) + Lead >= m_start)
            return false;
        GstMapInfo map;
        if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
            return false;
        const bool alone = isPictureAlone(m_format, Bytes(map.data, map.size));
        gst_buffer_unmap(buffer, &map);
        return alone;
    }

    PictureFormat m_format;
    GstClockTime m_start = 0;
};

void added(GstBin *playbin, GstBin *bin, GstElement *element, gpointer self)
{
    (void)playbin;
    (void)bin;
    (void)self;
    if (!GST_IS_VIDEO_DECODER(element))
        return;
    GstPad *pad = gst_element_get_static_pad(element, "sink");
    probeKeeping(pad, GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, Passage::probed,
                 Passage());
    gst_object_unref(pad);
}

} // namespace

void leavePassedPicturesOut(GstElement *playbin)
{
    g_signal_connect(playbin, "deep-element-added", G_CALLBACK(added), nullptr);
}

PictureFormat PictureFormat::of(const GstCaps *caps)
{
    const GstStructure *structure = gst_caps_get_structure(caps, 0);
    const std::string_view name = gst_structure_get_name(structure);
    const bool units = field(structure, "stream-format") != "byte-stream";
    if (field(structure, "alignment") == "nal")
        return {};
    if (name == "video/x-h264") {
        const auto lengths = units ? configuration(structure, 4) : std::optional<std::uint8_t>(0);
        return lengths ? PictureFormat{Codec::H264, units ? (*lengths & 3) + 1 : 0} : PictureFormat();
    }
    if (name != "video/x-h265" || !units)
        return {};
    // With more than one temporal layer a picture that its own layer does not need may be needed by the next.
    const auto layers = configuration(structure, 21);
    return layers && (*layers >> 3 & 7) == 1 ? PictureFormat{Codec::Hevc, (*layers & 3) + 1}
                                             : PictureFormat();
}

bool isPictureAlone(const PictureFormat &format, Bytes data)
{
    bool picture = false;
    bool alone = format.codec != PictureFormat::Codec::Other;
    // Of two fields one may be needed.
    eachUnit(format.lengthBytes, data, [&](Bytes unit) {
        const Unit kind = unitOf(format.codec, unit);
        picture = picture || kind != Unit::NoPicture;
        alone = alone && kind != Unit::Needed;
        return alone;
    });
    return picture && alone;
}
