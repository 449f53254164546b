// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamwatch.h"

#include "elementhooks.h"

using namespace std::chrono_literals;

namespace {

constexpr auto CheckInterval = 1s;
constexpr char PlaylistHead[] = "#EXTM3U";

// Every byte of an address passes the typefind element behind its source, every segment of an adaptive
// stream that of its own parser; packets of a live stream pass a jitter buffer instead.
bool takesIn(GstElement *element)
{
    return isMadeBy(element, "typefind") || isMadeBy(element, "rtpjitterbuffer");
}

} // namespace

StreamWatch::StreamWatch(QObject *parent) : QObject(parent), m_seen(std::make_shared<Seen>()), m_timer(this)
{
    m_timer.setInterval(CheckInterval);
    connect(&m_timer, &QTimer::timeout, this, &StreamWatch::check);
}

void StreamWatch::attach(GstElement *pipeline)
{
    connectKeeping(pipeline, "deep-element-added", G_CALLBACK(added), m_seen);
}

void StreamWatch::expect(bool wanted)
{
    if (wanted == m_timer.isActive())
        return;
    m_idle = 0ms;
    m_count = m_seen->count;
    if (wanted)
        m_timer.start();
    else
        m_timer.stop();
}

void StreamWatch::added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer seen)
{
    Q_UNUSED(pipeline)
    Q_UNUSED(bin)
    if (!takesIn(element))
        return;
    GstPad *pad = gst_element_get_static_pad(element, "sink");
    if (pad == nullptr)
        return;
    probeKeeping(pad, GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_BUFFER_LIST, passed,
                 *static_cast<std::shared_ptr<Seen> *>(seen));
    gst_object_unref(pad);
}

void StreamWatch::look(GstBuffer *buffer, Seen &seen)
{
    GstMapInfo map;
    if (buffer == nullptr || gst_buffer_memcmp(buffer, 0, PlaylistHead, sizeof(PlaylistHead) - 1) != 0
        || !gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    const QByteArrayView text(map.data, qsizetype(map.size));
    if (text.contains("-KEY:METHOD=SAMPLE-AES") || text.contains("-KEY:METHOD=AES-128"))
        seen.locked = true;
    gst_buffer_unmap(buffer, &map);
}

GstPadProbeReturn StreamWatch::passed(GstPad *pad, GstPadProbeInfo *info, gpointer seen)
{
    Q_UNUSED(pad)
    Seen &all = **static_cast<std::shared_ptr<Seen> *>(seen);
    ++all.count;
    if ((GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER) != 0)
        look(GST_PAD_PROBE_INFO_BUFFER(info), all);
    return GST_PAD_PROBE_OK;
}

void StreamWatch::check()
{
    if (const quint64 count = m_seen->count; count != m_count) {
        m_count = count;
        m_idle = 0ms;
        Q_EMIT flowing();
        return;
    }
    m_idle += CheckInterval;
    if (m_idle < Limit)
        return;
    m_timer.stop();
    Q_EMIT driedUp();
}
