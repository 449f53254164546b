// SPDX-License-Identifier: GPL-3.0-or-later
#include "endedstreams.h"

#include "elementhooks.h"

#include <utility>
#include <vector>

namespace {

// Of one multiqueue.
struct Levels
{
    int types = 0; // of the streams that are looked for
    guint64 limit = 0;
    std::vector<GstPad *> starved; // inputs, not owned
    GstPad *fed = nullptr; // one that is not
    bool full = false;
};

gboolean look(GstElement *queues, GstPad *pad, gpointer self)
{
    (void)queues;
    auto *levels = static_cast<Levels *>(self);
    guint buffers = 0;
    guint64 time = 0;
    g_object_get(pad, "current-level-buffers", &buffers, "current-level-time", &time, nullptr);
    if (buffers > 0) {
        levels->fed = pad;
        levels->full = levels->full || (levels->limit > 0 && time >= levels->limit);
    } else if ((streamTypeOf(pad) & levels->types) != 0) {
        levels->starved.push_back(pad);
    }
    return TRUE;
}

// What the queue of this input feeds; null: not known.
GstPad *consumer(GstPad *input)
{
    GstIterator *links = gst_pad_iterate_internal_links(input);
    GValue value = G_VALUE_INIT;
    GstPad *found = nullptr;
    if (links != nullptr && gst_iterator_next(links, &value) == GST_ITERATOR_OK) {
        found = gst_pad_get_peer(GST_PAD(g_value_get_object(&value)));
        g_value_unset(&value);
    }
    if (links != nullptr)
        gst_iterator_free(links);
    return found;
}

// Where it plays, in the stream's own time.
GstClockTime placeIn(const GstSegment &segment, GstElement *playbin)
{
    gint64 time = 0;
    if (gst_element_query_position(playbin, GST_FORMAT_TIME, &time) && time >= 0) {
        const guint64 place = gst_segment_position_from_stream_time(&segment, GST_FORMAT_TIME, guint64(time));
        if (GST_CLOCK_TIME_IS_VALID(place)
            && gst_segment_clip(&segment, GST_FORMAT_TIME, place, place, nullptr, nullptr))
            return place;
    }
    return segment.start;
}

struct Gap
{
    GstPad *pad;
    GstEvent *begin; // null: it has begun
    GstClockTime time;

    // Waits at the sink until something is played or moved.
    static void send(GstElement *playbin, gpointer self)
    {
        (void)playbin;
        auto *gap = static_cast<Gap *>(self);
        if (gap->begin != nullptr)
            sendPastDecoder(gap->pad, std::exchange(gap->begin, nullptr));
        sendPastDecoder(gap->pad, gst_event_new_gap(gap->time, GST_CLOCK_TIME_NONE));
    }
    static void release(gpointer self)
    {
        auto *gap = static_cast<Gap *>(self);
        gst_clear_event(&gap->begin);
        gst_object_unref(gap->pad);
        delete gap;
    }
};

// A stream of which nothing came since a seek may not even have begun (FLV): it begins as the other one did.
bool bridge(GstPad *starved, GstPad *fed, GstElement *playbin)
{
    GstPad *pad = consumer(starved);
    GstEvent *own = pad == nullptr ? nullptr : gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
    GstEvent *begin
        = pad == nullptr || own != nullptr ? nullptr : gst_pad_get_sticky_event(fed, GST_EVENT_SEGMENT, 0);
    GstEvent *known = own != nullptr ? own : begin;
    const GstSegment *segment = nullptr;
    if (known != nullptr)
        gst_event_parse_segment(known, &segment);
    const bool can = segment != nullptr && segment->format == GST_FORMAT_TIME;
    if (can)
        gst_element_call_async(playbin, Gap::send,
                               new Gap{GST_PAD(gst_object_ref(pad)),
                                       begin != nullptr ? gst_event_ref(begin) : nullptr,
                                       placeIn(*segment, playbin)},
                               Gap::release);
    gst_clear_event(&own);
    gst_clear_event(&begin);
    gst_clear_object(&pad);
    return can;
}

// Null: it lies within the stream.
GstEvent *bounded(GstEvent *gap, const GstSegment &segment)
{
    GstClockTime time = GST_CLOCK_TIME_NONE;
    gst_event_parse_gap(gap, &time, nullptr);
    if (segment.format != GST_FORMAT_TIME || !GST_CLOCK_TIME_IS_VALID(time)
        || !GST_CLOCK_TIME_IS_VALID(segment.stop) || time < segment.stop)
        return nullptr;
    const GstClockTime last = segment.stop > segment.start ? segment.stop - 1 : segment.start;
    GstEvent *replacement = gst_event_new_gap(last, GST_CLOCK_TIME_NONE);
    gst_event_set_seqnum(replacement, gst_event_get_seqnum(gap));
    return replacement;
}

GstPadProbeReturn passed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    (void)self;
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    GstEvent *begin = GST_EVENT_TYPE(event) == GST_EVENT_GAP
        ? gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0)
        : nullptr;
    if (begin == nullptr)
        return GST_PAD_PROBE_OK;
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(begin, &segment);
    if (GstEvent *replacement = bounded(event, *segment)) {
        gst_event_unref(event);
        GST_PAD_PROBE_INFO_DATA(info) = replacement;
    }
    gst_event_unref(begin);
    return GST_PAD_PROBE_OK;
}

void padAdded(GstElement *synchronizer, GstPad *pad, gpointer self)
{
    (void)synchronizer;
    (void)self;
    if (GST_PAD_IS_SRC(pad))
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, passed, nullptr, nullptr);
}

} // namespace

// playbin3 makes its only one with itself.
void boundGaps(GstElement *playbin)
{
    eachMadeBy(playbin, "streamsynchronizer", [](GstElement *synchronizer) {
        g_signal_connect(synchronizer, "pad-added", G_CALLBACK(padAdded), nullptr);
    });
}

bool bridgeDam(GstElement *playbin, int types)
{
    bool bridged = false;
    eachMadeBy(playbin, "multiqueue", [&](GstElement *queues) {
        Levels levels;
        levels.types = types;
        g_object_get(queues, "max-size-time", &levels.limit, nullptr);
        gst_element_foreach_sink_pad(queues, look, &levels);
        for (GstPad *starved : levels.starved)
            bridged = (levels.full && bridge(starved, levels.fed, playbin)) || bridged;
    });
    return bridged;
}

void sendPastDecoder(GstPad *input, GstEvent *event)
{
    GstElement *element = gst_pad_get_parent_element(input);
    GstPad *output = element == nullptr ? nullptr : gst_element_get_static_pad(element, "src");
    if (output != nullptr)
        gst_pad_push_event(output, event);
    else
        gst_pad_send_event(input, event);
    gst_clear_object(&output);
    gst_clear_object(&element);
}
