// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqldriver.h"

// Stands in for a driver that this build does not have: every statement fails at once, and says why.
class UnavailableDriver : public SparqlDriver
{
    Q_OBJECT

public:
    explicit UnavailableDriver(const QString &message) : m_message(message) { }
    SparqlResult *exec(const SparqlQuery &query, QObject *owner) override;

private:
    QString m_message;
};
