// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

namespace toolkit {

// WCAG contrast of two opaque colours: 1 (none) to 21.
[[nodiscard]] qreal contrastRatio(const QColor &a, const QColor &b);
// `accent` made lighter (on a dark background) or darker until it has `ratio` against the background. No
// component ends below 0x10, so that colours written as text never lose a digit.
[[nodiscard]] QColor legibleAccent(const QColor &accent, const QColor &background, qreal ratio = 4.5);

} // namespace toolkit
