// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamreader.h"

#include "fdsource.h"
#include "formats.h"

#include <gst/app/gstappsink.h>

#include <string_view>

#include <sys/stat.h>

namespace {

constexpr const char *FirstUnit = "kestrel-first-unit";
constexpr const char *AllStreams = "kestrel-all-streams";
constexpr const char *OtherEnd = "kestrel-other-end";
constexpr const char *OtherData = "kestrel-other-data";
// Reading through a gigabyte only to learn how long it is would cost more than the answer is worth.
constexpr off_t LongestReadThrough = 256ll * 1024 * 1024;

// Units that were read and not taken yet.
constexpr guint MostWaiting = 4;

// A demuxer that does not know may answer how far it has read so far.
constexpr gint64 SuspiciousDuration = GST_SECOND;

bool isVideo(const GstCaps *caps)
{
    const std::string_view name = gst_structure_get_name(gst_caps_get_structure(caps, 0));
    return name.starts_with("video/") || name.starts_with("image/");
}

CapsPointer capsOf(GstPad *pad)
{
    GstCaps *const caps = gst_pad_get_current_caps(pad);
    return CapsPointer(caps ? caps : gst_pad_query_caps(pad, nullptr));
}

void post(GstElement *element, const char *name)
{
    gst_element_post_message(element,
                             gst_message_new_application(GST_OBJECT(element), gst_structure_new_empty(name)));
}

GstFlowReturn unitArrived(GstAppSink *sink, gpointer announced)
{
    if (!static_cast<std::atomic<bool> *>(announced)->exchange(true))
        post(GST_ELEMENT(sink), FirstUnit);
    return GST_FLOW_OK;
}

bool holdsVideo(GstEvent *event)
{
    GstStreamCollection *collection = nullptr;
    gst_event_parse_stream_collection(event, &collection);
    bool video = false;
    for (guint i = 0; i < gst_stream_collection_get_size(collection); ++i)
        video |= gst_stream_get_stream_type(gst_stream_collection_get_stream(collection, i))
            == GST_STREAM_TYPE_VIDEO;
    gst_object_unref(collection);
    return video;
}

// The bus of a demuxer, which hands everything on to the one that its bin gave it.
struct DemuxerBus
{
    BusPointer whole; // the pipeline's
    BusPointer given;
};

GstBusSyncReply demuxerPosted(GstBus *, GstMessage *message, gpointer buses)
{
    const auto *const to = static_cast<DemuxerBus *>(buses);
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR)
        gst_bus_post(to->whole.get(), gst_message_ref(message));
    gst_bus_post(to->given.get(), message); // takes it over
    return GST_BUS_DROP;
}

// parsebin keeps an error to itself that comes while it still looks at the element, and keeps the element:
// nothing would come any more. There is one demuxer for a container here, so what it says is the last word.
void hearErrors(GstElement *pipeline, GstElement *demuxer)
{
    auto *const buses
        = new DemuxerBus{BusPointer(gst_element_get_bus(pipeline)), BusPointer(gst_element_get_bus(demuxer))};
    const BusPointer own(gst_bus_new());
    gst_bus_set_sync_handler(own.get(), demuxerPosted, buses,
                             [](gpointer data) { delete static_cast<DemuxerBus *>(data); });
    gst_element_set_bus(demuxer, own.get());
}

// Some demuxers tell a stream only when they come upon it; all of them tell when there are no more.
void elementAdded(GstBin *pipeline, GstBin *, GstElement *element, gpointer)
{
    GstElementFactory *const factory = gst_element_get_factory(element);
    if (!factory || !gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_DEMUXER))
        return;
    hearErrors(GST_ELEMENT(pipeline), element);
    g_signal_connect_swapped(element, "no-more-pads",
                             G_CALLBACK(+[](GstElement *whole) { post(whole, AllStreams); }), pipeline);
}

void setBool(GstElement *element, const char *property, bool value)
{
    g_object_set(element, property, static_cast<gboolean>(value), nullptr);
}

} // namespace

