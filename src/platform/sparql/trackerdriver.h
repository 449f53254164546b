// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cursorfetch.h"
#include "sparqldriver.h"

#include <QSet>
#include <QTimer>

#include <deque>
#include <memory>

class FolderReader;
class StoreLink;
class TableResult;

// The store service, through the store library. Updates always go to the service; queries go there too, or to
// the database folder, which is read in this process.
class TrackerDriver : public SparqlDriver
{
    Q_OBJECT

public:
    enum class Reading { Service, Folder };

    explicit TrackerDriver(Reading reading);
    ~TrackerDriver() override;

    SparqlResult *exec(const SparqlQuery &query, QObject *owner) override;

private:
    struct Select;

    void answerWithoutStoreWhenLate(TableResult *result);
    void sendWaiting();
    bool maySend(const Select &select) const;
    void send(const std::shared_ptr<Select> &select);
    void answered(const std::shared_ptr<Select> &select, StatementOutcome outcome);

    std::shared_ptr<StoreLink> m_link;
    std::unique_ptr<FolderReader> m_folder;
    std::deque<std::shared_ptr<Select>> m_waiting;
    QTimer m_unserved; // runs while the service has no database to answer from
    int m_underWay = 0;
};
