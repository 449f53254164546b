// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqltokens.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <optional>

// What every dialect does with the application's texts, on their words and never on the text.
namespace sparql {

using Tokens = QList<Token>;

// An IRI token without the backslashes before brackets and backslashes, everything that may not stand in an
// IRI percent-encoded.
[[nodiscard]] QString legalIri(const QString &token);
[[nodiscard]] bool hasIllegalIri(const Tokens &tokens);

// The next token from `from` on that is not space; the end when there is none.
[[nodiscard]] qsizetype significant(const Tokens &tokens, qsizetype from);
// `from` is an opening sign: the index of the one that closes it, or -1.
[[nodiscard]] qsizetype closingSign(const Tokens &tokens, qsizetype from, char16_t opening, char16_t closing);

// How often each variable stands in the text, by its name.
[[nodiscard]] QHash<QString, int> variableCounts(const Tokens &tokens);
// Gives variables whose names begin with '_' or "v_" another name, which no variable of the text has.
void renameVariables(Tokens &tokens);

// Leaves out each OPTIONAL group of one pattern whose subject stands nowhere else and whose object does: it
// joins every row with every value in the store.
void leaveOutUnrelatedOptionals(Tokens &tokens);

// The groups of DELETE {} WHERE {} INSERT {}, braces included.
struct OldUpdate
{
    Tokens remove;
    Tokens where;
    Tokens insert;
};
// Nothing when the update has any other form.
[[nodiscard]] std::optional<OldUpdate> oldUpdate(const Tokens &tokens);

// What comes out of reading the words one by one.
struct WordsRead
{
    QSet<QString> iris; // with their brackets
    bool namesAddress = false; // a string after nie:url
};
// Makes IRIs legal, writes strings between double quotes on one line, brings a file: address after nie:url
// into its canonical spelling, and calls tracker:added nrl:added.
[[nodiscard]] WordsRead canonicalizeWords(Tokens &tokens);

} // namespace sparql
