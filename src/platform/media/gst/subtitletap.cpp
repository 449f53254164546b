// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitletap.h"

#include "elementhooks.h"
#include "streamfacts.h"

#include <algorithm>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr size_t MostTracks = 64;
constexpr qsizetype LongestPacket = 64 * 1024; // bytes that are looked at
constexpr qsizetype LongestHead = 256 * 1024;
constexpr auto UsualLength = std::chrono::seconds(4); // of what says no length

enum class Format { None, Tagged, Plain, Script };

Format formatOf(const GstCaps *caps)
{
    if (caps == nullptr || gst_caps_get_size(caps) == 0)
        return Format::None;
    const GstStructure *structure = gst_caps_get_structure(caps, 0);
    if (gst_structure_has_name(structure, "text/x-raw"))
        return g_strcmp0(gst_structure_get_string(structure, "format"), "pango-markup") == 0 ? Format::Tagged
                                                                                             : Format::Plain;
    if (gst_structure_has_name(structure, "application/x-ass")
        || gst_structure_has_name(structure, "application/x-ssa"))
        return Format::Script;
    // WebVTT in Matroska bears no name that is known here.
    if (gst_structure_has_name(structure, "application/x-subtitle-unknown")
        || gst_structure_has_name(structure, "application/x-subtitle-vtt")
        || gst_structure_has_name(structure, "application/x-subtitle"))
        return Format::Tagged;
    return Format::None;
}

QString textOf(GstBuffer *buffer, qsizetype limit)
{
    GstMapInfo map;
    if (buffer == nullptr || !gst_buffer_map(buffer, &map, GST_MAP_READ))
        return {};
    const auto *data = reinterpret_cast<const char *>(map.data);
    const auto size = qsizetype(strnlen(data, std::min<size_t>(map.size, size_t(limit))));
    const QString text = QString::fromUtf8(data, size);
    gst_buffer_unmap(buffer, &map);
    return text;
}

QString headOf(const GstCaps *caps)
{
    const GValue *value = gst_structure_get_value(gst_caps_get_structure(caps, 0), "codec_data");
    return value != nullptr && GST_VALUE_HOLDS_BUFFER(value)
        ? textOf(gst_value_get_buffer(value), LongestHead)
        : QString();
}

QString formatName(const GstCaps *caps, Format format)
{
    if (format == Format::Script)
        return gst_structure_has_name(gst_caps_get_structure(caps, 0), "application/x-ssa") ? u"SSA"_s
                                                                                            : u"ASS"_s;
    return {};
}

} // namespace

struct SubtitleTap::Stream
{
    std::weak_ptr<SubtitleTap> tap;
    Track track;
    Format format = Format::None;
    subtitles::ScriptStyles styles;
    bool described = false; // its tags were read
};

void SubtitleTap::watch(GstElement *pipeline)
{
    connectKeeping(pipeline, "deep-element-added", G_CALLBACK(elementAdded), weak_from_this());
}

void SubtitleTap::close()
{
    const std::lock_guard locker(m_mutex);
    m_found = nullptr;
}

QList<SubtitleTap::Track> SubtitleTap::tracks() const
{
    const std::lock_guard locker(m_mutex);
    QList<Track> result;
    for (const auto &stream : m_streams)
        result.append(stream->track);
    return result;
}

void SubtitleTap::elementAdded(GstBin *bin, GstBin *sub, GstElement *element, gpointer data)
{
    Q_UNUSED(bin)
    Q_UNUSED(sub)
    GstElementFactory *factory = gst_element_get_factory(element);
    const gchar *kind = factory == nullptr
        ? nullptr
        : gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS);
    if (kind == nullptr || strstr(kind, "Demux") == nullptr)
        return;
    connectKeeping(element, "pad-added", G_CALLBACK(padAdded),
                   *static_cast<std::weak_ptr<SubtitleTap> *>(data));
}

