// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// Has the streams of what a playbin3 opens taken apart by the decoder, as one input, and not by the source,
// as one input each; from GStreamer 1.26 on by the source. To be called before it starts.
void parseInDecoder(GstElement *playbin);
