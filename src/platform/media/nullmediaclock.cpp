// SPDX-License-Identifier: GPL-3.0-or-later
// How time goes on for the back end that plays nothing, and what comes on a video's way.
#include "nullmediabackend.h"

#include <algorithm>

using namespace std::chrono_literals;

void NullMediaBackend::advance(MediaTime time)
{
    const MediaTime until = m_now + time;
    runDue();
    while (m_now < until) {
        MediaTime step = until;
        for (const Event &event : std::as_const(m_events))
            step = std::min(step, event.due);
        step -= m_now;
        const bool running = isRunning();
        const MediaTime distance = nextHappening() - m_exact;
        const MediaTime way = MediaTime(qint64(double(distance.count()) / m_rate)); // as long as it takes
        const bool arrives = running && way <= step;
        if (arrives)
            step = way;
        if (running) {
            m_exact += arrives ? distance : MediaTime(qint64(double(step.count()) * m_rate));
            showFrame(m_exact);
        }
        m_now += step;
        if (arrives)
            reachHappening();
        runDue();
    }
}

bool NullMediaBackend::isRunning() const
{
    return m_ready && !m_stalled && !m_seekTarget && !isScrubbing() && state() == AvloRenderer::Playing;
}

void NullMediaBackend::schedule(MediaTime delay, std::function<void()> action)
{
    m_events.append({m_now + delay, std::move(action)});
    if (delay > 0ms || m_runQueued)
        return;
    m_runQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_runQueued = false;
            runDue();
        },
        Qt::QueuedConnection);
}

// Events of one moment happen in the order in which they were scheduled.
void NullMediaBackend::runDue()
{
    for (;;) {
        const auto due = std::min_element(m_events.begin(), m_events.end(),
                                          [](const Event &a, const Event &b) { return a.due < b.due; });
        if (due == m_events.end() || due->due > m_now)
            return;
        const auto action = std::move(due->action);
        m_events.erase(due);
        action();
    }
}

// The next place on the video's way where something happens: a stall, a fault, the end.
MediaTime NullMediaBackend::nextHappening() const
{
    MediaTime next = m_current.duration;
    if (m_current.fault && m_current.faultPosition > m_reached)
        next = std::min(next, m_current.faultPosition);
    for (const Media::Stall &stall : m_current.stalls) {
        if (stall.position > m_reached && stall.position >= m_exact)
            next = std::min(next, stall.position);
    }
    if (const auto last = m_loop.last(m_current.duration); last && *last >= m_exact)
        next = std::min(next, *last);
    return std::max(next, m_exact);
}

void NullMediaBackend::reachHappening()
{
    m_reached = m_exact;
    if (const auto start = m_loop.wayBack(m_exact, m_current.duration)) {
        m_exact = *start;
        m_reached = m_exact - 1ns;
        showFrame(m_exact);
        return;
    }
    if (m_current.fault && m_current.faultPosition == m_exact) {
        fail();
        return;
    }
    for (const Media::Stall &stall : std::as_const(m_current.stalls)) {
        if (stall.position != m_exact)
            continue;
        m_stalled = true;
        for (int step = 0; step < 4; ++step)
            schedule(stall.length * step / 4, [this, step] { Q_EMIT bufferingChanged(float(step) * 25); });
        schedule(stall.length, [this] {
            m_stalled = false;
            Q_EMIT bufferingChanged(100);
        });
        return;
    }
    if (m_exact >= m_current.duration)
        end();
}
