// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ownwait.h"

#include <QByteArray>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

// Beats every 10 ms in the thread that made it, as a window that answers would, and knows how late it came:
//
//     Heartbeat heart;
//     ... whatever must not block, with an event loop running ...
//     QVERIFY2(heart.isSteady(), heart.report());
//
// A thread that does nothing else beats beside it: what kept that one waiting, too, is the machine's load and
// not counted. Neither is the time for which the kernel let this thread, and another one that this one may
// have waited for, wait for a processor; nor that of an OwnWait.
class Heartbeat
{
public:
    using Duration = std::chrono::nanoseconds;
    static constexpr Duration Interval = std::chrono::milliseconds(10);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr Duration Bound
        = std::chrono::milliseconds(500); // instrumented code is slower by so much
#else
    static constexpr Duration Bound = std::chrono::milliseconds(100);
#endif

    Heartbeat()
    {
        m_reference = std::thread([this] { runReference(); });
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
        m_timer.start(std::chrono::duration_cast<std::chrono::milliseconds>(Interval));
    }
    ~Heartbeat()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
        }
        m_wake.notify_all();
        m_reference.join();
    }
    Q_DISABLE_COPY_MOVE(Heartbeat)

    // The latest beat so far, or the one that is due if that is later still.
    [[nodiscard]] Duration worst() const
    {
        return std::max(m_worst, lateness());
    }
    // The same in whole ms.
    [[nodiscard]] qint64 longestDelay() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(worst()).count();
    }
    [[nodiscard]] int beats() const
    {
        return m_beats;
    }
    [[nodiscard]] bool isSteady() const
    {
        return worst() <= Bound;
    }
    [[nodiscard]] QByteArray report() const
    {
        const auto ms = [](Duration time) { return QByteArray::number(double(time.count()) / 1e6, 'f', 1); };
        return "the latest of " + QByteArray::number(m_beats) + " beats came " + ms(worst())
            + " ms late, allowed are " + ms(Bound);
    }
    void restart()
    {
        m_worst = {};
        m_beats = 0;
        begin();
    }

private:
    using Clock = std::chrono::steady_clock;

    void begin()
    {
        m_last = Clock::now();
        m_loadAtLast = m_load.load();
        m_usagesAtLast = usages();
        m_ownAtLast = OwnWait::total();
    }
    // What the kernel tells of a thread: for how long it ran, and for how long it was ready to and others
    // ran.
    struct Usage
    {
        Duration ran{};
        Duration queued{};
    };
    using Usages = std::map<std::string, Usage>; // by the number of the thread; empty where it does not tell
    [[nodiscard]] static Usages usages()
    {
        Usages usages;
        std::error_code error; // a thread may end meanwhile
        for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task", error)) {
            long long ran = 0;
            long long queued = 0;
            if (std::FILE *file = std::fopen((thread.path() / "schedstat").c_str(), "re")) {
                if (std::fscanf(file, "%lld %lld", &ran, &queued) == 2)
                    usages[thread.path().filename()] = {Duration(ran), Duration(queued)};
                std::fclose(file);
            }
        }
        return usages;
    }
    [[nodiscard]] Duration lateness() const
    {
        const Duration late = Clock::now() - m_last - Interval - (OwnWait::total() - m_ownAtLast);
        if (late <= Duration())
            return late;
        static thread_local const std::string own = std::to_string(::syscall(SYS_gettid));
        Usage here;
        Duration queuedElsewhere{};
        for (const auto &[thread, usage] : usages()) {
            const auto found = m_usagesAtLast.find(thread);
            const Usage before = found == m_usagesAtLast.end() ? Usage() : found->second;
            if (thread == own)
                here = {usage.ran - before.ran, usage.queued - before.queued};
            else
                queuedElsewhere = std::max(queuedElsewhere, usage.queued - before.queued);
        }
        // It worked for a part of that; for the rest it may have waited for a thread that waited itself.
        const Duration worked = std::min(here.ran, late);
        const auto load = Duration(m_load.load() - m_loadAtLast);
        const Duration excused = std::max(load, here.queued + queuedElsewhere);
        return worked + std::max(late - worked - excused, Duration());
    }
    void beat()
    {
        m_worst = std::max(m_worst, lateness());
        ++m_beats;
        begin();
    }
    void runReference()
    {
        std::unique_lock lock(m_mutex);
        while (!m_ended) {
            const auto due = Clock::now() + Interval;
            m_wake.wait_until(lock, due, [this] { return m_ended; });
            m_load += std::max(Duration(Clock::now() - due), Duration()).count();
        }
    }

    QTimer m_timer;
    Clock::time_point m_last = Clock::now();
    Usages m_usagesAtLast = usages();
    Duration m_ownAtLast = OwnWait::total();
    Duration m_worst{};
    int m_beats = 0;
    std::atomic<std::int64_t> m_load = 0; // ns that the other thread was kept waiting, in all
    std::int64_t m_loadAtLast = 0;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_ended = false;
    std::thread m_reference;
};
