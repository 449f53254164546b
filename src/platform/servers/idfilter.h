// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resourceids.h"

#include <platform/sparql/sparqlrewriting.h>

#include <QStringList>

#include <optional>

// FILTER(tracker:id(?x) IN (1,2,3)) in a query.
struct IdFilter
{
    qsizetype first = 0; // its words, from FILTER to the last bracket
    qsizetype last = 0;
    QString variable;
    // What has these numbers, with brackets and each once, as far as its IRI can be written into a text.
    QStringList iris;
};

// The first one of the query.
[[nodiscard]] std::optional<IdFilter> idFilter(const sparql::Tokens &tokens, const ResourceIds &ids);

// Has the filter's group begin with VALUES instead: a server that begins with the IRIs looks them up, one
// that comes to them last may look at everything.
void beginWithIris(sparql::Tokens &tokens, const IdFilter &filter, const QStringList &iris);
