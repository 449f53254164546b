// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/mediatracks.h>

#include <gst/gst.h>

// What a stream tells of itself.

// The part of its id that is the same wherever the file lies. Empty: it has none.
[[nodiscard]] QString streamIdentity(const gchar *streamId);
[[nodiscard]] QString streamIdentity(GstPad *pad);
// The file would have it played where nobody chooses.
[[nodiscard]] bool isDefaultStream(GstPad *pad);
// Language, title and codec, as far as they are told by now.
void describeStream(GstPad *pad, MediaTrack *track);
void describeStream(const GstTagList *tags, MediaTrack *track);
