// SPDX-License-Identifier: GPL-3.0-or-later
#include "serverdriver.h"

#include "platform/sparql/failedresult.h"
#include "platform/sparql/outstandingupdates.h"
#include "platform/sparql/sparqllog.h"
#include "platform/sparql/tableresult.h"
#include "standarddialect.h"

#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString probeText = u"SELECT ?s WHERE { ?s ?p ?o } LIMIT 1"_s;

} // namespace

struct ServerDriver::Read
{
    StandardStatement statement;
    QStringList texts; // still to be sent, the next one first
    RowTable table; // what the texts before gave
    QPointer<TableResult> result;
    StatementId id = 0; // 0: not under way
    int attempts = 0; // of the text that is next
    bool isResting = false; // until its next attempt

    [[nodiscard]] bool isWanted() const { return result && !result->isFinished(); }
};

struct ServerDriver::Update
{
    StandardStatement statement;
    QPointer<TableResult> result;
    UpdateTicket ticket;
    int attempts = 0;
};

ServerDriver::ServerDriver(const ServerSettings &settings, const ServerPatience &patience)
    : m_settings(settings),
      m_patience(patience),
      m_nextProbe(patience.firstProbe)
{
    m_updateRetry.setSingleShot(true);
    connect(&m_updateRetry, &QTimer::timeout, this, &ServerDriver::sendNextUpdate);
    m_probe.setSingleShot(true);
    connect(&m_probe, &QTimer::timeout, this, &ServerDriver::probe);
}

ServerDriver::~ServerDriver()
{
    if (!m_updates.empty())
        qCWarning(lcSparql) << m_updates.size() << "updates were not sent: the connection was closed";
}

SparqlResult *ServerDriver::exec(const SparqlQuery &query, QObject *owner)
{
    using Action = StandardStatement::Action;
    StandardStatement statement
        = adaptToStandard(query, {m_settings.graph, m_settings.positionProperty}, ResourceIds::shared());
    if (statement.action == Action::Refuse)
        return new FailedResult(statement.error, owner);
    auto *result = new TableResult(owner);
    if (statement.action != Action::Send) {
        QTimer::singleShot(0, result, [result] { result->finish({}); });
    } else if (query.type() == SparqlQuery::UpdateStatement) {
        auto update = std::make_unique<Update>();
        update->statement = std::move(statement);
        update->result = result;
        m_updates.push_back(std::move(update));
        sendNextUpdate();
    } else {
        auto read = std::make_shared<Read>();
        read->statement = std::move(statement);
        read->texts = QStringList(read->statement.text) + read->statement.furtherTexts;
        read->result = result;
        connect(result, &QObject::destroyed, this,
                [this, read = std::weak_ptr(read)] { giveUp(read.lock()); });
        if (read->statement.isAddressLookup)
            answerWithoutRowsWhenLate(read);
        m_waiting.push_back(std::move(read));
        sendWaiting();
    }
    return result;
}

void ServerDriver::answerWithoutRowsWhenLate(const std::shared_ptr<Read> &read)
{
    QTimer::singleShot(m_patience.addressLookup, read->result, [this, self = QPointer(this), read] {
        if (!read->isWanted())
            return;
        if (self) {
            m_hasMissed = true;
            giveUp(read);
        }
        read->result->finish({});
    });
}

void ServerDriver::giveUp(const std::shared_ptr<Read> &read)
{
    if (!read)
        return;
    m_waiting.erase(std::remove(m_waiting.begin(), m_waiting.end(), read), m_waiting.end());
    if (read->id == 0)
        return;
    m_underWay.remove(read->id);
    cancel(std::exchange(read->id, 0));
    sendWaiting();
}

bool ServerDriver::isBeingWritten(const QSet<QString> &iris) const
{
    return std::any_of(m_updates.begin(), m_updates.end(), [&](const std::unique_ptr<Update> &update) {
        return update->statement.iris.intersects(iris);
    });
}

bool ServerDriver::updatesGoElsewhere() const
{
    return !m_settings.updateAddress.isEmpty()
        && m_settings.updateAddress.authority() != m_settings.queryAddress.authority();
}

