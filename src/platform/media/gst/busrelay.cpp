// SPDX-License-Identifier: GPL-3.0-or-later
#include "busrelay.h"

#include "emptystreams.h"
#include "playbackfaults.h"

#include <memory>

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
            || tellsEmptyPicture(message);
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
    ++m_serial; // what was posted while it closed
}

GstBusSyncReply BusRelay::posted(GstBus *bus, GstMessage *message, gpointer self)
{
    Q_UNUSED(bus)
    auto *relay = static_cast<BusRelay *>(self);
    if (isWanted(message, relay->m_pipeline)) {
        gst_message_ref(message);
        const std::shared_ptr<GstMessage> kept(message, [](GstMessage *m) { gst_message_unref(m); });
        const int serial = relay->m_serial;
        QMetaObject::invokeMethod(
            relay->m_receiver,
            [relay, kept, serial] {
                if (serial == relay->m_serial)
                    relay->m_handler(kept.get());
            },
            Qt::QueuedConnection);
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}