StreamReader::StreamReader(int descriptor, GstCaps *container, const Deadline &deadline)
    : m_descriptor(descriptor),
      m_deadline(deadline),
      m_pipeline(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)))),
      m_bus(gst_element_get_bus(m_pipeline.get()))
{
    GstElement *const source = newFdSource(descriptor);
    GstElement *const bin = gst_element_factory_make("parsebin", nullptr);
    m_videoSink = gst_element_factory_make("appsink", nullptr);
    if (!bin || !m_videoSink)
        g_error("the plug-ins of GStreamer's base are missing");
    g_object_set(bin, "sink-caps", container, nullptr);
    // Nothing waits for a clock or for the other streams; the demuxer stops where the queue is full (open()).
    setBool(m_videoSink, "sync", false);
    setBool(m_videoSink, "async", false);
    // A file that ended before the sink is playing: its end would wait for the units to be taken, with the
    // lock that the sink needs to come to this state.
    setBool(m_videoSink, "wait-on-eos", false);
    gst_bin_add_many(GST_BIN(m_pipeline.get()), source, bin, m_videoSink, nullptr);
    gst_element_link(source, bin);
    g_signal_connect(m_pipeline.get(), "deep-element-added", G_CALLBACK(elementAdded), nullptr);
    g_signal_connect(bin, "pad-added", G_CALLBACK(padAdded), this);
    g_signal_connect(bin, "autoplug-continue", G_CALLBACK(continueAutoplug), this);
}

StreamReader::~StreamReader()
{
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
}

// Only video streams are parsed: nothing is wanted of the others but what their container says of them.
gboolean StreamReader::continueAutoplug(GstElement *, GstPad *, GstCaps *caps, gpointer)
{
    const bool other = TrackCollector::isAudio(caps) || TrackCollector::isSubtitle(caps);
    return !other || !Formats::mimeType(caps).empty();
}

// On streams that are not wanted. The pads of a file appear one by one, but each of them is told first what
// all are.
GstPadProbeReturn StreamReader::otherArrived(GstPad *pad, GstPadProbeInfo *info, gpointer reader)
{
    auto *const self = static_cast<StreamReader *>(reader);
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
        self->m_tracks.data(pad);
        if (!self->m_otherAnnounced.exchange(true))
            post(self->m_pipeline.get(), OtherData);
        return GST_PAD_PROBE_OK;
    }
    GstEvent *const event = GST_PAD_PROBE_INFO_EVENT(info);
    self->m_tracks.event(pad, event);
    if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_COLLECTION && holdsVideo(event))
        self->m_videoExpected = true;
    if (GST_EVENT_TYPE(event) == GST_EVENT_EOS)
        post(self->m_pipeline.get(), OtherEnd);
    return GST_PAD_PROBE_OK;
}

void StreamReader::padAdded(GstElement *, GstPad *pad, gpointer reader)
{
    static_cast<StreamReader *>(reader)->addPad(pad);
}

void StreamReader::addPad(GstPad *pad)
{
    const CapsPointer caps = capsOf(pad);
    const bool known = caps && !gst_caps_is_empty(caps.get()) && !gst_caps_is_any(caps.get());
    GstElement *sink = nullptr;
    if (known && isVideo(caps.get()) && !m_videoTaken.exchange(true)) {
        sink = m_videoSink;
    } else {
        if (known && TrackCollector::isAudio(caps.get()))
            m_hasAudio = true;
        sink = gst_element_factory_make("fakesink", nullptr);
        setBool(sink, "sync", false);
        setBool(sink, "async", false);
        gst_bin_add(GST_BIN(m_pipeline.get()), sink);
        gst_element_sync_state_with_parent(sink);
    }
    const PadPointer input(gst_element_get_static_pad(sink, "sink"));
    if (sink != m_videoSink && known)
        m_tracks.add(input.get(), caps.get());
    if (sink != m_videoSink)
        gst_pad_add_probe(
            input.get(),
            static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
            otherArrived, this, nullptr);
    gst_pad_link(pad, input.get());
}

void StreamReader::handleTags(GstMessage *message)
{
    GstTagList *tags = nullptr;
    gst_message_parse_tag(message, &tags);
    const TagListPointer owner(tags);
    m_tags.add(tags, GST_MESSAGE_SRC(message) == GST_OBJECT(m_videoSink));
}

StreamReader::Outcome StreamReader::handleError(GstMessage *message)
{
    GError *error = nullptr;
    gchar *debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    const ErrorPointer owner(error);
    const TextPointer debugOwner(debug);
    m_error = error->message;
    const bool reading = error->domain == GST_RESOURCE_ERROR && error->code == GST_RESOURCE_ERROR_READ;
    return reading ? Outcome::Unreadable : Outcome::NotMedia;
}

// Whether no video will come any more. Tags go ahead of the data of their stream: once data has come, they
// have too.
bool StreamReader::isSoundOnly(GstMessage *message)
{
    m_allStreams |= gst_message_has_name(message, AllStreams) != FALSE;
    m_otherData |= gst_message_has_name(message, OtherData) != FALSE;
    const bool ended = gst_message_has_name(message, OtherEnd) != FALSE;
    return !m_videoTaken && (ended || (m_allStreams && m_otherData && !m_videoExpected));
}

