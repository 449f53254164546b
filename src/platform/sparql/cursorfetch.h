// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"
#include "statementoutcome.h"

#include <QString>

#include <functional>

using TrackerSparqlConnection = struct _TrackerSparqlConnection;

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
