// SPDX-License-Identifier: GPL-3.0-or-later
#include "seeklanding.h"

#include "elementhooks.h"
#include "endedstreams.h"

#include <algorithm>
#include <cstring>

#include <gst/video/gstvideodecoder.h>

using namespace std::chrono_literals;

namespace {

// Of a video that never has a complete picture the incomplete ones are better than none.
constexpr int MostIncomplete = 400;
// No picture lasts as short: what does is what a seek has left of one.
constexpr MediaTime ShortRest = 4ms;
constexpr const char *NoPicture = "kestrel-no-picture";

// The same stream, beginning so much later.
GstEvent *shortened(GstEvent *event, GstClockTime margin)
{
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(event, &segment);
    GstSegment later = *segment;
    if (later.base >= margin) { // it follows another one
        later.base -= margin;
    } else {
        const GstClockTime way = margin - later.base;
        later.start += way;
        later.position = later.start;
        if (GST_CLOCK_TIME_IS_VALID(later.time))
            later.time += way;
        later.base = 0;
    }
    GstEvent *replacement = gst_event_new_segment(&later);
    gst_event_set_seqnum(replacement, gst_event_get_seqnum(event));
    gst_event_set_running_time_offset(replacement, gst_event_get_running_time_offset(event));
    return replacement;
}

template <typename Visit> void eachInput(GstElement *queues, Visit visit)
{
    gst_element_foreach_sink_pad(
        queues,
        [](GstElement *, GstPad *pad, gpointer self) -> gboolean {
            (*static_cast<Visit *>(self))(pad);
            return TRUE;
        },
        &visit);
}

bool isTimed(GstEvent *event)
{
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(event, &segment);
    return segment->format == GST_FORMAT_TIME;
}

// One that goes on with another stream where the one before ended.
bool isAdaptive(GstElement *element)
{
    GstElementFactory *factory = gst_element_get_factory(element);
    const gchar *kind = factory == nullptr
        ? nullptr
        : gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_KLASS);
    return kind != nullptr && std::strstr(kind, "Adaptive") != nullptr;
}

bool isDecodeError(GstMessage *message)
{
    if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ERROR)
        return false;
    GError *error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const bool is = g_error_matches(error, GST_STREAM_ERROR, GST_STREAM_ERROR_DECODE) != FALSE;
    g_clear_error(&error);
    return is;
}

// Of the bus of one decoder, which hands everything on to the one that its bin gave it.
struct DecoderRelay
{
    SeekLanding *landing;
    GstBus *next;

    static void release(gpointer self)
    {
        gst_object_unref(static_cast<DecoderRelay *>(self)->next);
        delete static_cast<DecoderRelay *>(self);
    }
};

bool isPictures(GstPad *pad)
{
    return (streamTypeOf(pad) & GST_STREAM_TYPE_VIDEO) != 0;
}

// A gap makes a decoder of pictures give out what it has.
void drain(GstPad *pad, GstPad *decoder)
{
    GstEvent *begin = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
    if (begin != nullptr && isTimed(begin)) {
        const GstSegment *segment = nullptr;
        gst_event_parse_segment(begin, &segment);
        gst_pad_send_event(decoder, gst_event_new_gap(segment->start, GST_CLOCK_TIME_NONE));
    }
    gst_clear_event(&begin);
}

} // namespace

void SeekLanding::watchPicture(GstElement *sink)
{
    gst_segment_init(&m_segment, GST_FORMAT_TIME);
    GstPad *pad = gst_element_get_static_pad(sink, "sink");
    gst_pad_add_probe(pad,
                      GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM
                                      | GST_PAD_PROBE_TYPE_EVENT_FLUSH),
                      pictureProbed, this, nullptr);
    gst_object_unref(pad);
}

