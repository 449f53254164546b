// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// Keeps from decodebin3 what it was told before about the streams of a video, and what is outdated by then.
// A demuxer that comes upon the streams one by one (flvdemux) tells of the first, then of two; its parsers
// tell the first again when their data come. decodebin3 (1.22) takes what it hears last for the whole, gives
// the other streams up in the middle of opening them, and nothing is ever shown.
//
// Once, before the pipeline starts; lasts as long as the pipeline does.
void dropLateCollections(GstElement *playbin);
