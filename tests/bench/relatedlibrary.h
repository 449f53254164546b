// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Libraries for the store below $XDG_DATA_HOME.
enum class RelatedLibrary {
    // As people have it: half of it recordings of a camera in one folder, a tenth episodes of series, the
    // rest
    // films and clips in folders of fifty.
    Mixed,
    // All in one folder, on one day, with titles that begin alike, as episodes with metadata: one series of a
    // twentieth of the library, many of twenty.
    Alike,
    // Each hundredth a film of one folder, the others clips in folders of a film's name beside it.
    Nested,
};

void fillRelatedLibrary(RelatedLibrary kind, int videos);
[[nodiscard]] QString relatedUrl(RelatedLibrary kind, int number);
