// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitlecue.h"

#include <QStringView>

namespace subtitles {

// How a track looks where its text does not say.
struct BaseStyle
{
    bool bold = false;
    bool italic = false;
    bool underlined = false;
    bool above = false;
};

// Tags in angle brackets (b, i, u; all others are left out), character references, and what some files have
// in braces: {\an8}, {\i1}. SubRip, WebVTT, Pango's markup.
[[nodiscard]] SubtitleText parseTagged(QStringView text);
// The text of an ASS or SSA event: overrides in braces, \N, \n, \h; drawings are left out.
[[nodiscard]] SubtitleText parseOverrides(QStringView text, const BaseStyle &base = {});
// No markup but line ends.
[[nodiscard]] SubtitleText parsePlain(QStringView text);

} // namespace subtitles