StreamReader::Outcome StreamReader::waitForData()
{
    while (const MessagePointer message{gst_bus_timed_pop(m_bus.get(), m_deadline.left())}) {
        switch (GST_MESSAGE_TYPE(message.get())) {
        case GST_MESSAGE_TAG:
            handleTags(message.get());
            break;
        case GST_MESSAGE_ERROR:
            return handleError(message.get());
        case GST_MESSAGE_EOS:
            return Outcome::Ok;
        case GST_MESSAGE_APPLICATION:
            if (gst_message_has_name(message.get(), FirstUnit) || isSoundOnly(message.get()))
                return Outcome::Ok;
            break;
        default:
            break;
        }
    }
    m_error = "no stream was found in time";
    return Outcome::OutOfTime;
}

StreamReader::Outcome StreamReader::open()
{
    GstAppSinkCallbacks callbacks = {};
    callbacks.new_sample = unitArrived;
    gst_app_sink_set_callbacks(GST_APP_SINK(m_videoSink), &callbacks, &m_unitAnnounced, nullptr);
    gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
    // Not sooner: a sink that is full waits with the lock that it needs to come to this state.
    gst_app_sink_set_max_buffers(GST_APP_SINK(m_videoSink), MostWaiting);
    const Outcome outcome = waitForData();
    if (outcome == Outcome::Ok && m_videoTaken)
        m_firstUnit = nextUnit();
    collectTags();
    if (m_firstUnit)
        m_videoCaps.reset(gst_caps_ref(gst_sample_get_caps(m_firstUnit.get())));
    return outcome;
}

void StreamReader::collectTags()
{
    while (const MessagePointer message{gst_bus_pop_filtered(m_bus.get(), GST_MESSAGE_TAG)})
        handleTags(message.get());
}

const GstCaps *StreamReader::videoCaps() const
{
    return m_videoCaps.get();
}

GstClockTime StreamReader::statedDuration()
{
    gint64 duration = -1;
    const bool stated = gst_element_query_duration(m_pipeline.get(), GST_FORMAT_TIME, &duration)
        && duration > SuspiciousDuration;
    return stated ? static_cast<GstClockTime>(duration) : GST_CLOCK_TIME_NONE;
}

GstClockTime StreamReader::readToEnd()
{
    gint64 stated = -1;
    GstClockTime end = GST_CLOCK_TIME_NONE;
    if (gst_element_query_duration(m_pipeline.get(), GST_FORMAT_TIME, &stated) && stated > 0)
        end = static_cast<GstClockTime>(stated);
    struct stat status = {};
    if (!hasVideo() || fstat(m_descriptor, &status) != 0 || status.st_size > LongestReadThrough)
        return end;
    while (const SamplePointer unit = nextUnit()) {
        const GstBuffer *const buffer = gst_sample_get_buffer(unit.get());
        if (!GST_BUFFER_PTS_IS_VALID(buffer))
            continue;
        const GstClockTime last = GST_BUFFER_PTS(buffer)
            + (GST_BUFFER_DURATION_IS_VALID(buffer) ? GST_BUFFER_DURATION(buffer) : 0);
        end = GST_CLOCK_TIME_IS_VALID(end) ? std::max(end, last) : last;
    }
    return end;
}

bool StreamReader::seek(GstClockTime position)
{
    const PadPointer input(gst_element_get_static_pad(m_videoSink, "sink"));
    GstEvent *const seek = gst_event_new_seek(
        1.0, GST_FORMAT_TIME,
        static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_KEY_UNIT | GST_SEEK_FLAG_SNAP_BEFORE),
        GST_SEEK_TYPE_SET, static_cast<gint64>(position), GST_SEEK_TYPE_NONE, 0);
    if (!gst_pad_push_event(input.get(), seek))
        return false;
    m_firstUnit.reset();
    return true;
}

SamplePointer StreamReader::nextUnit()
{
    if (m_firstUnit)
        return std::move(m_firstUnit);
    SamplePointer unit(gst_app_sink_try_pull_sample(GST_APP_SINK(m_videoSink), m_deadline.left()));
    if (!unit && m_error.empty()) {
        if (const MessagePointer message{gst_bus_pop_filtered(m_bus.get(), GST_MESSAGE_ERROR)})
            static_cast<void>(handleError(message.get()));
    }
    return unit;
}
