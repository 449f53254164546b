// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QList>

#include <algorithm>
#include <cstdio>
#include <ctime>

// What frames cost, in milliseconds: by the clock, and of the processor, which this thread has used also
// where other programs run.
class FrameTimes
{
public:
    void begin()
    {
        m_timer.start();
        m_processorBefore = processorTime();
    }
    void end()
    {
        m_wall.append(double(m_timer.nsecsElapsed()) / 1e6);
        m_processor.append(processorTime() - m_processorBefore);
    }

    [[nodiscard]] double wall(int percent) const { return at(m_wall, percent); }
    [[nodiscard]] double processor(int percent) const { return at(m_processor, percent); }

private:
    static double processorTime()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
    }
    static double at(QList<double> times, int percent)
    {
        std::sort(times.begin(), times.end());
        return times.at(times.size() * percent / 100);
    }

    QElapsedTimer m_timer;
    double m_processorBefore = 0;
    QList<double> m_wall;
    QList<double> m_processor;
};
