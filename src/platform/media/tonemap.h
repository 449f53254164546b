// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "picturecolours.h"

// From high dynamic range and wide gamut to an ordinary screen.
//
// The screen is taken for one of ITU-R BT.709 primaries and BT.1886 gamma 2.4 whose white is the reference
// white of ITU-R BT.2408: 203 cd/m2. What is well below that is shown as bright as the film says (a grey card
// of 26 cd/m2 comes out at 42 %, as in films made for such a screen); from the knee of ITU-R BT.2390 on it is
// compressed, in PQ, by a hyperbola that leaves the knee straight on and, unlike that recommendation's
// spline, never becomes level: highlights keep their shapes. The curve is applied to the largest of red,
// green and blue and all three are scaled alike: hues stay. Of a colour that the screen has not,
// what is below black or above white is cut off.
namespace tonemap {

constexpr double ReferenceWhite = 203; // cd/m2

[[nodiscard]] double lightOfPq(double code); // SMPTE ST 2084: 0 to 1 -> cd/m2
[[nodiscard]] double pqOfLight(double light);

// The light that the screen gives for light of a film whose brightest is `peak`, both in cd/m2. Grows all the
// way to 10,000, also where the film's peak is lower: what it says of itself is not always true.
[[nodiscard]] double compressed(double light, double peak);

// What the screen is sent for R'G'B' of these colours.
[[nodiscard]] Rgb shown(const Rgb &coded, const PictureColours &colours);

} // namespace tonemap
