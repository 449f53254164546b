// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What is done once for all videos, or after each. On any thread but the GUI's: each may take seconds.

// Before anything else of GStreamer is used.
void initialiseGStreamer();
// The same, and what a first video needs is loaded: before the first tap.
void prepareGStreamer();
// When a video is closed.
void giveMemoryBack();
