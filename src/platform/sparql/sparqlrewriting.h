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
// True when the IRI token can be sent as it is and begins with a scheme: any other is completed by each
// server in its own way.
[[nodiscard]] bool isAbsoluteIri(const QString &token);

// The next token from `from` on that is not space; the end when there is none.
[[nodiscard]] qsizetype significant(const Tokens &tokens, qsizetype from);
// `from` is an opening sign: the index of the one that closes it, or -1.
[[nodiscard]] qsizetype closingSign(const Tokens &tokens, qsizetype from, char16_t opening, char16_t closing);
// The brace of the innermost group that holds the token at `at`, or -1.
[[nodiscard]] qsizetype groupStart(const Tokens &tokens, qsizetype at);

// What stands at `at`; false behind the end.
[[nodiscard]] bool isWordAt(const Tokens &tokens, qsizetype at, QLatin1StringView word);
[[nodiscard]] bool isKeywordAt(const Tokens &tokens, qsizetype at, QStringView word);
[[nodiscard]] bool isSignAt(const Tokens &tokens, qsizetype at, char16_t sign);

// Puts the words of a text in the place of `count` tokens from `at` on. Gives the index behind them.
qsizetype replaceTokens(Tokens &tokens, qsizetype at, qsizetype count, const QString &text);

// How often each variable stands in the text, by its name.
[[nodiscard]] QHash<QString, int> variableCounts(const Tokens &tokens);
// A variable of this name, with its '?', or of a longer one when the text has one of this name.
[[nodiscard]] QString freeVariable(const Tokens &tokens, QString name);
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
