// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

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
    void drop();
    // ... and after: then nothing here keeps the pipeline. One that is kept stops its sinks whenever it goes
    // at last, though they are another's by then.
    void detach();

private:
    struct Unref
    {
        void operator()(GstMessage *message) const { gst_message_unref(message); }
    };
    using Kept = std::unique_ptr<GstMessage, Unref>;

    static GstBusSyncReply posted(GstBus *bus, GstMessage *message, gpointer self);
    void keep(GstMessage *message);
    void handleNext();

    QObject *m_receiver;
    Handler m_handler;
    GstElement *m_pipeline = nullptr;
    GstBus *m_bus = nullptr;
    std::mutex m_mutex;
    std::deque<Kept> m_waiting;
};
