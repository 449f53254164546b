// SPDX-License-Identifier: GPL-3.0-or-later
#include "unavailabledriver.h"

#include "failedresult.h"

SparqlResult *UnavailableDriver::exec(const SparqlQuery &query, QObject *owner)
{
    Q_UNUSED(query)
    return new FailedResult(m_message, owner);
}
