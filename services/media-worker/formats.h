// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"

#include <string>

// What this program claims to read. Everything else that happens to be installed is struck from the (private)
// registry: a demuxer or decoder that nobody claims is never loaded, whatever a file says it is.
namespace Formats {

// Before the first file is read.
void keepClaimedOnly();

// The MIME type of a file whose bytes were found to be `caps`; empty for a container that is not claimed.
[[nodiscard]] std::string mimeType(const GstCaps *caps);

// A software decoder for a video stream, or null.
[[nodiscard]] ElementPointer newVideoDecoder(const GstCaps *caps);

// Loads every plug-in of the registry now, for a jail in which nothing can be opened later.
void loadAll();

} // namespace Formats
