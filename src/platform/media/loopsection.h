// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediatracks.h"

#include <algorithm>
#include <optional>

// The section that is played again and again.
class LoopSection
{
public:
    // Shorter than this nothing can be heard or seen of it.
    static constexpr MediaTime Shortest = std::chrono::milliseconds(500);
    // The end of the video ends playing: the way back begins a little before.
    static constexpr MediaTime EndMargin = std::chrono::milliseconds(300);

    // True: it is another one now.
    bool set(std::optional<MediaSection> section)
    {
        if (section && section->end - section->start < Shortest)
            section.reset();
        return std::exchange(m_section, section) != section;
    }
    [[nodiscard]] const std::optional<MediaSection> &section() const { return m_section; }
    // Where it ends in a video of this length (0: unknown).
    [[nodiscard]] std::optional<MediaTime> last(MediaTime duration) const
    {
        if (!m_section)
            return {};
        return duration > EndMargin ? std::min(m_section->end, duration - EndMargin) : m_section->end;
    }
    // Where to go on from this place, when it is time to.
    [[nodiscard]] std::optional<MediaTime> wayBack(MediaTime position, MediaTime duration) const
    {
        const auto end = last(duration);
        return end && position >= *end ? std::optional(m_section->start) : std::nullopt;
    }
    [[nodiscard]] bool contains(MediaTime position) const
    {
        return m_section && position >= m_section->start && position <= m_section->end;
    }

private:
    std::optional<MediaSection> m_section;
};
