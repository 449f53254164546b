// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gstpointers.h"

// A source over an open regular file, which demuxers may read at random. It reads at given offsets, so that
// the descriptor's own place does not matter, and needs no path, which the jail would not have. The
// descriptor is not owned.
[[nodiscard]] GstElement *newFdSource(int descriptor);

// What the file's first bytes say it is; null when nobody knows.
[[nodiscard]] CapsPointer findType(int descriptor);

// At most `size` bytes at `offset`; less than `size` only at the end of the file; -1 with errno when reading
// fails.
[[nodiscard]] gssize readAt(int descriptor, guint64 offset, guint8 *data, gsize size);
