// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialectadapter.h"

#include "fileuri.h"
#include "sparqltokens.h"

#include <QHash>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = sparql::Token::Kind;
using Tokens = QList<sparql::Token>;

bool mayStandInIri(char c)
{
    return static_cast<unsigned char>(c) > 0x20 && c != '\x7f' && !QByteArrayView("<>\"{}|^`\\").contains(c);
}

// Undoes the backslashes before brackets and backslashes, then escapes what may not stand in an IRI.
QString legalIri(const QString &token)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    const QByteArray inner = QStringView(token).sliced(1).chopped(1).toUtf8();
    QByteArray iri = "<";
    for (qsizetype i = 0; i < inner.size(); ++i) {
        if (inner[i] == '\\' && i + 1 < inner.size() && QByteArrayView("<>\\").contains(inner[i + 1]))
            ++i;
        const auto byte = static_cast<unsigned char>(inner[i]);
        if (mayStandInIri(inner[i]))
            iri.append(inner[i]);
        else
            iri.append('%').append(digits[byte >> 4U]).append(digits[byte & 0xFU]);
    }
    return QString::fromUtf8(iri.append('>'));
}

// The next token from `from` on that is not space; the end when there is none.
qsizetype significant(const Tokens &tokens, qsizetype from)
{
    while (from < tokens.size() && tokens[from].kind == Kind::Space)
        ++from;
    return from;
}

// `from` is an opening brace: the index of the one that closes it, or -1.
qsizetype closingBrace(const Tokens &tokens, qsizetype from)
{
    int depth = 0;
    for (qsizetype i = from; i < tokens.size(); ++i) {
        if (tokens[i].isSign(u'{'))
            ++depth;
        else if (tokens[i].isSign(u'}') && --depth == 0)
            return i;
    }
    return -1;
}

QHash<QString, int> variableCounts(const Tokens &tokens)
{
    QHash<QString, int> counts;
    for (const sparql::Token &token : tokens) {
        if (token.kind == Kind::Variable)
            ++counts[token.text.sliced(1)];
    }
    return counts;
}

bool isMisunderstood(QStringView variable)
{
    return variable.startsWith(u'_') || variable.startsWith(u"v_");
}

void renameVariables(Tokens &tokens)
{
    const QHash<QString, int> names = variableCounts(tokens);
    QString prefix = u"k"_s;
    const auto collides = [&] {
        return std::any_of(names.keyBegin(), names.keyEnd(),
                           [&](const QString &name) { return names.contains(prefix + name); });
    };
    while (collides())
        prefix += u'k';
    for (sparql::Token &token : tokens) {
        if (token.kind == Kind::Variable && isMisunderstood(QStringView(token.text).sliced(1)))
            token.text.insert(1, prefix);
    }
}

// `from` is the word OPTIONAL: the index behind its group when that is one pattern of two variables and its
// subject stands nowhere else, or -1.
qsizetype unrelatedOptionalEnd(const Tokens &tokens, qsizetype from, const QHash<QString, int> &counts)
{
    qsizetype at = significant(tokens, from + 1);
    QStringList variables;
    const auto take = [&](bool matches) {
        if (matches)
            at = significant(tokens, at + 1);
        return matches;
    };
    const auto takeVariable = [&] {
        if (at >= tokens.size() || tokens[at].kind != Kind::Variable)
            return false;
        variables.append(tokens[at].text.sliced(1));
        return take(true);
    };
    const auto takeSign = [&](char16_t sign) { return take(at < tokens.size() && tokens[at].isSign(sign)); };
    if (!takeSign(u'{') || !takeVariable() || !take(at < tokens.size() && tokens[at].kind == Kind::Word)
        || !takeVariable())
        return -1;
    takeSign(u'.');
    if (at >= tokens.size() || !tokens[at].isSign(u'}'))
        return -1;
    const bool unrelated = counts.value(variables[0]) == 1 && counts.value(variables[1]) > 1;
    return unrelated ? at + 1 : -1;
}

void leaveOutUnrelatedOptionals(Tokens &tokens)
{
    const QHash<QString, int> counts = variableCounts(tokens);
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].isKeyword(u"OPTIONAL"))
            continue;
        if (const qsizetype end = unrelatedOptionalEnd(tokens, i, counts); end > i) {
            tokens.remove(i, end - i);
            tokens.insert(i, {Kind::Space, u" "_s});
        }
    }
}

