// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gst/gst.h>

// Where one stream has ended and another goes on, the sink of the first still needs something to stand on
// before a pause or a seek comes to an end.
//
// What stands for it are gaps. playsink makes them where the end is known, and puts them where the other
// stream is: past the end of some (MP4), where sinks do not heed them. Those are put to the end. Once, before
// the pipeline starts; lasts as long as the pipeline does.
void boundGaps(GstElement *playbin);

// In most containers the end is known only when the file has been read to its own. Until then the queue of
// the stream that goes on is full and the other one's empty. True: so it is with one of these types
// (GstStreamType), and a gap was sent. What comes all the same comes behind the gap.
bool bridgeDam(GstElement *playbin, int types);

// To whoever takes what is decoded of the stream that comes in at this pad, a decoder's or, where nothing
// needs decoding, an output's. The decoder may be at work on something, which it would drop.
void sendPastDecoder(GstPad *input, GstEvent *event);
