// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitlecue.h"

#include <QStringView>

namespace subtitles {

// Gathers the words of one cue with the looks in force, within the bounds.
class Writer
{
public:
    bool bold = false;
    bool italic = false;
    bool underlined = false;
    bool above = false;

    void add(QChar character);
    void add(QStringView text);
    [[nodiscard]] bool isFull() const { return m_text.words.size() >= LongestText; }
    // Without blank lines and blanks at the ends of lines.
    [[nodiscard]] SubtitleText take();

private:
    [[nodiscard]] bool looksAsLast() const;

    SubtitleText m_text;
    int m_lines = 1;
};

} // namespace subtitles
