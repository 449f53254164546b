// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqlquery.h"

#include <QObject>
#include <QString>
#include <QVariant>
#include <QHash>

#include <memory>

class SparqlDriver;
class SparqlResult;

// Options of a connection by name; a default-constructed one is what every driver starts from.
class SparqlConnectionOptions
{
public:
    void setOption(const QString &name, const QVariant &value) { m_options.insert(name, value); }
    [[nodiscard]] QVariant option(const QString &name) const { return m_options.value(name); }

private:
    QHash<QString, QVariant> m_options;
};

// A connection to a metadata store, opened by driver name: "QTRACKER", "QTRACKER_DIRECT", "QSPARQL_ENDPOINT",
// "QVIRTUOSO" or what a test registered. Opening never blocks: statements given before the store is there
// wait.
class SparqlConnection : public QObject
{
    Q_OBJECT

public:
    explicit SparqlConnection(const QString &driverName,
                              const SparqlConnectionOptions &options = SparqlConnectionOptions(),
                              QObject *parent = nullptr);
    ~SparqlConnection() override;

    // False when no driver of that name is registered; exec() then gives results with an immediate error.
    [[nodiscard]] bool isValid() const;
    [[nodiscard]] QString driverName() const { return m_driverName; }
    // False while the store is known not to answer: its machine is off, or the network is.
    [[nodiscard]] bool isReachable() const { return m_reachable; }

    // Sends a statement. The result is a child of this connection. Null only when the driver could not make
    // one.
    [[nodiscard]] SparqlResult *exec(const SparqlQuery &query);

Q_SIGNALS:
    // The store behind the connection is another than before (it was restarted, rebuilt, or came late):
    // what was read from it is stale and is to be asked for again.
    void reset();
    void reachableChanged(bool reachable);

private:
    void setReachable(bool reachable);

    QString m_driverName;
    std::unique_ptr<SparqlDriver> m_driver;
    bool m_reachable = true;
};
