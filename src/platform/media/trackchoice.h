// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediatracks.h"

#include <QList>
#include <QStringList>

// What is heard and read where nobody has chosen.
namespace trackchoice {

struct Candidate
{
    MediaTrack track;
    bool isDefault = false; // the file would have it
    bool forced = false; // only what is foreign in the video
    bool bare = false; // a file named just as the video is
};

// Of sound: the best of the user's languages; else what the file would have; else the first. Empty: there is
// none.
[[nodiscard]] QString sound(const QList<Candidate> &candidates, const QStringList &languages);
// Of subtitles; mostly none. A file that somebody put beside the video under its very name; where the sound
// is in one of the user's languages what is forced in it; where it is in another, the best of the user's
// languages, or else what the file would have.
[[nodiscard]] QString subtitle(const QList<Candidate> &candidates, const QString &soundLanguage,
                               const QStringList &languages);

} // namespace trackchoice
