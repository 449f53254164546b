// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <chrono>

// For as long as it lives a helper of the tests waits for another program, without an event loop, in the
// thread that a Heartbeat beats in. That is not what the heartbeat is to find.
class OwnWait
{
public:
    OwnWait() = default;
    ~OwnWait() { s_total += Clock::now() - m_begin; }
    Q_DISABLE_COPY_MOVE(OwnWait)

    // Of this thread, so far.
    [[nodiscard]] static std::chrono::nanoseconds total() { return s_total; }

private:
    using Clock = std::chrono::steady_clock;

    static inline thread_local std::chrono::nanoseconds s_total{};
    const Clock::time_point m_begin = Clock::now();
};
