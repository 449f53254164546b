// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Sees to it that answers of the store library arrive: they come through GLib's main context, which Qt turns
// by itself only where its event dispatcher is GLib's.
void turnGlibMainLoop();
