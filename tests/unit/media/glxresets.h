// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A graphics processor that can be reset: the test program stands between the window system's plug-in and the
// library of OpenGL. As with drivers that tell of resets, only contexts that were made for it learn of one,
// and only contexts of one kind share.
namespace glxresets {

// Whatever was made up to now is lost.
void reset();
// And nothing can be made until it comes back.
void takeAway();
// So many can be made yet.
void allow(int more);
void bringBack();
// Contexts that could not be made since they were to share with one of another kind.
[[nodiscard]] int mismatches();

} // namespace glxresets