// Their own server is away.
bool ServerDriver::updatesAreHeldUp() const
{
    return updatesGoElsewhere() && !m_updates.empty()
        && m_updates.front()->attempts > m_patience.mostAttempts;
}

bool ServerDriver::maySend(const Read &read) const
{
    // What was written is what is read. What waits for a server that is away is waited for by nobody.
    return !read.isResting && m_underWay.size() < m_patience.mostUnderWay
        && (!m_isReachable || updatesAreHeldUp() || !isBeingWritten(read.statement.iris));
}

void ServerDriver::sendWaiting()
{
    for (auto it = m_waiting.begin(); it != m_waiting.end();) {
        if (!maySend(**it)) {
            ++it;
            continue;
        }
        const std::shared_ptr<Read> read = *it;
        it = m_waiting.erase(it);
        sendRead(read);
    }
}

void ServerDriver::sendRead(const std::shared_ptr<Read> &read)
{
    read->id = ++m_lastId;
    ++read->attempts;
    m_underWay.insert(read->id, read);
    StandardStatement statement = read->statement;
    statement.text = read->texts.constFirst();
    statement.furtherTexts.clear();
    send(read->id, statement, false);
}

void ServerDriver::sendNextUpdate()
{
    if (m_updates.empty() || m_updateUnderWay != 0 || !m_isReachable || m_updateRetry.isActive())
        return;
    m_updateUnderWay = ++m_lastId;
    ++m_updates.front()->attempts;
    send(m_updateUnderWay, m_updates.front()->statement, true);
}

void ServerDriver::answered(StatementId id, Answer answer)
{
    if (id == m_probeUnderWay && id != 0) {
        m_probeUnderWay = 0;
        probeAnswered(answer);
        return;
    }
    const QPointer<ServerDriver> self(this);
    if (id == m_updateUnderWay && id != 0) {
        m_updateUnderWay = 0;
        updateAnswered(std::move(answer));
    } else if (const std::shared_ptr<Read> read = m_underWay.take(id)) {
        read->id = 0;
        readAnswered(read, std::move(answer));
    }
    if (!self)
        return;
    sendNextUpdate();
    sendWaiting();
}

void ServerDriver::readAnswered(const std::shared_ptr<Read> &read, Answer answer)
{
    const QPointer<ServerDriver> self(this);
    noteReachability(answer);
    if (!self || !read->isWanted() || sendsAgain(read, answer))
        return;
    StatementOutcome outcome;
    if (answer.ending == Ending::Answered) {
        if (read->table.columns() == 0)
            read->table = std::move(answer.table);
        else if (read->table.columns() != answer.table.columns() || !read->table.appendRows(answer.table))
            outcome.error = u"the parts of the answer do not make one table"_s;
        read->texts.removeFirst();
        read->attempts = 0;
        if (outcome.error.isNull() && !read->texts.isEmpty()) {
            m_waiting.push_front(read);
            return;
        }
    } else {
        outcome.error = answer.error;
        m_hasMissed = m_hasMissed || !m_isReachable || answer.ending == Ending::Silent;
    }
    if (outcome.error.isNull()) {
        outcome.table = std::move(read->table);
        if (read->statement.isOneRowEach)
            outcome.table.removeRepeated(read->statement.idColumns.constFirst());
    }
    read->result->finish(std::move(outcome));
}

// A server that is there tells it by any answer; one that says nothing may be busy with this statement alone.
void ServerDriver::noteReachability(const Answer &answer)
{
    if (answer.ending == Ending::Answered || answer.ending == Ending::Refused)
        reached();
    else if (answer.ending == Ending::Silent)
        probe();
}

bool ServerDriver::sendsAgain(const std::shared_ptr<Read> &read, const Answer &answer)
{
    const bool isAway = answer.ending == Ending::NotReached || answer.ending == Ending::Lost;
    const bool isBusy = answer.ending == Ending::Busy && answer.retryAfter <= m_patience.longestRetryAfter;
    if (!isAway && !isBusy)
        return false;
    if (!m_isReachable || read->attempts >= m_patience.mostAttempts) {
        if (isAway)
            notReached();
        return false;
    }
    rest(read, std::max(answer.retryAfter, m_patience.firstRetry * (1 << std::min(read->attempts - 1, 10))));
    return true;
}

