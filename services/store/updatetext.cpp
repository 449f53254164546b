// SPDX-License-Identifier: GPL-3.0-or-later
#include "updatetext.h"

#include "sparqltokens.h"

using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<ValueWrite::Property> propertyOf(const SparqlToken &token)
{
    const bool isIri = token.kind == SparqlToken::Kind::Iri;
    if (!isIri && token.kind != SparqlToken::Kind::Word)
        return std::nullopt;
    if (token.text == (isIri ? u"http://tracker.api.gnome.org/ontology/v3/nie#title"_s : u"nie:title"_s))
        return ValueWrite::Property::Title;
    if (token.text == (isIri ? u"http://tracker.api.gnome.org/ontology/v3/nmm#runTime"_s : u"nmm:runTime"_s))
        return ValueWrite::Property::RunTime;
    return std::nullopt;
}

// The triples of one insert part, term by term.
class TripleReader
{
public:
    explicit TripleReader(QList<ValueWrite> *writes) : m_writes(writes) { }

    void add(const SparqlToken &token)
    {
        if (token.isMark(u'.') || token.isMark(u'{') || token.isMark(u'}'))
            finish(0);
        else if (token.isMark(u';'))
            finish(1);
        else if (token.isMark(u','))
            finish(2);
        else
            m_terms.append(token);
    }

private:
    void finish(int kept)
    {
        if (m_terms.size() >= 3) {
            const SparqlToken &subject = m_terms[0];
            const SparqlToken &object = m_terms[2];
            const auto property = propertyOf(m_terms[1]);
            bool isNumber = false;
            (void)object.text.toLongLong(&isNumber);
            const bool isValue = object.kind == SparqlToken::Kind::Literal
                || (object.kind == SparqlToken::Kind::Word && isNumber);
            if (property && isValue && subject.kind == SparqlToken::Kind::Iri)
                m_writes->append({subject.text, *property, object.text});
        }
        m_terms.resize(qMin<qsizetype>(kept, m_terms.size()));
    }

    QList<ValueWrite> *m_writes;
    QList<SparqlToken> m_terms;
};

} // namespace

std::optional<QString> refusalOf(const QString &text)
{
    const QList<SparqlToken> tokens = sparqlTokens(text);
    for (const SparqlToken &token : tokens) {
        if (token.isKeyword("SERVICE"_L1) || token.isKeyword("LOAD"_L1))
            return token.text.toUpper() + u" is not allowed here"_s;
    }
    return std::nullopt;
}

QList<ValueWrite> valueWritesOf(const QString &text)
{
    QList<ValueWrite> writes;
    TripleReader triples(&writes);
    bool inserting = false;
    int depth = 0;
    const QList<SparqlToken> tokens = sparqlTokens(text);
    for (const SparqlToken &token : tokens) {
        if (depth == 0 && token.kind == SparqlToken::Kind::Word) {
            if (token.isKeyword("INSERT"_L1))
                inserting = true;
            else if (token.isKeyword("DELETE"_L1) || token.isKeyword("WHERE"_L1))
                inserting = false;
        }
        if (token.isMark(u'{'))
            ++depth;
        if (inserting && depth > 0)
            triples.add(token);
        if (token.isMark(u'}'))
            --depth;
    }
    return writes;
}
