// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// A sound that ends without having begun (a file that was cut off, a place behind the end of the sound) is
// told as a gap. decodebin3 (1.22) keeps the end of one stream back until all others have ended, too; the
// output of the sound would wait for it, the others for that output, and nothing would ever be shown.
//
// Decoders take a sound that never begins for a damaged one, which tellsEmptySound() tells apart, until
// tellsBegunSound(): from another place on there is some. Nothing takes the place of a picture that never
// begins: tellsEmptyPicture() spares the wait for it.
//
// Once, before the pipeline starts; lasts as long as the pipeline does.
void bridgeEmptyStreams(GstElement *playbin);

// The message says that a sound or a picture ended without having begun.
[[nodiscard]] bool tellsEmptySound(GstMessage *message);
[[nodiscard]] bool tellsBegunSound(GstMessage *message);
[[nodiscard]] bool tellsEmptyPicture(GstMessage *message);
