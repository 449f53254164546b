// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// Holds back the end of a stream while none of those beside it has begun, unless all have ended. decodebin3
// (1.22) gives up what has ended by the time that the first data of the others arrive, and closing the
// pipeline then ends the program: it looks for what it gave up. A video that breaks off behind its head does
// so.
//
// Once, before the pipeline starts; lasts as long as the pipeline does.
void holdEarlyEnds(GstElement *playbin);
