// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videodetails.h"
#include "videoinfo.h"

#include <QList>
#include <QStringList>

class RowTable;
class SparqlResult;

// Reading finished results into the program's records.
namespace TrackerAnswers {

// What a list shows: without a title, the file name up to its last dot.
[[nodiscard]] QString titleOrBaseName(const QString &title, const QString &fileName);

// All rows from the result's present position on, eight strings each.
[[nodiscard]] QList<QStringList> rows(SparqlResult &result);
[[nodiscard]] QList<QStringList> rows(const RowTable &table);
// The result's current row.
[[nodiscard]] VideoInfo videoInfo(const SparqlResult &result);
[[nodiscard]] VideoDetails videoDetails(const SparqlResult &result);
// The stored title, else the file name up to its first dot.
[[nodiscard]] QString title(const SparqlResult &result);

} // namespace TrackerAnswers
