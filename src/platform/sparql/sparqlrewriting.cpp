// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqlrewriting.h"

#include "fileuri.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace sparql {

namespace {

using Kind = Token::Kind;

bool mayStandInIri(char c)
{
    return static_cast<unsigned char>(c) > 0x20 && c != '\x7f' && !QByteArrayView("<>\"{}|^`\\").contains(c);
}

bool isMisunderstood(QStringView variable)
{
    return variable.startsWith(u'_') || variable.startsWith(u"v_");
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

// The word at `at`, and the group behind it: both, and `at` behind them. Empty when something else stands
// there.
Tokens takeGroup(const Tokens &tokens, qsizetype &at, QStringView word)
{
    const qsizetype first = significant(tokens, at);
    if (first >= tokens.size() || !tokens[first].isKeyword(word))
        return {};
    const qsizetype brace = significant(tokens, first + 1);
    const qsizetype last = closingSign(tokens, brace, u'{', u'}');
    if (last < 0)
        return {};
    at = last + 1;
    return tokens.sliced(brace, last - brace + 1);
}

} // namespace

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

bool hasIllegalIri(const Tokens &tokens)
{
    return std::any_of(tokens.begin(), tokens.end(), [](const Token &token) {
        return token.kind == Kind::Iri && legalIri(token.text) != token.text;
    });
}

bool isAbsoluteIri(const QString &token)
{
    static const QRegularExpression scheme(u"^<[A-Za-z][A-Za-z0-9+.-]*:"_s);
    return scheme.match(token).hasMatch() && legalIri(token) == token;
}

qsizetype significant(const Tokens &tokens, qsizetype from)
{
    while (from < tokens.size() && tokens[from].kind == Kind::Space)
        ++from;
    return from;
}

qsizetype closingSign(const Tokens &tokens, qsizetype from, char16_t opening, char16_t closing)
{
    int depth = 0;
    for (qsizetype i = from; i < tokens.size(); ++i) {
        if (tokens[i].isSign(opening))
            ++depth;
        else if (tokens[i].isSign(closing))
            --depth;
        if (depth <= 0)
            return depth == 0 && i > from ? i : -1;
    }
    return -1;
}

qsizetype groupStart(const Tokens &tokens, qsizetype at)
{
    int depth = 0;
    for (qsizetype i = at - 1; i >= 0; --i) {
        if (tokens[i].isSign(u'}'))
            ++depth;
        else if (tokens[i].isSign(u'{') && --depth < 0)
            return i;
    }
    return -1;
}

bool isWordAt(const Tokens &tokens, qsizetype at, QLatin1StringView word)
{
    return at < tokens.size() && tokens[at].kind == Kind::Word && tokens[at].text == word;
}

bool isKeywordAt(const Tokens &tokens, qsizetype at, QStringView word)
{
    return at < tokens.size() && tokens[at].isKeyword(word);
}

bool isSignAt(const Tokens &tokens, qsizetype at, char16_t sign)
{
    return at < tokens.size() && tokens[at].isSign(sign);
}

qsizetype replaceTokens(Tokens &tokens, qsizetype at, qsizetype count, const QString &text)
{
    const Tokens inserted = tokensOf(text);
    tokens = tokens.first(at) + inserted + tokens.sliced(at + count);
    return at + inserted.size();
}

QHash<QString, int> variableCounts(const Tokens &tokens)
{
    QHash<QString, int> counts;
    for (const Token &token : tokens) {
        if (token.kind == Kind::Variable)
            ++counts[token.text.sliced(1)];
    }
    return counts;
}

QString freeVariable(const Tokens &tokens, QString name)
{
    const QHash<QString, int> taken = variableCounts(tokens);
    while (taken.contains(name))
        name += u'x';
    return u'?' + name;
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
    for (Token &token : tokens) {
        if (token.kind == Kind::Variable && isMisunderstood(QStringView(token.text).sliced(1)))
            token.text.insert(1, prefix);
    }
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

std::optional<OldUpdate> oldUpdate(const Tokens &tokens)
{
    OldUpdate update;
    qsizetype at = 0;
    update.remove = takeGroup(tokens, at, u"DELETE");
    update.where = takeGroup(tokens, at, u"WHERE");
    update.insert = takeGroup(tokens, at, u"INSERT");
    const bool isWhole = !update.remove.isEmpty() && !update.where.isEmpty() && !update.insert.isEmpty()
        && significant(tokens, at) == tokens.size();
    return isWhole ? std::optional(update) : std::nullopt;
}

WordsRead canonicalizeWords(Tokens &tokens)
{
    WordsRead read;
    bool afterUrl = false;
    for (Token &token : tokens) {
        if (token.kind == Kind::Space)
            continue;
        if (token.kind == Kind::Iri) {
            token.text = legalIri(token.text);
            read.iris.insert(token.text);
        } else if (token.kind == Kind::String) {
            read.namesAddress = read.namesAddress || afterUrl;
            const QString content = stringContent(token.text);
            token.text = stringToken(afterUrl ? canonicalFileUri(content) : content);
        } else if (token.kind == Kind::Word && token.text == "tracker:added"_L1) {
            token.text = u"nrl:added"_s;
        }
        afterUrl = token.kind == Kind::Word && token.text == "nie:url"_L1;
    }
    return read;
}

} // namespace sparql
