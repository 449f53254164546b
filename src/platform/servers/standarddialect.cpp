// SPDX-License-Identifier: GPL-3.0-or-later
#include "standarddialect.h"

#include "idfilter.h"
#include "standardprojection.h"

#include <platform/sparql/fileuri.h>
#include <platform/sparql/sparqlrewriting.h>

#include <QHash>

#include <algorithm>
#include <iterator>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = sparql::Token::Kind;
using sparql::Tokens;

struct Namespace
{
    QStringView prefix;
    QStringView iri;
};
constexpr Namespace namespaces[] = {
    {u"nfo", u"http://tracker.api.gnome.org/ontology/v3/nfo#"},
    {u"nie", u"http://tracker.api.gnome.org/ontology/v3/nie#"},
    {u"nmm", u"http://tracker.api.gnome.org/ontology/v3/nmm#"},
    {u"nrl", u"http://tracker.api.gnome.org/ontology/v3/nrl#"},
    {u"xsd", u"http://www.w3.org/2001/XMLSchema#"},
};

constexpr auto positionName = "nmm:runTime"_L1;
const QString positionIri = QStringLiteral("http://tracker.api.gnome.org/ontology/v3/nmm#runTime");

// A text of five million characters ended a server; one of a million did not.
constexpr qsizetype longestUpdate = 1000000;
constexpr auto playCountName = "nie:usageCounter"_L1;
constexpr auto lastPlayedName = "nie:contentAccessed"_L1;
constexpr auto dateTimeType = "^^<http://www.w3.org/2001/XMLSchema#dateTime>"_L1;

QString bracketed(const QString &iri)
{
    return u'<' + iri + u'>';
}

// The first brace of a query: where its pattern begins.
qsizetype patternStart(const Tokens &tokens)
{
    const auto brace = std::find_if(tokens.begin(), tokens.end(),
                                    [](const sparql::Token &token) { return token.isSign(u'{'); });
    return brace - tokens.begin();
}

// Every way in which data hold an address.
QStringList addressForms(const QString &address)
{
    QStringList forms;
    for (const QString &spelling : QStringList{canonicalFileUri(address), address}) {
        const QString literal = sparql::stringToken(spelling);
        const QString iri = sparql::legalIri(bracketed(spelling));
        forms << literal << literal + u"^^xsd:string"_s << literal + u"^^xsd:anyURI"_s;
        if (sparql::isAbsoluteIri(iri))
            forms << iri;
    }
    forms.removeDuplicates();
    return forms;
}

// The string after nie:url at `at` becomes a variable with every form of the address.
void findEveryForm(Tokens &tokens, qsizetype at)
{
    const QString variable = sparql::freeVariable(tokens, u"address"_s);
    const QStringList forms = addressForms(sparql::stringContent(tokens[at].text));
    tokens[at] = {Kind::Variable, variable};
    sparql::replaceTokens(tokens, sparql::groupStart(tokens, at) + 1, 0,
                          u" VALUES %1 { %2 }"_s.arg(variable, forms.join(u' ')));
}

// One resource that matches two forms, or a server to which two forms are the same: one row all the same.
void makeDistinct(Tokens &tokens)
{
    const qsizetype select = sparql::significant(tokens, 0);
    if (sparql::isKeywordAt(tokens, select, u"SELECT"))
        sparql::replaceTokens(tokens, select + 1, 0, u" DISTINCT"_s);
}

bool adaptAddresses(Tokens &tokens)
{
    bool found = false;
    bool afterUrl = false;
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        if (tokens[i].kind == Kind::Space)
            continue;
        if (afterUrl && tokens[i].kind == Kind::String && sparql::groupStart(tokens, i) >= 0) {
            findEveryForm(tokens, i);
            found = true;
        }
        afterUrl = sparql::isWordAt(tokens, i, "nie:url"_L1);
    }
    if (found)
        makeDistinct(tokens);
    return found;
}

void leaveOutUnboundOrder(Tokens &tokens)
{
    const QHash<QString, int> counts = sparql::variableCounts(tokens);
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const qsizetype by = sparql::significant(tokens, i + 1);
        const qsizetype variable = sparql::significant(tokens, by + 1);
        if (!tokens[i].isKeyword(u"ORDER") || !sparql::isKeywordAt(tokens, by, u"BY")
            || variable >= tokens.size() || tokens[variable].kind != Kind::Variable
            || counts.value(tokens[variable].text.sliced(1)) > 1)
            continue;
        tokens.remove(i, variable - i + 1);
        return;
    }
}

void restrictToGraph(Tokens &tokens, const QString &graph)
{
    if (graph.isEmpty())
        return;
    qsizetype at = patternStart(tokens);
    for (qsizetype i = 0; i < at; ++i) {
        if (tokens[i].isKeyword(u"WHERE"))
            at = i;
    }
    sparql::replaceTokens(tokens, at, 0, u"FROM %1 "_s.arg(bracketed(graph)));
}

// A position and a count go in as numbers and a time as a time, for others who read the data. What is no
// number stays what it is.
void writeTypedValues(Tokens &tokens)
{
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const qsizetype value = sparql::significant(tokens, i + 1);
        if (value >= tokens.size() || tokens[value].kind != Kind::String)
            continue;
        if (sparql::isWordAt(tokens, i, lastPlayedName))
            tokens[value] = {Kind::Word, tokens[value].text + dateTimeType};
        if (!sparql::isWordAt(tokens, i, positionName) && !sparql::isWordAt(tokens, i, playCountName))
            continue;
        bool isNumber = false;
        const qulonglong number = sparql::stringContent(tokens[value].text).toULongLong(&isNumber);
        if (isNumber)
            tokens[value] = {Kind::Word, QString::number(number)};
    }
}

