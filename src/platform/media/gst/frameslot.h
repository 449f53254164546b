// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/videoframe.h>

#include <QMutex>
#include <QMutexLocker>
#include <QObject>

#include <functional>

// Hands frames from a streaming thread to the GUI thread: one place, in which a newer frame replaces an older
// one that was not fetched in time, and at most one event under way.
class FrameSlot
{
public:
    // `arrived` is called on the receiver's thread.
    FrameSlot(QObject *receiver, std::function<void()> arrived)
        : m_receiver(receiver),
          m_arrived(std::move(arrived))
    {
    }

    void put(const VideoFrame &frame)
    {
        QMutexLocker locker(&m_mutex);
        if (m_receiver == nullptr)
            return;
        m_frame = frame;
        if (!std::exchange(m_announced, true))
            QMetaObject::invokeMethod(m_receiver, m_arrived, Qt::QueuedConnection);
    }
    // The frame stays in the slot.
    [[nodiscard]] VideoFrame fetch()
    {
        QMutexLocker locker(&m_mutex);
        m_announced = false;
        return m_frame;
    }
    // Nothing is taken or announced any more. Called by the receiver.
    void close()
    {
        QMutexLocker locker(&m_mutex);
        m_receiver = nullptr;
        m_frame = VideoFrame();
    }

private:
    QMutex m_mutex;
    QObject *m_receiver;
    std::function<void()> m_arrived;
    VideoFrame m_frame;
    bool m_announced = false;
};
