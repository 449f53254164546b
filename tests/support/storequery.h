// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/sparql/sparqlconnection.h"
#include "platform/sparql/sparqlresult.h"

#include <QSignalSpy>
#include <QStringList>

#include <memory>

// Asking the store in a test, and waiting for the answer.
namespace storequery {

struct Answer
{
    QList<QStringList> rows;
    QString error; // "no answer" when none came
    friend bool operator==(const Answer &, const Answer &) = default;
};

inline Answer read(SparqlResult *result, int columns)
{
    Answer answer;
    answer.error = result->hasError() ? result->errorMessage() : QString();
    while (result->next()) {
        QStringList row;
        for (int column = 0; column < columns; ++column)
            row.append(result->stringValue(column));
        answer.rows.append(row);
    }
    return answer;
}

inline Answer ask(SparqlConnection &connection, const SparqlQuery &query, int columns = 1,
                  int timeoutMs = 10000)
{
    const std::unique_ptr<SparqlResult> result(connection.exec(query));
    QSignalSpy finished(result.get(), &SparqlResult::finished);
    if (!finished.wait(timeoutMs))
        return {{}, QStringLiteral("no answer")};
    return read(result.get(), columns);
}

inline Answer select(SparqlConnection &connection, const QString &text, int columns = 1)
{
    return ask(connection, SparqlQuery(text), columns);
}

inline Answer update(SparqlConnection &connection, const QString &text)
{
    return ask(connection, SparqlQuery(text, SparqlQuery::UpdateStatement));
}

// As the application writes an update: the value escaped for a string, then the names.
inline SparqlQuery propertyUpdate(QString text, QString value, const QString &urn, const QString &property)
{
    value.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
    text.replace(QStringLiteral("_VALUE_"), value);
    text.replace(QStringLiteral("_URN_"), urn);
    text.replace(QStringLiteral("_PROPERTY_"), property);
    return SparqlQuery(text, SparqlQuery::UpdateStatement);
}

inline QString filled(QString text, const QString &placeholder, const QString &value)
{
    return text.replace(placeholder, value);
}

} // namespace storequery
