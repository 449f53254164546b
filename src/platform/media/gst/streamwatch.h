// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>

#include <gst/gst.h>

// Tells a stream that has dried up from one that is only slow: whatever the protocol, its data is counted
// where it comes in. Time counts only while the machine is awake.
class StreamWatch : public QObject
{
    Q_OBJECT

public:
    // A server that says nothing for so long is given up. The sources try once again by themselves before.
    static constexpr std::chrono::seconds Limit{20};

    explicit StreamWatch(QObject *parent = nullptr);

    // Counts what this pipeline will take in. Before it starts, on the thread that starts it.
    void attach(GstElement *pipeline);
    // Data is wanted, or there is enough.
    void expect(bool wanted);
    // A list of addresses came in which says that what lies there is encrypted. Players of such lists do not
    // say so; they fail on what they cannot read.
    [[nodiscard]] bool isLocked() const { return m_seen->locked; }

Q_SIGNALS:
    // Data came within the last second.
    void flowing();
    // Data is wanted, and none came within the limit.
    void driedUp();

private:
    struct Seen // by elements, which may outlive this in a thread that hangs
    {
        std::atomic<quint64> count = 0;
        std::atomic<bool> locked = false;
    };

    static void added(GstBin *pipeline, GstBin *bin, GstElement *element, gpointer seen);
    static GstPadProbeReturn passed(GstPad *pad, GstPadProbeInfo *info, gpointer seen);
    static void look(GstBuffer *buffer, Seen &seen);
    void check();

    std::shared_ptr<Seen> m_seen;
    quint64 m_count = 0; // at the last check
    std::chrono::milliseconds m_idle{0};
    QTimer m_timer;
};
