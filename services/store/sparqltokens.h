// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

struct SparqlToken
{
    enum class Kind {
        Iri, // text: without the angle brackets
        Literal, // text: with its escapes resolved
        Word, // keywords, prefixed names, variables, numbers
        Mark, // one character of punctuation
    };
    Kind kind = Kind::Mark;
    QString text;

    [[nodiscard]] bool isMark(QChar mark) const { return kind == Kind::Mark && text == mark; }
    [[nodiscard]] bool isKeyword(QLatin1StringView keyword) const
    {
        return kind == Kind::Word && text.compare(keyword, Qt::CaseInsensitive) == 0;
    }
};

// Comments are left out. Never fails: what is no SPARQL comes out as marks.
[[nodiscard]] QList<SparqlToken> sparqlTokens(const QString &text);