void SeekLanding::watch(GstElement *pipeline)
{
    expect(MediaTime::zero());
    m_joins = false;
    g_signal_connect(pipeline, "deep-element-added", G_CALLBACK(added), this);
    // Those of its only decodebin3, which it makes with itself.
    eachMadeBy(pipeline, "multiqueue", [this](GstElement *queues) {
        g_signal_connect(queues, "pad-added", G_CALLBACK(queueAdded), this);
    });
}

void SeekLanding::expect(MediaTime margin)
{
    const std::lock_guard locker(m_mutex);
    m_margin = margin;
}

std::optional<SeekLanding::Picture> SeekLanding::picture() const
{
    const std::lock_guard locker(m_mutex);
    return m_picture;
}

bool SeekLanding::hasPictures() const
{
    const std::lock_guard locker(m_mutex);
    return m_hasPictures;
}

bool SeekLanding::isVague() const
{
    const std::lock_guard locker(m_mutex);
    return m_vague;
}

bool SeekLanding::needsNext() const
{
    const std::lock_guard locker(m_mutex);
    return m_needsNext;
}

MediaTime SeekLanding::inside(MediaTime time) const
{
    const std::lock_guard locker(m_mutex);
    const bool rest = m_picture && m_picture->time == time && m_picture->length > MediaTime::zero()
        && m_picture->length < ShortRest;
    return rest ? std::max(time - ShortRest, MediaTime::zero()) : time;
}

void SeekLanding::added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer self)
{
    Q_UNUSED(pipeline)
    Q_UNUSED(bin)
    if (isMadeBy(element, "parsebin")) {
        g_signal_connect(element, "pad-added", G_CALLBACK(padAdded), self);
        return;
    }
    auto *landing = static_cast<SeekLanding *>(self);
    if (GST_IS_VIDEO_DECODER(element)) {
        watchDecoder(element, landing);
        return;
    }
    if (isAdaptive(element))
        landing->m_joins = true;
    const std::lock_guard locker(landing->m_mutex);
    if (isMadeBy(element, "mpegpsdemux"))
        landing->m_vague = true;
    else if (isMadeBy(element, "tsdemux"))
        landing->m_needsNext = true;
}

void SeekLanding::padAdded(GstElement *parser, GstPad *pad, gpointer self)
{
    Q_UNUSED(parser)
    if (gst_pad_get_direction(pad) == GST_PAD_SRC)
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, streamProbed, self, nullptr);
}

GstPadProbeReturn SeekLanding::streamProbed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    Q_UNUSED(pad)
    auto *landing = static_cast<SeekLanding *>(self);
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) != GST_EVENT_SEGMENT || !isTimed(event))
        return GST_PAD_PROBE_OK;
    const std::lock_guard locker(landing->m_mutex);
    if (landing->m_margin > MediaTime::zero()) {
        GST_PAD_PROBE_INFO_DATA(info) = shortened(event, GstClockTime(landing->m_margin.count()));
        gst_event_unref(event);
    }
    return GST_PAD_PROBE_OK;
}

bool SeekLanding::isWaiting() const
{
    const std::lock_guard locker(m_mutex);
    return m_waiting;
}

bool SeekLanding::isDammed(GstElement *pipeline) const
{
    if (!isWaiting())
        return false;
    bool dammed = false;
    eachMadeBy(pipeline, "multiqueue", [&dammed](GstElement *queues) {
        guint64 limit = 0;
        g_object_get(queues, "max-size-time", &limit, nullptr);
        bool starves = false;
        bool full = false;
        eachInput(queues, [&](GstPad *pad) {
            guint buffers = 0;
            guint64 time = 0;
            g_object_get(pad, "current-level-buffers", &buffers, "current-level-time", &time, nullptr);
            if (isPictures(pad))
                starves = starves || buffers == 0;
            else
                full = full || (limit > 0 && time >= limit);
        });
        dammed = dammed || (starves && full);
    });
    return dammed;
}

bool SeekLanding::tellsNoPicture(GstMessage *message)
{
    return gst_message_has_name(message, NoPicture) != FALSE;
}

