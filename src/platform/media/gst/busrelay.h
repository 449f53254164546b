// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <atomic>
#include <functional>

#include <gst/gst.h>

// Brings the messages of a pipeline, those that matter to whoever plays it, to the thread of a receiver.
class BusRelay
{
public:
    using Handler = std::function<void(GstMessage *)>;
    // The handler is called on the receiver's thread.
    BusRelay(QObject *receiver, Handler handler);
    Q_DISABLE_COPY_MOVE(BusRelay)

    // Before the pipeline starts.
    void attach(GstElement *pipeline);
    // Messages that were posted and not handled yet are dropped. Called on the receiver's thread, before the
    // pipeline is closed ...
    void drop() { ++m_serial; }
    // ... and after.
    void detach();

private:
    static GstBusSyncReply posted(GstBus *bus, GstMessage *message, gpointer self);

    QObject *m_receiver;
    Handler m_handler;
    GstElement *m_pipeline = nullptr;
    GstBus *m_bus = nullptr;
    std::atomic<int> m_serial = 0; // of the messages that count
};
