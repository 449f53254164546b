// SPDX-License-Identifier: GPL-3.0-or-later
#include "resultpaging.h"

#include "platform/sparql/sparqltokens.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

std::optional<QString> pageOf(const QString &query, const QString &after, int rows)
{
    using Kind = sparql::Token::Kind;
    QList<sparql::Token> tokens = sparql::tokensOf(query);
    const auto isSpace = [](const sparql::Token &token) { return token.kind == Kind::Space; };
    const auto isNoColumn = [](const sparql::Token &token) {
        return token.kind == Kind::Space || token.isKeyword(u"DISTINCT") || token.isKeyword(u"REDUCED");
    };
    const auto select = std::find_if(tokens.cbegin(), tokens.cend(),
                                     [](const sparql::Token &token) { return token.isKeyword(u"SELECT"); });
    const auto column
        = select == tokens.cend() ? select : std::find_if_not(select + 1, tokens.cend(), isNoColumn);
    const auto last = std::find_if_not(tokens.crbegin(), tokens.crend(), isSpace);
    if (column == tokens.cend() || column->kind != Kind::Variable || !last->isSign(u'}'))
        return {};
    const QString key = u"STR("_s + column->text + u')';
    const qsizetype brace = tokens.crend() - last - 1;
    QString begin = sparql::textOf(tokens.first(brace));
    if (!after.isEmpty())
        begin += u" FILTER("_s + key + u" > "_s + sparql::stringToken(after) + u") "_s;
    return begin + u"} ORDER BY "_s + key + u" LIMIT "_s + QString::number(rows);
}
