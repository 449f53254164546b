// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Where a video stands in a series.
struct EpisodeName
{
    QString series; // words in lower case, one blank between; empty: none was named
    int season = -1; // -1: none was named
    int episode = -1; // -1: this is no episode

    [[nodiscard]] bool isEpisode() const { return episode >= 0; }
    friend bool operator==(const EpisodeName &, const EpisodeName &) = default;
};

// Reads a title or the name of a file without its suffix: "Show S02E05", "show.2x05", "Season 2 Episode 5",
// "Holiday, part 3", "Ferien Teil 3", "第3話".
[[nodiscard]] EpisodeName episodeOf(const QString &name);

// A name as it is spelled, around the digits of its episode.
struct NumberedName
{
    QString series; // what stands before the mark of the season or the episode
    QString before; // up to the digits
    QString digits; // empty: the name has none, or writes the number in letters
    QString after;

    [[nodiscard]] bool isNumbered() const { return !digits.isEmpty(); }
    // The name with other digits, up to these: as wide as its own, and without the zeros before them.
    [[nodiscard]] QStringList upTo(int number) const;
};

[[nodiscard]] NumberedName numberedName(const QString &name);

// The words of a name in lower case: runs of letters, marks and digits.
[[nodiscard]] QStringList wordsOf(const QString &name);
