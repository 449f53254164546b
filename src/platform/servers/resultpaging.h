// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <optional>

// A server that gives only so many rows at a time is asked for the rest by the order of the first column:
// each page begins behind the last value of the page before. That costs the server an index walk and a sort
// of one page, and rows that come and go between two pages shift nothing, as they do with an offset (which
// servers also limit).
//
// The query for the page of at most `rows` rows behind `after` (empty: the first page). None when the query
// cannot be asked for so: it is no SELECT, its first column is no variable, or it has an order or a limit of
// its own.
[[nodiscard]] std::optional<QString> pageOf(const QString &query, const QString &after, int rows);
