// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqlresult.h"
#include "statementoutcome.h"

// The answer to one statement whose rows came over as one table.
class TableResult : public SparqlResult
{
    Q_OBJECT

public:
    explicit TableResult(QObject *parent = nullptr) : SparqlResult(parent) { }

    [[nodiscard]] bool hasError() const override { return !m_outcome.error.isNull(); }
    [[nodiscard]] QString errorMessage() const override { return m_outcome.error; }
    [[nodiscard]] bool isFinished() const override { return m_finished; }
    bool next() override;
    [[nodiscard]] QVariant value(int column) const override { return m_outcome.table.value(m_row, column); }
    [[nodiscard]] QString stringValue(int column) const override
    {
        return m_outcome.table.text(m_row, column);
    }
    [[nodiscard]] RowTable takeTable(int columns) override;
    [[nodiscard]] int size() const override { return m_outcome.table.rows(); }

    // Ends the statement, the first time it is called. Not from within exec().
    void finish(StatementOutcome outcome);

private:
    StatementOutcome m_outcome;
    int m_row = -1;
    bool m_finished = false;
};
