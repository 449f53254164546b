// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "rowtable.h"

#include <QString>

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
