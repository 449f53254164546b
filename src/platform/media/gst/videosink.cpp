// SPDX-License-Identifier: GPL-3.0-or-later
#include "videosink.h"

#include "planarframes.h"

#include <platform/media/plainpixels.h>

#include <QMutexLocker>

namespace {

void releaseFrame(void *data)
{
    auto *frame = static_cast<GstVideoFrame *>(data);
    gst_video_frame_unmap(frame);
    delete frame;
}

// The pixels stay where the pipeline wrote them.
QImage wrapped(GstVideoFrame *frame)
{
    return QImage(static_cast<const uchar *>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0)),
                  GST_VIDEO_FRAME_WIDTH(frame), GST_VIDEO_FRAME_HEIGHT(frame),
                  GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0), QImage::Format_RGB32, releaseFrame, frame);
}

MediaTime streamTime(GstSample *sample)
{
    const GstClockTime time = GST_BUFFER_PTS(gst_sample_get_buffer(sample));
    if (!GST_CLOCK_TIME_IS_VALID(time))
        return MediaTime::zero();
    const guint64 position
        = gst_segment_to_stream_time(gst_sample_get_segment(sample), GST_FORMAT_TIME, time);
    return MediaTime(GST_CLOCK_TIME_IS_VALID(position) ? qint64(position) : 0);
}

} // namespace

VideoSink::VideoSink(Arrived arrived) : m_arrived(std::move(arrived))
{
    gst_video_info_init(&m_info);
    m_fields = gst_element_factory_make("deinterlace", nullptr);
    m_convert = gst_element_factory_make("videoconvertscale", nullptr);
    m_filter = gst_element_factory_make("capsfilter", nullptr);
    GstElement *sink = gst_element_factory_make("appsink", nullptr);
    if (m_fields == nullptr || m_convert == nullptr || m_filter == nullptr || sink == nullptr) {
        for (GstElement **element : {&m_fields, &m_convert, &m_filter, &sink})
            gst_clear_object(element);
        return;
    }
    m_bin = GST_ELEMENT(gst_object_ref_sink(gst_bin_new("screen")));
    gst_bin_add_many(GST_BIN(m_bin), m_fields, m_convert, m_filter, sink, nullptr);
    gst_element_link_many(m_fields, m_convert, m_filter, sink, nullptr);
    // One frame of each two fields, so that places in the video are the same as without. What is not
    // interlaced, or in a format that it does not know, passes through.
    gst_util_set_object_arg(G_OBJECT(m_fields), "fields", "top");
    g_object_set(m_convert, "add-borders", FALSE, nullptr);
    g_object_set(sink, "max-buffers", 1u, "drop", TRUE, "qos", TRUE, "enable-last-sample", FALSE,
                 "max-lateness", gint64(20 * GST_MSECOND), nullptr);
    GstAppSinkCallbacks callbacks = {};
    callbacks.new_preroll = prerolled;
    callbacks.new_sample = sampled;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);

    GstPad *entrance = gst_element_get_static_pad(m_fields, "sink");
    gst_pad_add_probe(entrance,
                      GstPadProbeType(GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_BUFFER),
                      probed, this, nullptr);
    gst_pad_add_probe(entrance, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, asked, nullptr, nullptr);
    gst_element_add_pad(m_bin, gst_ghost_pad_new("sink", entrance));
    gst_object_unref(entrance);
    applyOutput();
}

VideoSink::~VideoSink()
{
    gst_clear_object(&m_bin);
}

void VideoSink::setOutput(const VideoOutput &output)
{
    QMutexLocker locker(&m_mutex);
    m_outdated = m_outdated || m_output != output;
    m_output = output;
}

void VideoSink::openGate()
{
    QMutexLocker locker(&m_mutex);
    m_open = true;
    const VideoFrame waiting = m_latest;
    locker.unlock();
    if (!waiting.isNull())
        m_arrived(waiting);
}

void VideoSink::closeGate()
{
    QMutexLocker locker(&m_mutex);
    m_open = false;
}

MediaTime VideoSink::latestTime() const
{
    QMutexLocker locker(&m_mutex);
    return m_latest.time;
}

