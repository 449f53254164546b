// SPDX-License-Identifier: GPL-3.0-or-later
#include "idfilter.h"

#include <QSet>

using namespace Qt::Literals::StringLiterals;

namespace {

using sparql::Tokens;

QStringList irisOf(const QString &numbers, const ResourceIds &ids)
{
    QStringList iris;
    QSet<int> seen;
    for (const QString &number : numbers.split(u',')) {
        const int id = number.toInt();
        const QString iri = u'<' + ids.iriOf(id) + u'>';
        if (!sparql::isAbsoluteIri(iri) || seen.contains(id))
            continue;
        seen.insert(id);
        iris.append(iri);
    }
    return iris;
}

std::optional<IdFilter> idFilterAt(const Tokens &tokens, qsizetype from, const ResourceIds &ids)
{
    Tokens words;
    const qsizetype open = sparql::significant(tokens, from + 1);
    const qsizetype close = sparql::closingSign(tokens, open, u'(', u')');
    for (qsizetype i = open; i <= close; ++i) {
        if (tokens[i].kind != sparql::Token::Kind::Space)
            words.append(tokens[i]);
    }
    // ( tracker:id ( ?x ) IN ( .. ) )
    if (!sparql::isWordAt(words, 1, "tracker:id"_L1) || !sparql::isSignAt(words, 2, u'(')
        || !sparql::isSignAt(words, 4, u')') || !sparql::isKeywordAt(words, 5, u"IN")
        || !sparql::isSignAt(words, 6, u'(') || sparql::closingSign(words, 6, u'(', u')') != words.size() - 2)
        return {};
    return IdFilter{from, close, words[3].text,
                    irisOf(sparql::textOf(words.sliced(7, words.size() - 9)), ids)};
}

} // namespace

std::optional<IdFilter> idFilter(const sparql::Tokens &tokens, const ResourceIds &ids)
{
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].isKeyword(u"FILTER"))
            continue;
        if (std::optional<IdFilter> filter = idFilterAt(tokens, i, ids))
            return filter;
    }
    return {};
}

void beginWithIris(sparql::Tokens &tokens, const IdFilter &filter, const QStringList &iris)
{
    tokens.remove(filter.first, filter.last - filter.first + 1);
    sparql::replaceTokens(tokens, sparql::groupStart(tokens, filter.first) + 1, 0,
                          u" VALUES %1 { %2 }"_s.arg(filter.variable, iris.join(u' ')));
}
