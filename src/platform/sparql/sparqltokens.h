// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>

namespace sparql {

// The words of a SPARQL text. Joined again in order, their texts are the text that was cut.
struct Token
{
    enum class Kind {
        Space, // blanks, line breaks and comments
        Iri, // with its angle brackets
        String, // with its quotes, of any of the four kinds
        Variable, // with its ? or $
        Word, // keyword, prefixed name, number, blank node
        Sign, // one character of punctuation
        Broken, // a string that is never closed, to the end of the text
    };
    Kind kind = Kind::Space;
    QString text;

    [[nodiscard]] bool isSign(char16_t sign) const
    {
        return kind == Kind::Sign && text.front() == QChar(sign);
    }
    // Keywords know no case.
    [[nodiscard]] bool isKeyword(QStringView word) const
    {
        return kind == Kind::Word && text.compare(word, Qt::CaseInsensitive) == 0;
    }
    friend bool operator==(const Token &, const Token &) = default;
};

[[nodiscard]] QList<Token> tokensOf(const QString &text);
[[nodiscard]] QString textOf(const QList<Token> &tokens);

// What a string token stands for, and the token (between double quotes, on one line) that stands for a text.
[[nodiscard]] QString stringContent(const QString &token);
[[nodiscard]] QString stringToken(const QString &content);

} // namespace sparql