QSize VideoSink::pictureSize() const
{
    QMutexLocker locker(&m_mutex);
    if (GST_VIDEO_INFO_FORMAT(&m_info) == GST_VIDEO_FORMAT_UNKNOWN)
        return {};
    return turned(squarePixelSize(m_info), turnOf(m_tagged));
}

GstFlowReturn VideoSink::prerolled(GstAppSink *sink, gpointer self)
{
    static_cast<VideoSink *>(self)->take(gst_app_sink_pull_preroll(sink));
    return GST_FLOW_OK;
}

GstFlowReturn VideoSink::sampled(GstAppSink *sink, gpointer self)
{
    static_cast<VideoSink *>(self)->take(gst_app_sink_pull_sample(sink));
    return GST_FLOW_OK;
}

VideoFrame VideoSink::frameOf(GstSample *sample)
{
    VideoFrame frame;
    frame.time = streamTime(sample);
    QMutexLocker locker(&m_mutex);
    const VideoOutput output = m_output;
    const Turn tagged = turnOf(m_tagged);
    const auto colours = m_colours;
    locker.unlock();
    const Turn turn = turnedFurther(tagged, output.rotation);
    if (auto picture = planarframes::picture(sample, tagged, colours)) {
        const QSize size = scaledFor(output, picture->squareSize, turn);
        if (output.planes) {
            frame.planes = std::move(picture);
            frame.planesSize = size;
            return frame;
        }
        frame.image = m_converter.convert(*picture, size);
    } else {
        frame.image = packedImage(sample, colours);
    }
    frame.image = PictureConverter::turned(frame.image, turn.mirrored, turn.quarters);
    frame.rotation = output.rotation;
    return frame;
}

// Scaled by the elements already; of other colours than the screen's, or of these.
QImage VideoSink::packedImage(GstSample *sample, const std::optional<PictureColours> &colours)
{
    GstVideoInfo info;
    GstCaps *caps = gst_sample_get_caps(sample);
    if (caps == nullptr || !gst_video_info_from_caps(&info, caps))
        return {};
    auto *frame = new GstVideoFrame;
    if (!gst_video_frame_map(frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ)) {
        delete frame;
        return {};
    }
    if (!GST_VIDEO_INFO_IS_YUV(&info))
        return wrapped(frame);
    const plainpixels::Packed packed{static_cast<const uchar *>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0)),
                                     GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0),
                                     colours.value_or(planarframes::colours(info, caps))};
    const QImage image
        = m_converter.convert(packed, QSize(GST_VIDEO_FRAME_WIDTH(frame), GST_VIDEO_FRAME_HEIGHT(frame)));
    releaseFrame(frame);
    return image;
}

void VideoSink::take(GstSample *sample)
{
    if (sample == nullptr)
        return;
    const VideoFrame frame = frameOf(sample);
    gst_sample_unref(sample);
    QMutexLocker locker(&m_mutex);
    m_latest = frame;
    const bool open = m_open;
    locker.unlock();
    if (open)
        m_arrived(frame);
}

// A decoder asks before it takes memory for its first picture: what is refused then costs nothing.
GstPadProbeReturn VideoSink::asked(GstPad *pad, GstPadProbeInfo *info, gpointer)
{
    Q_UNUSED(pad)
    GstQuery *query = GST_PAD_PROBE_INFO_QUERY(info);
    if (GST_QUERY_TYPE(query) != GST_QUERY_ACCEPT_CAPS)
        return GST_PAD_PROBE_OK;
    GstCaps *caps = nullptr;
    gst_query_parse_accept_caps(query, &caps);
    GstVideoInfo wanted;
    if (!gst_video_info_from_caps(&wanted, caps) || !isTooLarge(wanted))
        return GST_PAD_PROBE_OK;
    gst_query_set_accept_caps_result(query, FALSE);
    return GST_PAD_PROBE_HANDLED;
}