// The three groups of an update in the old order, as positions of their words and of their last braces.
struct OldUpdate
{
    qsizetype words[3] = {};
    qsizetype ends[3] = {};
};

std::optional<OldUpdate> oldUpdate(const Tokens &tokens)
{
    static constexpr QStringView words[3] = {u"DELETE", u"WHERE", u"INSERT"};
    OldUpdate update;
    qsizetype at = 0;
    for (int i = 0; i < 3; ++i) {
        at = significant(tokens, at);
        if (at >= tokens.size() || !tokens[at].isKeyword(words[i]))
            return {};
        update.words[i] = at;
        at = significant(tokens, at + 1);
        if (at >= tokens.size() || !tokens[at].isSign(u'{'))
            return {};
        const qsizetype end = closingBrace(tokens, at);
        if (end < 0)
            return {};
        update.ends[i] = end;
        at = end + 1;
    }
    if (significant(tokens, at) < tokens.size())
        return {};
    return update;
}

Tokens slice(const Tokens &tokens, qsizetype from, qsizetype last)
{
    return tokens.sliced(from, last - from + 1);
}

void reorderUpdate(Tokens &tokens)
{
    const std::optional<OldUpdate> update = oldUpdate(tokens);
    if (!update)
        return;
    const sparql::Token blank{Kind::Space, u" "_s};
    const Tokens remove = slice(tokens, update->words[0], update->ends[0]);
    const Tokens where = slice(tokens, update->words[1], update->ends[1]);
    const Tokens insert = slice(tokens, update->words[2], update->ends[2]);
    if (!variableCounts(insert).isEmpty()) {
        // What is inserted comes out of what was found: there is nothing to insert when nothing was.
        tokens = remove + Tokens{blank} + insert + Tokens{blank} + where;
        return;
    }
    tokens = remove + Tokens{blank} + where + Tokens{blank, {Kind::Sign, u";"_s}, blank}
        + sparql::tokensOf(u"INSERT DATA"_s) + insert.sliced(1);
}

// Strings, IRIs and names of properties, each by itself.
void adaptWords(Tokens &tokens, AdaptedStatement &statement)
{
    bool afterUrl = false;
    for (sparql::Token &token : tokens) {
        if (token.kind == Kind::Space)
            continue;
        if (token.kind == Kind::Iri) {
            token.text = legalIri(token.text);
            statement.iris.insert(token.text);
        } else if (token.kind == Kind::String) {
            QString content = sparql::stringContent(token.text);
            if (afterUrl) {
                statement.isAddressLookup = true;
                content = canonicalFileUri(content);
            }
            token.text = sparql::stringToken(content);
        } else if (token.kind == Kind::Word && token.text == "tracker:added"_L1) {
            token.text = u"nrl:added"_s;
        }
        afterUrl = token.kind == Kind::Word && token.text == "nie:url"_L1;
    }
}

bool hasIllegalIri(const Tokens &tokens)
{
    return std::any_of(tokens.begin(), tokens.end(), [](const sparql::Token &token) {
        return token.kind == Kind::Iri && legalIri(token.text) != token.text;
    });
}

} // namespace

AdaptedStatement adaptToStore(const SparqlQuery &query)
{
    AdaptedStatement statement;
    Tokens tokens = sparql::tokensOf(query.text());
    const bool isUpdate = query.type() == SparqlQuery::UpdateStatement;
    if (isUpdate && hasIllegalIri(tokens)) {
        statement.action = AdaptedStatement::Action::Refuse;
        statement.error = u"the update names an identifier that cannot be"_s;
        return statement;
    }
    adaptWords(tokens, statement);
    statement.isAddressLookup = statement.isAddressLookup && !isUpdate;
    if (isUpdate && statement.iris.contains(u"<>"_s)) {
        statement.action = AdaptedStatement::Action::Drop;
        return statement;
    }
    if (isUpdate)
        reorderUpdate(tokens);
    else
        leaveOutUnrelatedOptionals(tokens);
    renameVariables(tokens);
    statement.text = sparql::textOf(tokens);
    return statement;
}
