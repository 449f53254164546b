// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/sparql/sparqlrewriting.h>

#include <QList>

struct StandardProjection
{
    QList<int> idColumns; // from 0, hold IRIs where the text asked for numbers
    // The resource whose number is asked for is a column of its own as well.
    bool namesResource = false;
};

// tracker:id(..) and tracker:coalesce(..) among the columns of a query, with the names that may follow,
// become columns in brackets with a name.
StandardProjection adaptProjection(sparql::Tokens &tokens);
