// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/mediatracks.h>

#include <QList>

#include <gst/gst.h>

// The chapters that a table of contents lists, in the order of their time.
[[nodiscard]] QList<MediaChapter> chaptersOf(GstToc *toc);
