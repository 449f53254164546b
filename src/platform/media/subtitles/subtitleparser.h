// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitlemarkup.h"

#include <QHash>

namespace subtitles {

// The styles of an ASS or SSA script, by name: from its head, which containers keep apart from its events.
class ScriptStyles
{
public:
    ScriptStyles() = default;
    explicit ScriptStyles(QStringView head);
    [[nodiscard]] BaseStyle style(QStringView name) const;

private:
    QHash<QString, BaseStyle> m_styles;
};

// The text of an event as a container keeps it: ReadOrder, Layer, Style, Name, three margins, Effect, Text.
[[nodiscard]] SubtitleText parseEvent(QStringView event, const ScriptStyles &styles);

// A whole file: SubRip, WebVTT, ASS, SSA, MicroDVD, SubViewer, MPL2. Sorted by start; empty when it is none
// of these. MicroDVD counts pictures: `framesPerSecond` where the file does not say how many a second has.
// Malformed cues are left out; of a file beyond the bounds the first cues are taken.
[[nodiscard]] QList<SubtitleCue> parseFile(QStringView text, double framesPerSecond);

} // namespace subtitles
