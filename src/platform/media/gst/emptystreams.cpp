// SPDX-License-Identifier: GPL-3.0-or-later
#include "emptystreams.h"

#include "elementhooks.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

constexpr const char *EmptySound = "kestrel-empty-sound";
constexpr const char *BegunSound = "kestrel-begun-sound";
constexpr const char *EmptyPicture = "kestrel-empty-picture";

constexpr int Buffers = GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST;
constexpr int Watched = Buffers | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH;

// Of one stream; read and written where it flows.
struct Begun
{
    GstSegment segment;
    bool has = false;
    bool wasEmpty = false; // has ended without having begun, and was not begun elsewhere since
};

using Stream = std::unique_ptr<GstStream, decltype(&gst_object_unref)>;

// What flows through the output of a parser's bin, of which `proxy` is the inner side.
Stream streamOf(GstPad *proxy)
{
    GstProxyPad *output
        = GST_IS_PROXY_PAD(proxy) ? gst_proxy_pad_get_internal(GST_PROXY_PAD(proxy)) : nullptr;
    Stream stream(output == nullptr ? nullptr : gst_pad_get_stream(GST_PAD(output)), &gst_object_unref);
    gst_clear_object(&output);
    return stream;
}

bool isOf(GstStream *stream, GstStreamType type)
{
    return stream != nullptr && (gst_stream_get_stream_type(stream) & type) != 0;
}

// What a decoder needs to know before is no sound, and neither is what it plays to nobody on the way from the
// last key frame to the place that was looked for.
bool isPart(GstBuffer *buffer, const GstSegment &segment)
{
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_HEADER))
        return false;
    const GstClockTime begin = GST_BUFFER_PTS(buffer);
    if (!GST_CLOCK_TIME_IS_VALID(begin) || segment.format != GST_FORMAT_TIME)
        return true;
    const GstClockTime length = GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer) : 0;
    return begin + std::max<GstClockTime>(length, 1) > segment.start;
}

// A parser that says when its sound begins, and not what it is, saw nothing of it before the end. Without
// that nobody makes a decoder.
void sendCaps(GstPad *peer, GstStream *stream)
{
    GstCaps *caps = gst_stream_get_caps(stream);
    GstCaps *taken = caps == nullptr ? nullptr : gst_pad_query_caps(peer, caps);
    if (taken != nullptr && gst_caps_is_empty(taken) == FALSE && gst_caps_is_any(taken) == FALSE) {
        taken = gst_caps_fixate(taken);
        gst_pad_send_event(peer, gst_event_new_caps(taken));
    }
    gst_clear_caps(&taken);
    gst_clear_caps(&caps);
}

// A pad that ends pushes nothing more; what stands behind it has not heard of the end yet.
void sendGap(GstPad *peer)
{
    GstEvent *event = gst_pad_get_sticky_event(peer, GST_EVENT_SEGMENT, 0);
    const GstSegment *segment = nullptr;
    if (event != nullptr)
        gst_event_parse_segment(event, &segment);
    if (segment != nullptr && segment->format == GST_FORMAT_TIME)
        gst_pad_send_event(peer, gst_event_new_gap(segment->start, GST_CLOCK_TIME_NONE));
    gst_clear_event(&event);
}

void begins(GstPad *pad)
{
    if (gst_pad_has_current_caps(pad) != FALSE)
        return;
    GstPad *peer = gst_pad_get_peer(pad);
    if (const Stream stream = streamOf(peer); isOf(stream.get(), GST_STREAM_TYPE_AUDIO))
        sendCaps(peer, stream.get());
    gst_clear_object(&peer);
}

void tell(GstPad *pad, const char *name)
{
    GstElement *parser = gst_pad_get_parent_element(pad);
    if (parser == nullptr)
        return;
    gst_element_post_message(parser,
                             gst_message_new_element(GST_OBJECT(parser), gst_structure_new_empty(name)));
    gst_object_unref(parser);
}

void hasBegun(GstPad *pad)
{
    GstPad *peer = gst_pad_get_peer(pad);
    if (const Stream stream = streamOf(peer); isOf(stream.get(), GST_STREAM_TYPE_AUDIO))
        tell(pad, BegunSound);
    gst_clear_object(&peer);
}

void ends(GstPad *pad)
{
    GstPad *peer = gst_pad_get_peer(pad);
    const Stream stream = streamOf(peer);
    if (isOf(stream.get(), GST_STREAM_TYPE_AUDIO)) {
        tell(pad, EmptySound);
        sendGap(peer);
    } else if (isOf(stream.get(), GST_STREAM_TYPE_VIDEO)) {
        tell(pad, EmptyPicture);
    }
    gst_clear_object(&peer);
}

GstPadProbeReturn passed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    auto *begun = static_cast<Begun *>(self);
    if ((info->type & Buffers) != 0) {
        if (begun->has)
            return GST_PAD_PROBE_OK;
        begun->has = (info->type & GST_PAD_PROBE_TYPE_BUFFER_LIST) != 0
            || isPart(GST_PAD_PROBE_INFO_BUFFER(info), begun->segment);
        if (begun->has && std::exchange(begun->wasEmpty, false))
            hasBegun(pad);
        return GST_PAD_PROBE_OK;
    }
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_STREAM_START:
    case GST_EVENT_FLUSH_STOP:
        begun->has = false;
        break;
    case GST_EVENT_GAP:
        begun->has = true;
        break;
    case GST_EVENT_SEGMENT:
        gst_event_copy_segment(event, &begun->segment);
        begins(pad);
        break;
    case GST_EVENT_EOS:
        if (!begun->has) {
            begun->wasEmpty = true;
            ends(pad);
        }
        break;
    default:
        break;
    }
    return GST_PAD_PROBE_OK;
}

// decodebin3 takes the end away on the pad itself; on the one behind it, it has not been there yet.
void padAdded(GstElement *parser, GstPad *pad, gpointer self)
{
    (void)parser;
    (void)self;
    GstPad *target = GST_IS_GHOST_PAD(pad) ? gst_ghost_pad_get_target(GST_GHOST_PAD(pad)) : nullptr;
    if (target != nullptr) {
        Begun begun;
        gst_segment_init(&begun.segment, GST_FORMAT_UNDEFINED);
        probeKeeping(target, Watched, passed, begun);
    }
    gst_clear_object(&target);
}

void added(GstBin *playbin, GstBin *bin, GstElement *element, gpointer self)
{
    (void)playbin;
    (void)bin;
    (void)self;
    if (isMadeBy(element, "parsebin"))
        g_signal_connect(element, "pad-added", G_CALLBACK(padAdded), nullptr);
}

} // namespace

bool tellsEmptySound(GstMessage *message)
{
    return gst_message_has_name(message, EmptySound) != FALSE;
}

bool tellsBegunSound(GstMessage *message)
{
    return gst_message_has_name(message, BegunSound) != FALSE;
}

bool tellsEmptyPicture(GstMessage *message)
{
    return gst_message_has_name(message, EmptyPicture) != FALSE;
}

void bridgeEmptyStreams(GstElement *playbin)
{
    g_signal_connect(playbin, "deep-element-added", G_CALLBACK(added), nullptr);
}
