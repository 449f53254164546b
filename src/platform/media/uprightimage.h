// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

// The picture of a frame as a person holds it to be upright, whatever the device's turn.
[[nodiscard]] QImage uprightImage(const VideoFrame &frame);
