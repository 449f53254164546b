// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "outstandingupdates.h"
#include "statementoutcome.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <deque>
#include <functional>
#include <memory>

class StoreLink;

// The updates of this process, in the order given, one at a time with the service. What was under way when
// the service went away is sent again when it is back: the program's updates set a value, twice does no harm.
class UpdateQueue : public QObject
{
    Q_OBJECT

public:
    explicit UpdateQueue(StoreLink &link);
    ~UpdateQueue() override;

    // `done` is called through the event loop when the store has acknowledged or refused it. The update goes
    // out also when everybody who asked for it is gone.
    void append(const QString &text, const QSet<QString> &iris, std::function<void(StatementOutcome)> done);

    // True while an update that names one of these IRIs is not acknowledged: a query about it has to wait.
    [[nodiscard]] bool concerns(const QSet<QString> &iris) const;

Q_SIGNALS:
    // An update is through: queries that waited for it may go.
    void acknowledged();

private:
    struct Update;

    void sendNext();
    void answered(StatementOutcome outcome);

    StoreLink &m_link;
    std::deque<std::unique_ptr<Update>> m_updates;
    bool m_underWay = false;
};
