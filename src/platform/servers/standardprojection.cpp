// SPDX-License-Identifier: GPL-3.0-or-later
#include "standardprojection.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = sparql::Token::Kind;
using sparql::Tokens;

struct Call
{
    bool isId = false;
    qsizetype end = 0; // behind it and its name
    QString argument; // all of them
    QString name; // with its '?'; empty when it has none
};

// A call of a function at `at`. Its end is there, too, when it is never closed.
Call callAt(const Tokens &tokens, qsizetype at)
{
    Call call{sparql::isWordAt(tokens, at, "tracker:id"_L1), at, {}, {}};
    const qsizetype open = sparql::significant(tokens, at + 1);
    const qsizetype close = sparql::closingSign(tokens, open, u'(', u')');
    if (close < 0)
        return call;
    call.argument = sparql::textOf(tokens.sliced(open + 1, close - open - 1));
    call.end = close + 1;
    const qsizetype as = sparql::significant(tokens, call.end);
    const qsizetype variable = sparql::significant(tokens, as + 1);
    if (sparql::isKeywordAt(tokens, as, u"AS") && variable < tokens.size()
        && tokens[variable].kind == Kind::Variable) {
        call.name = tokens[variable].text;
        call.end = variable + 1;
    }
    return call;
}

// Gives the index behind the column.
qsizetype adaptCall(Tokens &tokens, qsizetype at, const Call &call, int column)
{
    const QString name
        = call.name.isEmpty() ? sparql::freeVariable(tokens, u"id"_s + QString::number(column)) : call.name;
    const QString text = (call.isId ? u"(%1 AS %2)"_s : u"(COALESCE(%1) AS %2)"_s).arg(call.argument, name);
    return sparql::replaceTokens(tokens, at, call.end - at, text);
}

} // namespace

StandardProjection adaptProjection(Tokens &tokens)
{
    StandardProjection projection;
    QStringList resources;
    QStringList variables;
    int column = 0;
    qsizetype at = sparql::significant(tokens, 0);
    if (!sparql::isKeywordAt(tokens, at, u"SELECT"))
        return {};
    for (++at; at < tokens.size() && !tokens[at].isSign(u'{'); ++at) {
        const bool isCall = sparql::isWordAt(tokens, at, "tracker:id"_L1)
            || sparql::isWordAt(tokens, at, "tracker:coalesce"_L1);
        if (const Call call = isCall ? callAt(tokens, at) : Call(); call.end > at) {
            if (call.isId) {
                projection.idColumns.append(column);
                resources.append(call.argument.trimmed());
            }
            at = adaptCall(tokens, at, call, column) - 1;
        } else if (tokens[at].isSign(u'(')) {
            at = std::max(at, sparql::closingSign(tokens, at, u'(', u')'));
        } else if (tokens[at].kind == Kind::Variable) {
            variables.append(tokens[at].text);
        } else {
            continue;
        }
        ++column;
    }
    projection.namesResource = !resources.isEmpty() && variables.contains(resources.first());
    return projection;
}
