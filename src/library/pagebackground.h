// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QImage>

// The picture behind pages while the program sits in the task switcher. Worked out on the first call; null
// when the theme has none.
[[nodiscard]] const QImage &pageBackground();
// The same of the theme as it is now.
[[nodiscard]] QImage drawnPageBackground();

// 16-bit colour with ordered dithering, so that gradients do not show steps. An image that is not 32 bits
// deep is not converted: the result is black.
[[nodiscard]] QImage ditheredTo16Bit(const QImage &source);
