// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// One SPARQL text and its kind. The text is sent as it stands; a driver adapts it to the installed store.
class SparqlQuery
{
public:
    enum StatementType { SelectStatement, UpdateStatement };

    SparqlQuery() = default;
    explicit SparqlQuery(const QString &text, StatementType type = SelectStatement)
        : m_text(text),
          m_type(type)
    {
    }

    [[nodiscard]] QString text() const { return m_text; }
    [[nodiscard]] StatementType type() const { return m_type; }

private:
    QString m_text;
    StatementType m_type = SelectStatement;
};
