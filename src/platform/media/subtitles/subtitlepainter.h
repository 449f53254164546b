// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitlecue.h"

#include <QFont>
#include <QImage>
#include <QSizeF>

namespace subtitles {

struct Drawn
{
    QImage image; // in device pixels
    QSizeF size; // in logical ones
};

// The words in white, outlined in black, in centred lines no wider than `width`. `scale`: device pixels a
// logical one.
[[nodiscard]] Drawn draw(const SubtitleText &text, const QFont &font, qreal width, qreal scale);

} // namespace subtitles
