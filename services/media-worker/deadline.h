// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

#include <algorithm>

// When this request is to be given up, on the monotonic clock.
class Deadline
{
public:
    explicit Deadline(unsigned milliseconds) : m_end(g_get_monotonic_time() + gint64(milliseconds) * 1000) { }

    [[nodiscard]] bool hasPassed() const { return g_get_monotonic_time() >= m_end; }
    [[nodiscard]] GstClockTime left() const
    {
        return static_cast<GstClockTime>(std::max<gint64>(m_end - g_get_monotonic_time(), 0)) * GST_USECOND;
    }

private:
    gint64 m_end;
};
