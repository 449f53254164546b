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
    if (!m_driver) {
        qCWarning(lcSparql).noquote() << "there is no store driver named" << driverName;
        return;
    }
    connect(m_driver.get(), &SparqlDriver::reset, this, &SparqlConnection::reset);
    connect(m_driver.get(), &SparqlDriver::reachableChanged, this, &SparqlConnection::setReachable);
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

void SparqlConnection::setReachable(bool reachable)
{
    if (m_reachable == reachable)
        return;
    m_reachable = reachable;
    Q_EMIT reachableChanged(reachable);
}

SparqlResult *SparqlConnection::exec(const SparqlQuery &query)
{
    if (!m_driver)
        return new FailedResult(u"there is no store driver named \"%1\""_s.arg(m_driverName), this);
    return m_driver->exec(query, this);
}
