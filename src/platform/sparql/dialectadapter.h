// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqlquery.h"

#include <QSet>
#include <QString>

// A statement as the installed store takes it.
struct AdaptedStatement
{
    enum class Action {
        Send,
        Drop, // an update for nothing: succeeds without being sent
        Refuse, // fails without being sent
    };
    Action action = Action::Send;
    QString text;
    QString error; // why it is refused
    // Every IRI that the text names, with its brackets.
    QSet<QString> iris;
    // Asks what stands at one address (a string after nie:url).
    bool isAddressLookup = false;
};

// Brings the application's texts into the dialect of the store library. Strings and IRIs are never taken for
// anything else:
// - variables whose names begin with '_' or "v_" get another name: 3.4 takes "nfo:fileName ?_x" for a
// property path, and
//   deletes nothing through a variable named as it names its own columns;
// - DELETE {} WHERE {} INSERT {} becomes DELETE {} WHERE {} ; INSERT DATA {}: one atomic update, which
// inserts also when
//   nothing was there to delete;
// - an update with an empty IRI is dropped, one with an IRI that cannot be is refused; in a query such an IRI
// is
//   percent-encoded (device names hold blanks);
// - an OPTIONAL pattern whose subject stands nowhere else is left out: it joins every row with every value in
// the store
//   (1,000 videos of one camera gave 1,000,000 rows) and keeps the set of results the same;
// - line breaks and control characters in strings are escaped; code points are written plainly, because the
// library
//   cuts an update short by every \u escape in it;
// - tracker:added is called nrl:added;
// - a file: address after nie:url is brought into the store's spelling.
[[nodiscard]] AdaptedStatement adaptToStore(const SparqlQuery &query);
