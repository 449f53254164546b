// SPDX-License-Identifier: GPL-3.0-or-later
#include "sparqlconnection.h"

#include "failedresult.h"
#include "sparqldriver.h"
#include "sparqllog.h"

using namespace Qt::Literals::StringLiterals;

SparqlConnection::SparqlConnection(const QString &driverName, const SparqlConnectionOptions &options,
                                   QObject *parent)
    : QObject(parent),
      m_driverName(driverName),
      m_driver(SparqlDriverRegistry::create(driverName, options))
{
    if (m_driver)
        connect(m_driver.get(), &SparqlDriver::reset, this, &SparqlConnection::reset);
    else
        qCWarning(lcSparql).noquote() << "there is no store driver named" << driverName;
}

SparqlConnection::~SparqlConnection()
{
    // Results first: they may still hold on to what the driver owns.
    const QList<SparqlResult *> results = findChildren<SparqlResult *>(Qt::FindDirectChildrenOnly);
    qDeleteAll(results);
}

bool SparqlConnection::isValid() const
{
    return m_driver != nullptr;
}

SparqlResult *SparqlConnection::exec(const SparqlQuery &query)
{
    if (!m_driver)
        return new FailedResult(u"there is no store driver named \"%1\""_s.arg(m_driverName), this);
    return m_driver->exec(query, this);
}
