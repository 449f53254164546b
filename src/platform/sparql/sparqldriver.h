// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqlconnection.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

// The back end of one connection.
class SparqlDriver : public QObject
{
    Q_OBJECT

public:
    // The result's parent is `owner`.
    virtual SparqlResult *exec(const SparqlQuery &query, QObject *owner) = 0;

Q_SIGNALS:
    void reset();
    // The store stopped answering, or answers again. Only changes are told; a driver counts as reachable
    // until it says otherwise. One whose store cannot go away alone never says anything.
    void reachableChanged(bool reachable);
};

// Drivers by name, process-wide. A test registers its own under a built-in name to record texts and to answer
// late, with errors, or never; unregistering brings the built-in one back.
class SparqlDriverRegistry
{
public:
    using Factory = std::function<std::unique_ptr<SparqlDriver>(const SparqlConnectionOptions &)>;

    static void registerDriver(const QString &name, Factory factory);
    static void unregisterDriver(const QString &name);
    [[nodiscard]] static QStringList driverNames();
    [[nodiscard]] static std::unique_ptr<SparqlDriver> create(const QString &name,
                                                              const SparqlConnectionOptions &options);
};

// At quit: waits in a nested event loop, at most `timeoutMs`, until every update sent through any driver of
// this process is acknowledged. Called by start-up after the main loop ended. True when nothing is
// outstanding.
bool sparqlWaitForUpdates(int timeoutMs = 2000);
