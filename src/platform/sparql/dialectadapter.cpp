// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialectadapter.h"

#include "sparqlrewriting.h"

using namespace Qt::Literals::StringLiterals;

namespace {

using sparql::Tokens;

void reorderUpdate(Tokens &tokens)
{
    const std::optional<sparql::OldUpdate> update = sparql::oldUpdate(tokens);
    if (!update)
        return;
    const Tokens remove = sparql::tokensOf(u"DELETE "_s) + update->remove;
    const Tokens where = sparql::tokensOf(u" WHERE "_s) + update->where;
    // What is inserted comes out of what was found: there is nothing to insert when nothing was.
    if (!sparql::variableCounts(update->insert).isEmpty())
        tokens = remove + sparql::tokensOf(u" INSERT "_s) + update->insert + where;
    else
        tokens = remove + where + sparql::tokensOf(u" ; INSERT DATA "_s) + update->insert;
}

} // namespace

AdaptedStatement adaptToStore(const SparqlQuery &query)
{
    AdaptedStatement statement;
    Tokens tokens = sparql::tokensOf(query.text());
    const bool isUpdate = query.type() == SparqlQuery::UpdateStatement;
    if (isUpdate && sparql::hasIllegalIri(tokens)) {
        statement.action = AdaptedStatement::Action::Refuse;
        statement.error = u"the update names an identifier that cannot be"_s;
        return statement;
    }
    const sparql::WordsRead read = sparql::canonicalizeWords(tokens);
    statement.iris = read.iris;
    statement.isAddressLookup = read.namesAddress && !isUpdate;
    if (isUpdate && statement.iris.contains(u"<>"_s)) {
        statement.action = AdaptedStatement::Action::Drop;
        return statement;
    }
    if (isUpdate)
        reorderUpdate(tokens);
    else
        sparql::leaveOutUnrelatedOptionals(tokens);
    sparql::renameVariables(tokens);
    statement.text = sparql::textOf(tokens);
    return statement;
}
