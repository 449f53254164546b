// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"
#include "rowtable.h"

#include <functional>

using TrackerSparqlConnection = struct _TrackerSparqlConnection;

// What became of a statement.
struct StatementOutcome
{
    RowTable table;
    QString error; // null when all went well
    // The store went away while the statement was with it: what came of it is not known.
    bool isLost = false;
    // The service is there and has no database to answer from at the moment.
    bool isUnserved = false;
};

// Asks a connection of the store library and brings all rows over. The query waits in the library, the rows
// are read in one of GIO's pool threads (a hop into it for every row, as the library's own asynchronous step
// does, is dearer than the row), and `done` is called through the event loop, exactly once, also when
// cancelled.
//
// `peer`: the bus connection below, or null when there is none. The library takes the end of a stream for the
// end of the rows, so that a service that dies gives a short answer; an answer counts only when the service
// still speaks after it.
void fetchRows(TrackerSparqlConnection *connection, GDBusConnection *peer, const QString &text,
               GCancellable *cancellable, std::function<void(StatementOutcome)> done);
