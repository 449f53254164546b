// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediatracks.h"

#include <QList>
#include <QString>

// The words of the options.
namespace optiontexts {

// By its language, else by its own name, else by its number (from 0).
[[nodiscard]] QString trackTitle(const MediaTrack &track, int index);
// What else is known of it.
[[nodiscard]] QString trackFacts(const MediaTrack &track);
[[nodiscard]] QString titleOf(const QList<MediaTrack> &tracks, const QString &id);
[[nodiscard]] QString rate(qreal rate);
// Both with a sign, in tenths: "+0.5", "+0.5 s".
[[nodiscard]] QString shift(MediaTime time);
[[nodiscard]] QString shiftInSeconds(MediaTime time);
[[nodiscard]] QString place(MediaTime time);
[[nodiscard]] QString section(const MediaSection &section);

} // namespace optiontexts
