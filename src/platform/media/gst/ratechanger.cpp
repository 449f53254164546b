// SPDX-License-Identifier: GPL-3.0-or-later
#include "ratechanger.h"

#include <platform/media/playbackbounds.h>

#include <algorithm>

namespace {

constexpr auto Watched = GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_BOTH
                                         | GST_PAD_PROBE_TYPE_EVENT_FLUSH);

GstClockTime scaled(GstClockTime time, double factor)
{
    return GstClockTime(double(time) * factor);
}

} // namespace

GstClockTime RateChanger::Stretch::stretched(GstClockTime time) const
{
    if (time >= in)
        return out + scaled(time - in, 1 / rate);
    return out - std::min(out, scaled(in - time, 1 / rate));
}

GstClockTime RateChanger::Stretch::original(GstClockTime time) const
{
    if (time >= out)
        return in + scaled(time - out, rate);
    return in - std::min(in, scaled(out - time, rate));
}

void RateChanger::watchPicture(GstElement *sink)
{
    watch(sink, m_roads[0]);
}

GstElement *RateChanger::createSoundEnd(GstElement *sink)
{
    GstElement *filter = gst_element_factory_make("scaletempo", nullptr);
    GstElement *convert = gst_element_factory_make("audioconvert", nullptr);
    m_fixed = filter == nullptr || convert == nullptr;
    if (m_fixed) {
        gst_clear_object(&filter);
        gst_clear_object(&convert);
        return sink;
    }
    GstElement *bin = gst_bin_new("sound");
    gst_bin_add_many(GST_BIN(bin), filter, convert, sink, nullptr);
    gst_element_link_many(filter, convert, sink, nullptr);
    GstPad *entrance = gst_element_get_static_pad(filter, "sink");
    gst_element_add_pad(bin, gst_ghost_pad_new("sink", entrance));
    gst_object_unref(entrance);
    watch(filter, m_roads[1]);
    return bin;
}

void RateChanger::watch(GstElement *element, Road &road)
{
    road.changer = this;
    GstPad *pad = gst_element_get_static_pad(element, "sink");
    gst_pad_add_probe(pad, Watched, probed, &road, nullptr);
    gst_object_unref(pad);
}

void RateChanger::reset()
{
    const std::lock_guard locker(m_mutex);
    for (Road &road : m_roads)
        begin(road);
}

// After a flush, and with a new pipeline, running time begins with 0 and at the present speed.
void RateChanger::begin(Road &road) const
{
    road.hasSegment = road.ended = false;
    road.reached = 0;
    road.stretch = {0, 0, m_rate};
    road.switches.clear();
}

// From the first place on that neither has passed, both change together.
void RateChanger::setRate(double rate)
{
    const std::lock_guard locker(m_mutex);
    rate = std::clamp(rate, playbackbounds::SlowestRate, playbackbounds::FastestRate);
    if (rate == m_rate || m_fixed)
        return;
    m_rate = rate;
    GstClockTime at = 0;
    for (const Road &road : m_roads) {
        if (road.hasSegment && !road.ended)
            at = std::max(at, road.reached);
    }
    for (Road &road : m_roads) {
        if (road.hasSegment)
            road.switches.append({at, rate});
        else
            begin(road);
    }
}

GstPadProbeReturn RateChanger::probed(GstPad *pad, GstPadProbeInfo *info, gpointer data)
{
    auto &road = *static_cast<Road *>(data);
    RateChanger *changer = road.changer;
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) == 0)
        return changer->takeEvent(road, pad, info);
    const GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    changer->take(road, pad, GST_BUFFER_PTS(buffer), GST_BUFFER_DURATION(buffer));
    return GST_PAD_PROBE_OK;
}