// A pipeline that has heard of an error never again says that it stands on a picture.
void SeekLanding::watchDecoder(GstElement *decoder, SeekLanding *landing)
{
    GstBus *given = gst_element_get_bus(decoder);
    if (given == nullptr)
        return;
    GstBus *own = gst_bus_new();
    gst_bus_set_sync_handler(own, decoderSaid, new DecoderRelay{landing, given}, DecoderRelay::release);
    gst_element_set_bus(decoder, own);
    gst_object_unref(own);
}

GstBusSyncReply SeekLanding::decoderSaid(GstBus *bus, GstMessage *message, gpointer relay)
{
    Q_UNUSED(bus)
    const auto *own = static_cast<DecoderRelay *>(relay);
    bool found = true;
    if (isDecodeError(message)) {
        const std::lock_guard locker(own->landing->m_mutex);
        found = !own->landing->m_waiting;
    }
    GstMessage *next = found
        ? gst_message_ref(message)
        : gst_message_new_element(GST_MESSAGE_SRC(message), gst_structure_new_empty(NoPicture));
    gst_message_unref(message);
    gst_bus_post(own->next, next);
    return GST_BUS_DROP;
}

void SeekLanding::queueAdded(GstElement *queues, GstPad *pad, gpointer self)
{
    Q_UNUSED(queues)
    if (gst_pad_get_direction(pad) == GST_PAD_SRC)
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, endProbed, self, nullptr);
}

// decodebin3 keeps the end of a stream until all have ended. A sink that waits for something to stand on,
// after a pause or a seek, would wait until then, and the others with it. A decoder that has decoded nothing
// calls its end an error, which is of no matter as long as the rest plays.
GstPadProbeReturn SeekLanding::endProbed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    auto *landing = static_cast<SeekLanding *>(self);
    if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_EOS)
        return GST_PAD_PROBE_OK;
    const GstStreamType type = streamTypeOf(pad);
    GstPad *decoder = gst_pad_get_peer(pad);
    const bool pictures = (type & GST_STREAM_TYPE_VIDEO) != 0;
    const bool last = !landing->m_joins;
    if (decoder != nullptr && pictures && (last || landing->isWaiting()))
        drain(pad, decoder);
    if (decoder != nullptr && last && (pictures || (type & GST_STREAM_TYPE_AUDIO) != 0))
        sendPastDecoder(decoder, gst_event_new_eos());
    gst_clear_object(&decoder);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn SeekLanding::pictureProbed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    Q_UNUSED(pad)
    auto *landing = static_cast<SeekLanding *>(self);
    const std::lock_guard locker(landing->m_mutex);
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0)
        return landing->take(GST_PAD_PROBE_INFO_BUFFER(info));
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT && isTimed(event)) {
        gst_event_copy_segment(event, &landing->m_segment);
    } else if (GST_EVENT_TYPE(event) == GST_EVENT_FLUSH_STOP) {
        landing->m_picture.reset();
        landing->m_incomplete = 0;
        landing->m_waiting = true;
    }
    return GST_PAD_PROBE_OK;
}

// Called with the mutex locked.
GstPadProbeReturn SeekLanding::take(GstBuffer *buffer)
{
    m_hasPictures = true;
    if (!m_waiting)
        return GST_PAD_PROBE_OK;
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_CORRUPTED) && m_incomplete < MostIncomplete) {
        ++m_incomplete;
        return GST_PAD_PROBE_DROP;
    }
    m_waiting = false;
    const guint64 time = GST_BUFFER_PTS_IS_VALID(buffer)
        ? gst_segment_to_stream_time(&m_segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer))
        : GST_CLOCK_TIME_NONE;
    if (GST_CLOCK_TIME_IS_VALID(time))
        m_picture = Picture{
            MediaTime(qint64(time)),
            MediaTime(GST_BUFFER_DURATION_IS_VALID(buffer) ? qint64(GST_BUFFER_DURATION(buffer)) : 0),
            m_incomplete > 0};
    return GST_PAD_PROBE_OK;
}