void SubtitleTap::padAdded(GstElement *demuxer, GstPad *pad, gpointer data)
{
    Q_UNUSED(demuxer)
    const std::shared_ptr<SubtitleTap> tap = static_cast<std::weak_ptr<SubtitleTap> *>(data)->lock();
    const std::unique_ptr<GstCaps, decltype(&gst_caps_unref)> caps(gst_pad_get_current_caps(pad),
                                                                   gst_caps_unref);
    const Format format = caps ? formatOf(caps.get()) : Format::None;
    const QString id = streamIdentity(pad);
    if (!tap || format == Format::None || id.isEmpty())
        return;
    auto stream = std::make_shared<Stream>();
    stream->tap = tap;
    stream->format = format;
    stream->styles = subtitles::ScriptStyles(format == Format::Script ? headOf(caps.get()) : QString());
    stream->track.cues = std::make_shared<CueStore>();
    stream->track.track.id = id;
    stream->track.track.codec = formatName(caps.get(), format);
    stream->track.isDefault = isDefaultStream(pad);
    describeStream(pad, &stream->track.track);
    {
        const std::lock_guard locker(tap->m_mutex);
        const auto known = std::find_if(tap->m_streams.begin(), tap->m_streams.end(),
                                        [&](const auto &other) { return other->track.track.id == id; });
        if (known != tap->m_streams.end())
            stream = *known; // of another pipeline for the same video
        else if (tap->m_streams.size() < MostTracks)
            tap->m_streams.push_back(stream);
        else
            return;
        if (tap->m_found)
            tap->m_found();
    }
    probeKeeping(pad, GST_PAD_PROBE_TYPE_BUFFER, probed, stream);
}

GstPadProbeReturn SubtitleTap::probed(GstPad *pad, GstPadProbeInfo *info, gpointer data)
{
    Stream &stream = **static_cast<std::shared_ptr<Stream> *>(data);
    const std::shared_ptr<SubtitleTap> tap = stream.tap.lock();
    if (!tap)
        return GST_PAD_PROBE_REMOVE;
    tap->take(stream, pad, GST_PAD_PROBE_INFO_BUFFER(info));
    return GST_PAD_PROBE_OK;
}

void SubtitleTap::take(Stream &stream, GstPad *pad, GstBuffer *buffer)
{
    if (!std::exchange(stream.described, true)) { // its tags come after its pad
        MediaTrack track = stream.track.track;
        describeStream(pad, &track);
        const std::lock_guard locker(m_mutex);
        stream.track.track = track;
        if (m_found)
            m_found();
    }
    GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
    if (event == nullptr)
        return;
    const std::unique_ptr<GstEvent, decltype(&gst_event_unref)> owner(event, gst_event_unref);
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(event, &segment);
    if (segment->format != GST_FORMAT_TIME || !GST_BUFFER_PTS_IS_VALID(buffer))
        return;
    guint64 start = 0;
    if (gst_segment_to_stream_time_full(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer), &start) <= 0)
        return;
    const QString text = textOf(buffer, LongestPacket);
    SubtitleCue cue;
    cue.start = MediaTime(qint64(std::min<guint64>(start, G_MAXINT64 / 4)));
    const bool knowsLength = GST_BUFFER_DURATION_IS_VALID(buffer) && GST_BUFFER_DURATION(buffer) > 0;
    cue.end = cue.start
        + (knowsLength ? MediaTime(qint64(std::min<guint64>(GST_BUFFER_DURATION(buffer), G_MAXINT64 / 4)))
                       : MediaTime(UsualLength));
    switch (stream.format) {
    case Format::Script:
        cue.text = subtitles::parseEvent(text, stream.styles);
        break;
    case Format::Tagged:
        cue.text = subtitles::parseTagged(text);
        break;
    case Format::Plain:
    case Format::None:
        cue.text = subtitles::parsePlain(text);
        break;
    }
    stream.track.cues->add(cue);
}
