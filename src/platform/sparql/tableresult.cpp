// SPDX-License-Identifier: GPL-3.0-or-later
#include "tableresult.h"

#include <utility>

bool TableResult::next()
{
    if (m_row >= size())
        return false;
    ++m_row;
    return m_row < size();
}

RowTable TableResult::takeTable(int columns)
{
    if (m_row >= 0 || m_outcome.table.columns() != columns)
        return SparqlResult::takeTable(columns);
    m_row = 0;
    return std::exchange(m_outcome.table, {});
}

void TableResult::finish(StatementOutcome outcome)
{
    if (m_finished)
        return;
    m_outcome = std::move(outcome);
    m_finished = true;
    Q_EMIT finished();
}
