// SPDX-License-Identifier: GPL-3.0-or-later
#include "updatequeue.h"

#include "sparqllog.h"
#include "storelink.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

// An update that takes the service down each time is not tried for ever.
constexpr int mostAttempts = 3;

} // namespace

struct UpdateQueue::Update
{
    QByteArray text;
    QSet<QString> iris;
    std::function<void(StatementOutcome)> done;
    std::shared_ptr<StoreLink> link; // stays until this update is through
    UpdateTicket ticket;
    int attempts = 0;
};

UpdateQueue::UpdateQueue(StoreLink &link) : m_link(link)
{
    connect(&link, &StoreLink::up, this, &UpdateQueue::sendNext);
}

UpdateQueue::~UpdateQueue() = default;

void UpdateQueue::append(const QString &text, const QSet<QString> &iris,
                         std::function<void(StatementOutcome)> done)
{
    auto update = std::make_unique<Update>();
    update->text = text.toUtf8();
    update->iris = iris;
    update->done = std::move(done);
    update->link = m_link.shared_from_this();
    m_updates.push_back(std::move(update));
    sendNext();
}

bool UpdateQueue::concerns(const QSet<QString> &iris) const
{
    return std::any_of(m_updates.begin(), m_updates.end(),
                       [&](const std::unique_ptr<Update> &update) { return update->iris.intersects(iris); });
}

void UpdateQueue::sendNext()
{
    if (m_underWay || m_updates.empty() || !m_link.isUp())
        return;
    m_underWay = true;
    Update &update = *m_updates.front();
    ++update.attempts;
    struct Call
    {
        QPointer<UpdateQueue> queue;
        sparql::GRef<GDBusConnection> bus;
    };
    tracker_sparql_connection_update_async(
        m_link.endpoint(), update.text.constData(), nullptr,
        [](GObject *source, GAsyncResult *answer, gpointer data) {
            const std::unique_ptr<Call> call(static_cast<Call *>(data));
            sparql::GFailure failure;
            tracker_sparql_connection_update_finish(TRACKER_SPARQL_CONNECTION(source), answer, &failure);
            StatementOutcome outcome;
            outcome.error = failure.message();
            outcome.isLost = failure && g_dbus_connection_is_closed(call->bus.get());
            if (call->queue)
                call->queue->answered(std::move(outcome));
        },
        new Call{this, sparql::GRef<GDBusConnection>::shared(m_link.bus())});
}

void UpdateQueue::answered(StatementOutcome outcome)
{
    m_underWay = false;
    if (outcome.isLost && m_updates.front()->attempts < mostAttempts) {
        sendNext();
        return;
    }
    const std::unique_ptr<Update> update = std::move(m_updates.front());
    m_updates.pop_front();
    if (!outcome.error.isNull())
        qCWarning(lcSparql).noquote() << "the store did not take an update:" << outcome.error;
    sendNext();
    Q_EMIT acknowledged();
    update->done(std::move(outcome));
}