// Something of this time comes. When the speed changes with it, the outputs are told before.
void RateChanger::take(Road &road, GstPad *pad, GstClockTime time, GstClockTime duration)
{
    std::unique_lock locker(m_mutex);
    if (!road.hasSegment || !GST_CLOCK_TIME_IS_VALID(time))
        return;
    const GstClockTime running = gst_segment_to_running_time(&road.segment, GST_FORMAT_TIME, time);
    if (!GST_CLOCK_TIME_IS_VALID(running)) // before the place where playing starts
        return;
    road.reached = running + (GST_CLOCK_TIME_IS_VALID(duration) ? duration : 0);
    if (!switchAt(road, running))
        return;
    GstSegment segment = road.segment;
    const guint64 place = gst_segment_position_from_running_time(&segment, GST_FORMAT_TIME, road.stretch.in);
    if (GST_CLOCK_TIME_IS_VALID(place)) {
        segment.time = gst_segment_to_stream_time(&segment, GST_FORMAT_TIME, place);
        segment.start = place;
        segment.offset = 0;
        segment.base = road.stretch.out;
    } else {
        segment.base = road.stretch.stretched(segment.base);
    }
    segment.rate = road.stretch.rate;
    road.sending = true;
    locker.unlock();
    gst_pad_send_event(pad, gst_event_new_segment(&segment));
    locker.lock();
    road.sending = false;
}

bool RateChanger::switchAt(Road &road, GstClockTime time)
{
    bool switched = false;
    while (!road.switches.isEmpty() && time >= road.switches.first().at) {
        const Switch next = road.switches.takeFirst();
        road.stretch = {next.at, road.stretch.stretched(next.at), next.rate};
        switched = true;
    }
    return switched;
}

GstPadProbeReturn RateChanger::takeEvent(Road &road, GstPad *pad, GstPadProbeInfo *info)
{
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    if (GST_EVENT_TYPE(event) == GST_EVENT_GAP) {
        GstClockTime time = GST_CLOCK_TIME_NONE;
        GstClockTime duration = GST_CLOCK_TIME_NONE;
        gst_event_parse_gap(event, &time, &duration);
        take(road, pad, time, duration);
        return GST_PAD_PROBE_OK;
    }
    const std::lock_guard locker(m_mutex);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_SEGMENT:
        if (!road.sending)
            takeSegment(road, info);
        break;
    case GST_EVENT_FLUSH_STOP:
        begin(road);
        break;
    case GST_EVENT_EOS:
        road.ended = true;
        break;
    case GST_EVENT_QOS:
        takeQuality(road, info);
        break;
    default:
        break;
    }
    return GST_PAD_PROBE_OK;
}

void RateChanger::takeSegment(Road &road, GstPadProbeInfo *info)
{
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(event, &segment);
    if (segment->format != GST_FORMAT_TIME)
        return;
    gst_segment_copy_into(segment, &road.segment);
    road.hasSegment = true;
    road.ended = false;
    switchAt(road, segment->base);
    if (road.stretch.rate == 1 && road.stretch.in == road.stretch.out)
        return;
    GstSegment stretched = road.segment;
    stretched.base = road.stretch.stretched(stretched.base);
    stretched.rate = road.stretch.rate;
    GstEvent *replacement = gst_event_new_segment(&stretched);
    gst_event_set_seqnum(replacement, gst_event_get_seqnum(event));
    gst_event_unref(event);
    GST_PAD_PROBE_INFO_DATA(info) = replacement;
}

// Decoders, which leave out what would come too late, know nothing of the stretched time.
void RateChanger::takeQuality(const Road &road, GstPadProbeInfo *info) const
{
    if (road.stretch.rate == 1 && road.stretch.in == road.stretch.out)
        return;
    GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
    GstQOSType type = GST_QOS_TYPE_OVERFLOW;
    gdouble proportion = 1;
    GstClockTimeDiff late = 0;
    GstClockTime time = GST_CLOCK_TIME_NONE;
    gst_event_parse_qos(event, &type, &proportion, &late, &time);
    if (!GST_CLOCK_TIME_IS_VALID(time))
        return;
    time = road.stretch.original(time);
    late = std::max(GstClockTimeDiff(double(late) * road.stretch.rate), -GstClockTimeDiff(time));
    GstEvent *replacement = gst_event_new_qos(type, proportion, late, time);
    gst_event_set_seqnum(replacement, gst_event_get_seqnum(event));
    gst_event_unref(event);
    GST_PAD_PROBE_INFO_DATA(info) = replacement;
}
