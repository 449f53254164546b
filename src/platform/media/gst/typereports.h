// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include <gst/gst.h>

// Keeps the reports of what a stream is, with which data begins to flow, apart from the pipeline's starting
// and closing. A source that is quicker than the thread that starts the pipeline gives its data to a decoder
// bin that is not started yet: it is refused, and nothing ever comes. One that is closed during its report
// takes the lock of its own state, on a thread that its closing waits for while it holds that very lock.
class TypeReports : public std::enable_shared_from_this<TypeReports>
{
public:
    // For every element that the pipeline will have. Called on the thread that starts it, before it does.
    void watch(GstElement *pipeline);
    // The pipeline has started: reports that wait for that go on.
    void open();
    // Waits for those under way; from here none begins.
    void close();

private:
    static void added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer self);
    static void begun(GstElement *element, guint probability, GstCaps *caps, gpointer self);
    static void ended(GstElement *element, guint probability, GstCaps *caps, gpointer self);

    enum class Gate { Starting, Open, Closed };
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread::id m_starter;
    Gate m_gate = Gate::Starting;
    int m_underWay = 0; // one may lead to another
};
