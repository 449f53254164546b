// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedvideo.h"

#include <QList>
#include <QStringList>

// What the store is asked. Each question goes by an index and has few rows, so that a library of any size
// answers at once. The store copies a table as a whole for a question that names two properties of one class:
// none of these does.
namespace LibraryQuestions {

constexpr int mostOfASide = 60; // rows of a question about neighbours
constexpr int mostOfASeries = 5000;

// Questions whose rows begin with tracker:id.

// The videos next to an address in the order of addresses, up to an end; the second column is the address.
// Those of folders within a folder stand in between.
[[nodiscard]] QString nextTo(const QString &url, const QString &end, bool after);
// The last address of all that begin so.
[[nodiscard]] QString endOf(const QString &beginning);
// The other episodes that a name tells of: by the order of names, as neighbours of its number, and as names
// that begin with the series.
[[nodiscard]] QStringList episodes(const RelatedVideo &video);
// Titles and names of files that have words of the title in common.
[[nodiscard]] QStringList similar(const RelatedVideo &video);

// Seasons of a series of the metadata.
[[nodiscard]] QString seasons(const QString &series);
// Videos of seasons, with the season.
[[nodiscard]] QString episodesOf(const QList<int> &seasons);

// The video of an address.
[[nodiscard]] QString ofUrl(const QString &url);
// What is known of resources comes in parts. What is no video has no row in some part.
enum class Part { Names, Kind, Time };
[[nodiscard]] QString part(Part part, const QList<int> &videos);
// Takes a row of a part over; the season is told by its identifier, 0: none.
void takePart(Part part, const QStringList &row, RelatedVideo &video, int &season);
// -1: the cell is empty.
[[nodiscard]] int numberOf(const QString &cell);
// Episodes with numbers near one, of any series whose videos have identifiers in this range; the second
// column is the number.
[[nodiscard]] QString episodesNumbered(int number, int firstId, int lastId);
[[nodiscard]] QString seasonNumbers(const QList<int> &seasons);
// The titles of the series that seasons belong to.
[[nodiscard]] QString seriesOf(const QList<int> &seasons);

} // namespace LibraryQuestions
