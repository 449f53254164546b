// SPDX-License-Identifier: GPL-3.0-or-later
#include "trackerdriver.h"

#include "dialectadapter.h"
#include "failedresult.h"
#include "folderreader.h"
#include "storelink.h"
#include "tableresult.h"
#include "updatequeue.h"

#include <QPointer>

using namespace Qt::Literals::StringLiterals;

namespace {

// A file whose record nobody can look up is played all the same.
constexpr int addressLookupMs = 2000;
// A reading occupies one of GIO's ten pool threads; others need them too.
constexpr int mostUnderWay = 4;
// A query that takes the service down each time is not tried for ever.
constexpr int mostAttempts = 3;
constexpr int unservedRetryMs = 500;

} // namespace

struct TrackerDriver::Select
{
    QString text;
    QSet<QString> iris;
    QPointer<TableResult> result;
    sparql::GRef<GCancellable> cancellable = sparql::GRef<GCancellable>::taken(g_cancellable_new());
    int attempts = 0;

    [[nodiscard]] bool isWanted() const { return result && !result->isFinished(); }
};

TrackerDriver::TrackerDriver(Reading reading) : m_link(StoreLink::shared())
{
    connect(m_link.get(), &StoreLink::up, this, &TrackerDriver::sendWaiting);
    connect(m_link.get(), &StoreLink::reset, this, [this] {
        if (m_folder)
            m_folder->reopen();
        Q_EMIT reset();
    });
    connect(&m_link->updates(), &UpdateQueue::acknowledged, this, &TrackerDriver::sendWaiting);
    m_unserved.setSingleShot(true);
    m_unserved.setInterval(unservedRetryMs);
    connect(&m_unserved, &QTimer::timeout, this, &TrackerDriver::sendWaiting);
    if (reading == Reading::Folder) {
        m_folder = std::make_unique<FolderReader>(FolderReader::defaultFolder());
        connect(m_folder.get(), &FolderReader::opened, this, &TrackerDriver::sendWaiting);
        connect(m_link.get(), &StoreLink::up, m_folder.get(), &FolderReader::retryNow);
    }
    m_link->start();
}

TrackerDriver::~TrackerDriver() = default;

SparqlResult *TrackerDriver::exec(const SparqlQuery &query, QObject *owner)
{
    const AdaptedStatement statement = adaptToStore(query);
    if (statement.action == AdaptedStatement::Action::Refuse)
        return new FailedResult(statement.error, owner);
    auto *result = new TableResult(owner);
    if (statement.action == AdaptedStatement::Action::Drop) {
        QTimer::singleShot(0, result, [result] { result->finish({}); });
    } else if (query.type() == SparqlQuery::UpdateStatement) {
        m_link->updates().append(statement.text, statement.iris,
                                 [result = QPointer(result)](StatementOutcome outcome) {
                                     if (result)
                                         result->finish(std::move(outcome));
                                 });
    } else {
        auto select = std::make_shared<Select>();
        select->text = statement.text;
        select->iris = statement.iris;
        select->result = result;
        const auto cancel = [cancellable = select->cancellable] { g_cancellable_cancel(cancellable.get()); };
        connect(result, &QObject::destroyed, this, cancel);
        connect(result, &SparqlResult::finished, this, cancel);
        if (statement.isAddressLookup)
            answerWithoutStoreWhenLate(result);
        m_waiting.push_back(select);
        sendWaiting();
    }
    return result;
}

void TrackerDriver::answerWithoutStoreWhenLate(TableResult *result)
{
    QTimer::singleShot(addressLookupMs, result, [link = std::weak_ptr(m_link), result] {
        if (result->isFinished())
            return;
        if (const auto strong = link.lock())
            strong->noteMissed();
        result->finish({});
    });
}

bool TrackerDriver::maySend(const Select &select) const
{
    const bool isThere
        = m_folder ? m_folder->connection() != nullptr : m_link->isUp() && !m_unserved.isActive();
    // What was written is what is read.
    return isThere && m_underWay < mostUnderWay && !m_link->updates().concerns(select.iris);
}

void TrackerDriver::sendWaiting()
{
    for (auto it = m_waiting.begin(); it != m_waiting.end();) {
        const std::shared_ptr<Select> select = *it;
        if (select->isWanted() && !maySend(*select)) {
            ++it;
            continue;
        }
        it = m_waiting.erase(it);
        if (select->isWanted())
            send(select);
    }
}

void TrackerDriver::send(const std::shared_ptr<Select> &select)
{
    ++m_underWay;
    ++select->attempts;
    TrackerSparqlConnection *connection = m_folder ? m_folder->connection() : m_link->endpoint();
    GDBusConnection *bus = m_folder ? nullptr : m_link->bus();
    fetchRows(connection, bus, select->text, select->cancellable.get(),
              [self = QPointer(this), select](StatementOutcome outcome) {
                  if (self)
                      self->answered(select, std::move(outcome));
              });
}

void TrackerDriver::answered(const std::shared_ptr<Select> &select, StatementOutcome outcome)
{
    --m_underWay;
    if (outcome.isUnserved && select->isWanted()) {
        --select->attempts;
        m_waiting.push_front(select);
        m_unserved.start();
    } else if (outcome.isLost && select->isWanted() && select->attempts < mostAttempts) {
        m_waiting.push_front(select);
    } else if (select->isWanted()) {
        if (outcome.isLost && outcome.error.isNull())
            outcome.error = u"the store went away"_s;
        if (!outcome.error.isNull())
            outcome.table = {};
        const QPointer<TrackerDriver> self(this);
        select->result->finish(std::move(outcome));
        if (!self)
            return;
    }
    sendWaiting();
}