void mapPosition(Tokens &tokens, const QString &property)
{
    if (property.isEmpty() || property == positionIri)
        return;
    for (sparql::Token &token : tokens) {
        if (token.kind == Kind::Word && token.text == positionName)
            token = {Kind::Iri, bracketed(property)};
    }
}

QString declarations(const Tokens &tokens)
{
    QString text;
    for (const Namespace &space : namespaces) {
        const QString prefix = space.prefix.toString() + u':';
        const bool isUsed = std::any_of(tokens.begin(), tokens.end(), [&](const sparql::Token &token) {
            return token.kind == Kind::Word && token.text.startsWith(prefix);
        });
        if (isUsed)
            text += u"PREFIX %1 <%2>\n"_s.arg(prefix, space.iri);
    }
    return text;
}

QString finished(Tokens tokens, const StandardDialectOptions &options)
{
    mapPosition(tokens, options.positionProperty);
    sparql::renameVariables(tokens);
    return declarations(tokens) + sparql::textOf(tokens);
}

StandardStatement refused(const QString &error)
{
    StandardStatement statement;
    statement.action = StandardStatement::Action::Refuse;
    statement.error = error;
    return statement;
}

// The subject of a group that begins with an IRI; empty when it begins with anything else.
QString subjectOf(const Tokens &group)
{
    const qsizetype first = sparql::significant(group, 1);
    return first < group.size() && group[first].kind == Kind::Iri ? group[first].text : QString();
}

// When an update is done: what is inserted out of what was found needs something found, what is inserted as
// it stands needs its video. Empty when that is neither.
Tokens condition(const sparql::OldUpdate &update)
{
    if (!sparql::variableCounts(update.insert).isEmpty())
        return update.where;
    const QString subject = subjectOf(update.insert);
    if (subject.isEmpty())
        return {};
    return sparql::tokensOf(u"{ %1 a nmm:Video . OPTIONAL "_s.arg(subject)) + update.where
        + sparql::tokensOf(u" }"_s);
}

StandardStatement adaptUpdate(Tokens tokens, const StandardDialectOptions &options)
{
    StandardStatement statement;
    if (sparql::hasIllegalIri(tokens))
        return refused(u"the update names an identifier that cannot be"_s);
    statement.iris = sparql::canonicalizeWords(tokens).iris;
    if (statement.iris.contains(u"<>"_s)) {
        statement.action = StandardStatement::Action::Drop;
        return statement;
    }
    if (!std::all_of(statement.iris.begin(), statement.iris.end(), sparql::isAbsoluteIri))
        return refused(u"the update names an identifier that cannot be"_s);
    std::optional<sparql::OldUpdate> update = sparql::oldUpdate(tokens);
    const Tokens where = update ? condition(*update) : Tokens();
    if (where.isEmpty())
        return refused(u"the update has a form that is not known"_s);
    writeTypedValues(update->insert);
    Tokens adapted = sparql::tokensOf(u"DELETE "_s) + update->remove + sparql::tokensOf(u" INSERT "_s)
        + update->insert + sparql::tokensOf(u" WHERE "_s) + where;
    if (!options.graph.isEmpty())
        adapted = sparql::tokensOf(u"WITH %1 "_s.arg(bracketed(options.graph))) + adapted;
    statement.text = finished(adapted, options);
    return statement.text.size() > longestUpdate ? refused(u"the update is too long"_s) : statement;
}

StandardStatement adaptSelect(Tokens tokens, const StandardDialectOptions &options, const ResourceIds &ids)
{
    StandardStatement statement;
    Tokens plain = tokens;
    statement.iris = sparql::canonicalizeWords(plain).iris;
    if (statement.iris.contains(u"<>"_s)) {
        statement.action = StandardStatement::Action::AnswerEmpty;
        return statement;
    }
    // The address is looked for as it is given too: before it is spelled anew.
    statement.isAddressLookup = adaptAddresses(tokens);
    static_cast<void>(sparql::canonicalizeWords(tokens));
    sparql::leaveOutUnrelatedOptionals(tokens);
    leaveOutUnboundOrder(tokens);
    const StandardProjection projection = adaptProjection(tokens);
    statement.idColumns = projection.idColumns;
    statement.isOneRowEach = projection.namesResource;
    restrictToGraph(tokens, options.graph);
    const std::optional<IdFilter> filter = idFilter(tokens, ids);
    if (!filter) {
        statement.text = finished(tokens, options);
        return statement;
    }
    statement.iris.unite(QSet<QString>(filter->iris.begin(), filter->iris.end()));
    for (qsizetype i = 0; i < filter->iris.size(); i += idsPerText) {
        Tokens part = tokens;
        beginWithIris(part, *filter, filter->iris.mid(i, idsPerText));
        statement.furtherTexts.append(finished(part, options));
    }
    if (statement.furtherTexts.isEmpty())
        statement.action = StandardStatement::Action::AnswerEmpty;
    else
        statement.text = statement.furtherTexts.takeFirst();
    return statement;
}

} // namespace

StandardStatement adaptToStandard(const SparqlQuery &query, const StandardDialectOptions &options,
                                  ResourceIds &ids)
{
    if (!options.graph.isEmpty() && !sparql::isAbsoluteIri(bracketed(options.graph)))
        return refused(u"the graph that is set is no identifier: %1"_s.arg(options.graph));
    if (!options.positionProperty.isEmpty() && !sparql::isAbsoluteIri(bracketed(options.positionProperty)))
        return refused(
            u"the property that is set for positions is no identifier: %1"_s.arg(options.positionProperty));
    const Tokens tokens = sparql::tokensOf(query.text());
    return query.type() == SparqlQuery::UpdateStatement ? adaptUpdate(tokens, options)
                                                        : adaptSelect(tokens, options, ids);
}
