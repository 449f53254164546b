// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqltokens.h"

#include <algorithm>
#include <iterator>

using namespace Qt::Literals::StringLiterals;

namespace sparql {

namespace {

using Kind = Token::Kind;

bool isNameChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c.unicode() >= 0x80;
}

bool isWordChar(QChar c)
{
    return isNameChar(c) || c == u':' || c == u'-' || c == u'.' || c == u'%';
}

qsizetype lineEnd(const QString &text, qsizetype from)
{
    while (from < text.size() && text[from] != u'\n' && text[from] != u'\r')
        ++from;
    return from;
}

qsizetype spaceEnd(const QString &text, qsizetype from)
{
    while (from < text.size()) {
        if (text[from] == u'#')
            from = lineEnd(text, from);
        else if (text[from].isSpace())
            ++from;
        else
            break;
    }
    return from;
}

// The end of the string that begins at `from`, or `from` when it is never closed. A line break inside a
// short string is taken as part of it: a title may hold one.
qsizetype stringEnd(const QString &text, qsizetype from)
{
    const QChar quote = text[from];
    const QString longQuote(3, quote);
    const bool isLong = QStringView(text).sliced(from).startsWith(longQuote);
    const qsizetype width = isLong ? 3 : 1;
    for (qsizetype i = from + width; i < text.size(); ++i) {
        if (text[i] == u'\\')
            ++i;
        else if (text[i] == quote && (!isLong || QStringView(text).sliced(i).startsWith(longQuote)))
            return i + width;
    }
    return from;
}

bool beginsWithScheme(QStringView text)
{
    const qsizetype colon = text.indexOf(u':');
    if (colon < 1 || !text.front().isLetter())
        return false;
    for (const QChar c : text.first(colon)) {
        if (!c.isLetterOrNumber() && c != u'+' && c != u'-' && c != u'.')
            return false;
    }
    return true;
}

// The end of the IRI that begins at `from`, or `from` when the '<' is an operator. Escaped brackets belong to
// the IRI, and so do blanks once it begins with a scheme: names out of firmware hold them.
qsizetype iriEnd(const QString &text, qsizetype from)
{
    const bool mayHoldBlanks = beginsWithScheme(QStringView(text).sliced(from + 1));
    for (qsizetype i = from + 1; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'>')
            return i + 1;
        if (c == u'\\')
            ++i;
        else if (c == u'<' || c == u'\n' || c == u'\r' || (!mayHoldBlanks && (c.isSpace() || c == u'"')))
            break;
    }
    return from;
}

qsizetype wordEnd(const QString &text, qsizetype from)
{
    qsizetype end = from;
    while (end < text.size() && isWordChar(text[end]))
        ++end;
    // A dot at the end closes the triple.
    while (end > from + 1 && text[end - 1] == u'.')
        --end;
    return end;
}

qsizetype variableEnd(const QString &text, qsizetype from)
{
    qsizetype end = from + 1;
    while (end < text.size() && isNameChar(text[end]))
        ++end;
    return end;
}

Token tokenAt(const QString &text, qsizetype from)
{
    const QChar c = text[from];
    const auto cut = [&](Kind kind, qsizetype end) { return Token{kind, text.sliced(from, end - from)}; };
    if (c.isSpace() || c == u'#')
        return cut(Kind::Space, spaceEnd(text, from));
    if (c == u'"' || c == u'\'') {
        const qsizetype end = stringEnd(text, from);
        return end > from ? cut(Kind::String, end) : cut(Kind::Broken, text.size());
    }
    if (c == u'<') {
        if (const qsizetype end = iriEnd(text, from); end > from)
            return cut(Kind::Iri, end);
    }
    if (c == u'?' || c == u'$') {
        if (const qsizetype end = variableEnd(text, from); end > from + 1)
            return cut(Kind::Variable, end);
    }
    if (isNameChar(c) || c == u':')
        return cut(Kind::Word, wordEnd(text, from));
    return cut(Kind::Sign, from + 1);
}

struct Escape
{
    char16_t letter;
    char16_t stands;
};
constexpr Escape escapes[] = {{u't', u'\t'}, {u'b', u'\b'}, {u'n', u'\n'}, {u'r', u'\r'},
                              {u'f', u'\f'}, {u'"', u'"'},  {u'\\', u'\\'}};

// \u and four, \U and eight hexadecimal digits at `at`; 0 when there are none.
char32_t codePoint(QStringView text, qsizetype at)
{
    const qsizetype digits = text[at] == u'u' ? 4 : text[at] == u'U' ? 8 : 0;
    if (digits == 0 || at + digits >= text.size())
        return 0;
    bool isNumber = false;
    const uint code = text.sliced(at + 1, digits).toUInt(&isNumber, 16);
    return isNumber && code <= QChar::LastValidCodePoint ? code : 0;
}

} // namespace

QList<Token> tokensOf(const QString &text)
{
    QList<Token> tokens;
    for (qsizetype i = 0; i < text.size(); i += tokens.constLast().text.size())
        tokens.append(tokenAt(text, i));
    return tokens;
}

QString textOf(const QList<Token> &tokens)
{
    QString text;
    for (const Token &token : tokens)
        text += token.text;
    return text;
}

QString stringContent(const QString &token)
{
    const bool isLong = token.size() >= 6 && token[1] == token[0] && token[2] == token[0];
    const qsizetype width = isLong ? 3 : 1;
    const QStringView inner = QStringView(token).sliced(width).chopped(width);
    QString content;
    content.reserve(inner.size());
    for (qsizetype i = 0; i < inner.size(); ++i) {
        if (inner[i] != u'\\' || i + 1 == inner.size()) {
            content += inner[i];
            continue;
        }
        ++i;
        if (const char32_t code = codePoint(inner, i)) {
            content += QString::fromUcs4(&code, 1);
            i += inner[i] == u'u' ? 4 : 8;
            continue;
        }
        const auto *escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [&](const Escape &e) { return inner[i] == QChar(e.letter); });
        if (escape != std::end(escapes))
            content += QChar(escape->stands);
        else if (inner[i] == u'\'')
            content += inner[i];
        else
            content += u"\\"_s + inner[i];
    }
    return content;
}

QString stringToken(const QString &content)
{
    QString token = u"\""_s;
    token.reserve(content.size() + 2);
    for (const QChar c : content) {
        const auto *escape = std::find_if(std::begin(escapes), std::end(escapes),
                                          [&](const Escape &e) { return c == QChar(e.stands); });
        if (escape != std::end(escapes))
            token += u"\\"_s + QChar(escape->letter);
        else if (!c.isNull()) // the store ends a text at it
            token += c;
    }
    return token + u'"';
}

} // namespace sparql
