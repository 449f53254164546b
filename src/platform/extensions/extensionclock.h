// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <functional>

// The time that calls into extensions take is read from it: milliseconds since some moment.
using ExtensionClock = std::function<qint64()>;

// A frame of a screen that shows 60 a second; what takes longer can be seen.
constexpr qint64 FrameTime = 16; // ms
