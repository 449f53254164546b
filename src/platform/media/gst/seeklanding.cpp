// SPDX-License-Identifier: GPL-3.0-or-later
#include "seeklanding.h"

#include "elementhooks.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

// Of a video that never has a complete picture the incomplete ones are better than none.
constexpr int MostIncomplete = 400;
// No picture lasts as short: what does is what a seek has left of one.
constexpr MediaTime ShortRest = 4ms;

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

bool isTimed(GstEvent *event)
{
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(event, &segment);
    return segment->format == GST_FORMAT_TIME;
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
    g_signal_connect(pipeline, "deep-element-added", G_CALLBACK(added), this);
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
