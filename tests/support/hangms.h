// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whoever waits for a peer that does not answer waits 25 s: what took less did not, however busy the machine
// is.
constexpr int HangMs = 15000;
