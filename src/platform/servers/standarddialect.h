// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resourceids.h"

#include <platform/sparql/sparqlquery.h>

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

// What a server's own data ask of the texts. Full IRIs without brackets.
struct StandardDialectOptions
{
    QString graph; // empty: the server's default graph
    QString positionProperty; // stands for nmm:runTime; empty: nmm:runTime itself
};

// A statement as a SPARQL 1.1 server takes it.
struct StandardStatement
{
    enum class Action {
        Send,
        Drop, // an update for nothing: succeeds without being sent
        Refuse, // fails without being sent
        AnswerEmpty, // a query about nothing: has no rows and is not sent
    };
    Action action = Action::Send;
    QString text;
    // A query that no server takes in one piece goes on in these: they are sent too, one after the other, and
    // the rows of all, in this order, are the answer. The columns are the same. Mostly empty.
    QStringList furtherTexts;
    QString error; // why it is refused
    // Columns, from 0, that come back as IRIs; the answer holds their numbers (ResourceIds::idOf) instead.
    QList<int> idColumns;
    // Each resource has one row: where a server holds several values (titles in two languages), the first of
    // the rows with the same number in the first of idColumns counts.
    bool isOneRowEach = false;
    // Every resource that the query or update is about, with its brackets; neither the graph nor the property
    // of the options.
    QSet<QString> iris;
    // Asks what stands at one address (a string after nie:url).
    bool isAddressLookup = false;
};

// Brings the application's texts into standard SPARQL 1.1, on their words and never on the text:
// - the namespaces of the ontology that a text uses are declared at its head;
// - tracker:id(?x) in the projection becomes a column of its own that holds the IRI.
//   FILTER(tracker:id(?x) IN (..)) becomes VALUES with the IRIs of these numbers, at most idsPerText of
//   them in one text; numbers that nobody has are left out;
// - tracker:coalesce(..) AS ?x becomes (COALESCE(..) AS ?x), and tracker:added is called nrl:added;
// - a string after nie:url finds the address as a literal, plain or typed, and as an IRI, in its
//   canonical spelling and as it is given;
// - an ORDER BY of what is bound nowhere and an OPTIONAL of an unrelated subject are left out; variables
//   are renamed as the store library needs it, for it may be what serves;
// - DELETE {} WHERE {} INSERT {} becomes one DELETE {} INSERT {} WHERE {}, which inserts also when nothing
//   was there to delete, but only while its subject is a video: what is gone does not come back in pieces;
// - a position and a play count are written as numbers, the time of the last play as a time, and another
//   property may hold the position;
// - an update with an empty IRI is dropped, one with an IRI that cannot be is refused; in a query such an
//   IRI is percent-encoded. A query about an empty IRI has no rows.
[[nodiscard]] StandardStatement adaptToStandard(const SparqlQuery &query,
                                                const StandardDialectOptions &options, ResourceIds &ids);

// Each IRI costs a server the same time, however many stand in one text; but from 4,096 on one refuses the
// text, and another takes no text of more than 64 KiB.
inline constexpr int idsPerText = 500;
