// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Says in its marker that an extension ended the program: when a signal ends it, and the extension's code is
// on the stack of the thread that got it, wherever that was called from (painting, events, its own timers
// and threads), or it happens within a call that the program makes. Then the signal takes its course.
//
// It is by its code that an extension is known, so that what crashes while one is merely loaded is not laid
// at its door. Signals are watched only while there is an extension. GUI thread.
namespace crashwitness {

// `marker` is the descriptor of the extension's marker file, and its name here. Without room for another one
// it is not watched.
void watch(int marker);
// `code` is an address in the library.
void setCode(int marker, const void *code);
void unwatch(int marker);

// Around a call, which the text names; it lives for ever.
void entered(int marker, const char *call);
void left(int marker);

} // namespace crashwitness
