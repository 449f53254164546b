// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// Mends what decodebin3 (1.22) does when the streams of a video do not begin together. It looks at all its
// inputs whenever the first data of one arrives, and at no other time.
//
// One that has ended by then (subtitles of a few words, a damaged file) is given up with what it holds: it is
// never shown, and closing the pipeline falls over what is left. So ends are held back until each input has
// begun or has come to its end.
//
// One that is there only after the last of the others has begun is not seen before its own first data. Those
// of subtitles may be a minute away, and the outputs wait for all streams: nothing would ever be shown. Such
// a stream is begun with a gap.
//
// Once, before the pipeline starts; lasts as long as the pipeline does.
void watchDecoderInputs(GstElement *playbin);
