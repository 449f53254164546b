// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqltokens.h"

using namespace Qt::Literals::StringLiterals;

namespace {

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c.isSurrogate() || u"_-:?$@%"_s.contains(c);
}

class Reader
{
public:
    explicit Reader(const QString &text) : m_text(text) { }

    QList<SparqlToken> read();

private:
    [[nodiscard]] QChar at(qsizetype position) const
    {
        return position < m_text.size() ? m_text[position] : QChar();
    }
    bool readIri();
    void readLiteral(QChar quote);
    void readEscape(QString *value);
    void readWord();

    const QString &m_text;
    qsizetype m_position = 0;
    QList<SparqlToken> m_tokens;
};

QList<SparqlToken> Reader::read()
{
    while (m_position < m_text.size()) {
        const QChar c = m_text[m_position];
        if (c.isSpace()) {
            ++m_position;
        } else if (c == u'#') {
            const qsizetype end = m_text.indexOf(u'\n', m_position);
            m_position = end < 0 ? m_text.size() : end;
        } else if (c == u'"' || c == u'\'') {
            readLiteral(c);
        } else if (isWordCharacter(c)) {
            readWord();
        } else if (c != u'<' || !readIri()) {
            m_tokens.append({SparqlToken::Kind::Mark, QString(c)});
            ++m_position;
        }
    }
    return m_tokens;
}

// "<" is also an operator: an IRI holds no blank and no bracket before its end.
bool Reader::readIri()
{
    qsizetype end = m_position + 1;
    while (end < m_text.size() && m_text[end] > u' ' && !u"<>\"{}|^`"_s.contains(m_text[end]))
        ++end;
    if (at(end) != u'>')
        return false;
    m_tokens.append({SparqlToken::Kind::Iri, m_text.mid(m_position + 1, end - m_position - 1)});
    m_position = end + 1;
    return true;
}

void Reader::readLiteral(QChar quote)
{
    const bool isLong = at(m_position + 1) == quote && at(m_position + 2) == quote;
    const QString end = QString(isLong ? 3 : 1, quote);
    m_position += end.size();
    QString value;
    while (m_position < m_text.size() && !QStringView(m_text).mid(m_position).startsWith(end)) {
        if (m_text[m_position] == u'\\')
            readEscape(&value);
        else
            value += m_text[m_position++];
    }
    m_position += end.size();
    m_tokens.append({SparqlToken::Kind::Literal, value});
}

void Reader::readEscape(QString *value)
{
    const QChar kind = at(m_position + 1);
    m_position += 2;
    switch (kind.unicode()) {
    case u't':
        *value += u'\t';
        return;
    case u'n':
        *value += u'\n';
        return;
    case u'r':
        *value += u'\r';
        return;
    case u'b':
        *value += u'\b';
        return;
    case u'f':
        *value += u'\f';
        return;
    case u'u':
    case u'U': {
        const int digits = kind == u'u' ? 4 : 8;
        const char32_t code = QStringView(m_text).mid(m_position, digits).toUInt(nullptr, 16);
        *value += QString::fromUcs4(&code, 1);
        m_position += digits;
        return;
    }
    default:
        *value += kind;
    }
}

void Reader::readWord()
{
    const qsizetype begin = m_position;
    // A full stop belongs to the word only when the word goes on behind it.
    while (isWordCharacter(at(m_position)) || (at(m_position) == u'.' && isWordCharacter(at(m_position + 1))))
        ++m_position;
    m_tokens.append({SparqlToken::Kind::Word, m_text.mid(begin, m_position - begin)});
}

} // namespace

QList<SparqlToken> sparqlTokens(const QString &text)
{
    return Reader(text).read();
}
