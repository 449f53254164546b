// SPDX-License-Identifier: GPL-3.0-or-later
#include "tableresult.h"

bool TableResult::next()
{
    if (m_row >= size())
        return false;
    ++m_row;
    return m_row < size();
}

void TableResult::finish(StatementOutcome outcome)
{
    if (m_finished)
        return;
    m_outcome = std::move(outcome);
    m_finished = true;
    Q_EMIT finished();
}
