// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// The audio output: the first of the sound systems of today's desktops and phones whose device opens, else a
// sink that is silent and keeps the time, so that a video without a device plays at its pace. A new
// reference. `silent` asks for the latter.
[[nodiscard]] GstElement *createAudioSink(bool silent);
// It is of the latter kind.
[[nodiscard]] bool isSilentSink(GstElement *sink);
