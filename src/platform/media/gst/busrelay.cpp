// SPDX-License-Identifier: GPL-3.0-or-later
#include "busrelay.h"

#include "emptystreams.h"
#include "playbackfaults.h"
#include "seeklanding.h"

#include <gst/pbutils/pbutils.h>

namespace {

bool isWanted(GstMessage *message, GstElement *pipeline)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_EOS:
    case GST_MESSAGE_ASYNC_DONE:
    case GST_MESSAGE_BUFFERING:
    case GST_MESSAGE_DURATION_CHANGED:
    case GST_MESSAGE_CLOCK_LOST:
    case GST_MESSAGE_LATENCY:
    case GST_MESSAGE_STREAM_COLLECTION:
    case GST_MESSAGE_STREAMS_SELECTED:
    case GST_MESSAGE_TOC:
        return true;
    case GST_MESSAGE_STATE_CHANGED:
        return GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline);
    case GST_MESSAGE_ELEMENT:
        return gst_is_missing_plugin_message(message) || tellsEmptySound(message) || tellsBegunSound(message)
            || tellsEmptyPicture(message) || SeekLanding::tellsNoPicture(message);
    case GST_MESSAGE_NEED_CONTEXT:
        return PlaybackFaults::asksForKey(message);
    default:
        return false;
    }
}

} // namespace

BusRelay::BusRelay(QObject *receiver, Handler handler) : m_receiver(receiver), m_handler(std::move(handler))
{
}

void BusRelay::attach(GstElement *pipeline)
{
    m_pipeline = pipeline;
    m_bus = gst_element_get_bus(pipeline);
    gst_bus_set_sync_handler(m_bus, posted, this, nullptr);
}

void BusRelay::detach()
{
    if (m_bus == nullptr)
        return;
    gst_bus_set_sync_handler(m_bus, nullptr, nullptr, nullptr);
    gst_clear_object(&m_bus);
    drop(); // what was posted while it closed
}

void BusRelay::drop()
{
    std::deque<Kept> dropped; // outlives the lock: the last message of a pipeline may end it
    const std::lock_guard lock(m_mutex);
    dropped.swap(m_waiting);
}

GstBusSyncReply BusRelay::posted(GstBus *bus, GstMessage *message, gpointer self)
{
    Q_UNUSED(bus)
    auto *relay = static_cast<BusRelay *>(self);
    if (isWanted(message, relay->m_pipeline))
        relay->keep(message);
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void BusRelay::keep(GstMessage *message)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.emplace_back(gst_message_ref(message));
    }
    QMetaObject::invokeMethod(
        m_receiver, [this] { handleNext(); }, Qt::QueuedConnection);
}

// Called once for each message: where some were dropped there is nothing left at last.
void BusRelay::handleNext()
{
    Kept message;
    {
        const std::lock_guard lock(m_mutex);
        if (m_waiting.empty())
            return;
        message = std::move(m_waiting.front());
        m_waiting.pop_front();
    }
    m_handler(message.get());
}