// Only here, before the elements work on a buffer or on caps, the output is changed: caps of the filter that
// change while another thread negotiates them make that fail, and the video with it.
GstPadProbeReturn VideoSink::probed(GstPad *pad, GstPadProbeInfo *info, gpointer self)
{
    Q_UNUSED(pad)
    auto *sink = static_cast<VideoSink *>(self);
    QMutexLocker locker(&sink->m_mutex);
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) != 0)
        sink->heed(GST_PAD_PROBE_INFO_EVENT(info));
    const bool outdated = sink->m_outdated;
    locker.unlock();
    if (outdated)
        sink->applyOutput();
    return GST_PAD_PROBE_OK;
}

// Called with the mutex locked.
void VideoSink::heed(GstEvent *event)
{
    if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
        GstCaps *caps = nullptr;
        gst_event_parse_caps(event, &caps);
        if (!gst_video_info_from_caps(&m_info, caps))
            gst_video_info_init(&m_info);
        m_colours.reset();
        if (GST_VIDEO_INFO_IS_YUV(&m_info))
            m_colours = planarframes::colours(m_info, caps);
        m_outdated = true;
    } else if (GST_EVENT_TYPE(event) == GST_EVENT_TAG) {
        GstTagList *tags = nullptr;
        gst_event_parse_tag(event, &tags);
        GstVideoOrientationMethod method = GST_VIDEO_ORIENTATION_IDENTITY;
        if (!gst_video_orientation_from_tag(tags, &method))
            return;
        m_tagged = method;
        m_outdated = true;
    }
}

// The one scaling goes straight to the size on the screen; the turn comes after it, when there are fewest
// pixels.
void VideoSink::applyOutput()
{
    if (m_bin == nullptr)
        return;
    QMutexLocker locker(&m_mutex);
    m_outdated = false;
    const Shape shape = outputShape();
    locker.unlock();
    apply(shape);
}

// Called with the mutex locked. Ordinary pictures are scaled by the element, which is quick at that; the
// colours it would make are not right.
VideoSink::Shape VideoSink::outputShape() const
{
    const GstVideoFormat format = GST_VIDEO_INFO_FORMAT(&m_info);
    if (format == GST_VIDEO_FORMAT_UNKNOWN || m_output.planes || (m_colours && !m_colours->isPlain()))
        return {};
    const Turn turn = turnedFurther(turnOf(m_tagged), m_output.rotation);
    const QSize given(GST_VIDEO_INFO_WIDTH(&m_info), GST_VIDEO_INFO_HEIGHT(&m_info));
    const QSize size = scaledFor(m_output, squarePixelSize(m_info), turn);
    const bool shrinks = size.width() < given.width() && size.height() < given.height();
    // Of more than eight bits it reckons well enough.
    if (!GST_VIDEO_INFO_IS_YUV(&m_info) || m_colours->depth > 8)
        return {Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? GST_VIDEO_FORMAT_BGRx : GST_VIDEO_FORMAT_xRGB,
                size,
                shrinks,
                {}};
    const bool asItIs = format == GST_VIDEO_FORMAT_I420 || format == GST_VIDEO_FORMAT_NV12;
    return {size == given && asItIs ? format : GST_VIDEO_FORMAT_AYUV, size, shrinks, m_info.colorimetry};
}

void VideoSink::apply(const Shape &shape)
{
    // Colours are blended by the scaling already; to interpolate them before it as well took a tenth of all
    // CPU.
    g_object_set(m_convert, "chroma-mode",
                 shape.shrinks ? GST_VIDEO_CHROMA_MODE_NONE : GST_VIDEO_CHROMA_MODE_FULL, nullptr);
    GstCaps *caps = shape.size.isEmpty()
        ? planarframes::caps()
        : gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING,
                              gst_video_format_to_string(shape.format), "width", G_TYPE_INT,
                              shape.size.width(), "height", G_TYPE_INT, shape.size.height(),
                              "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, nullptr);
    // Not told, another would be taken for a picture of another size.
    if (gchar *colorimetry = shape.format == GST_VIDEO_FORMAT_AYUV
            ? gst_video_colorimetry_to_string(&shape.colorimetry)
            : nullptr) {
        gst_caps_set_simple(caps, "colorimetry", G_TYPE_STRING, colorimetry, nullptr);
        g_free(colorimetry);
    }
    g_object_set(m_filter, "caps", caps, nullptr);
    gst_caps_unref(caps);
}