void ServerDriver::rest(const std::shared_ptr<Read> &read, std::chrono::milliseconds time)
{
    read->isResting = true;
    m_waiting.push_front(read);
    QTimer::singleShot(time, this, [this, read = std::weak_ptr(read)] {
        if (const auto strong = read.lock())
            strong->isResting = false;
        sendWaiting();
    });
}

void ServerDriver::updateAnswered(Answer answer)
{
    Update &front = *m_updates.front();
    const bool wasNotDone = answer.ending == Ending::NotReached
        || (answer.ending == Ending::Busy && front.attempts < m_patience.mostAttempts);
    if (wasNotDone) {
        if (answer.ending == Ending::NotReached && front.attempts >= m_patience.mostAttempts) {
            if (!updatesGoElsewhere()) {
                front.attempts = 0;
                notReached();
                return;
            }
            if (front.attempts == m_patience.mostAttempts)
                qCWarning(lcSparql).noquote() << "updates wait for their server:" << answer.error;
        }
        const std::chrono::milliseconds pause
            = std::min(m_patience.firstRetry * (1 << std::min(front.attempts - 1, 10)), m_patience.lastProbe);
        m_updateRetry.start(
            std::clamp(answer.retryAfter, pause, std::max(pause, m_patience.longestRetryAfter)));
        return;
    }
    const std::unique_ptr<Update> update = std::move(m_updates.front());
    m_updates.pop_front();
    StatementOutcome outcome;
    if (answer.ending != Ending::Answered) {
        const bool isUnsure = answer.ending == Ending::Lost || answer.ending == Ending::Silent;
        outcome.error
            = isUnsure ? u"whether the update was done is not known: "_s + answer.error : answer.error;
        qCWarning(lcSparql).noquote() << "the server did not take an update:" << outcome.error;
    }
    const QPointer<ServerDriver> self(this);
    noteReachability(answer);
    if (self && answer.ending == Ending::Lost)
        probe();
    if (update->result)
        update->result->finish(std::move(outcome));
}

void ServerDriver::probe()
{
    if (m_probeUnderWay != 0)
        return;
    m_probe.stop();
    m_probeUnderWay = ++m_lastId;
    StandardStatement statement;
    statement.text = probeText;
    send(m_probeUnderWay, statement, false);
}

void ServerDriver::probeAnswered(const Answer &answer)
{
    // Whoever refuses or is busy is there.
    const bool isThere = answer.ending == Ending::Answered || answer.ending == Ending::Refused
        || answer.ending == Ending::Busy;
    if (!isThere) {
        m_nextProbe = m_isReachable ? m_patience.firstProbe : std::min(m_nextProbe * 2, m_patience.lastProbe);
        notReached();
        return;
    }
    if (m_isReachable)
        m_hasMissed = false; // it was there all the time: asking for everything again would end the same way
    const QPointer<ServerDriver> self(this);
    reached();
    if (!self)
        return;
    sendNextUpdate();
    sendWaiting();
}

void ServerDriver::reached()
{
    if (m_isReachable)
        return;
    qCInfo(lcSparql) << "the server of the library can be reached again";
    m_isReachable = true;
    m_nextProbe = m_patience.firstProbe;
    m_probe.stop();
    const QPointer<ServerDriver> self(this);
    Q_EMIT reachableChanged(true);
    if (self && std::exchange(m_hasMissed, false))
        Q_EMIT reset();
}

void ServerDriver::notReached()
{
    if (!m_probe.isActive() && m_probeUnderWay == 0)
        m_probe.start(m_nextProbe);
    if (!m_isReachable)
        return;
    qCWarning(lcSparql) << "the server of the library cannot be reached";
    m_isReachable = false;
    Q_EMIT reachableChanged(false);
}
