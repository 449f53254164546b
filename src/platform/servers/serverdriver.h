// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/sparql/rowtable.h"
#include "platform/sparql/sparqldriver.h"
#include "serversettings.h"

#include <QHash>
#include <QSet>
#include <QTimer>

#include <chrono>
#include <deque>
#include <memory>

struct StandardStatement;

// How often and how long a driver tries. Tests take shorter ones.
struct ServerPatience
{
    int mostUnderWay = 4; // reads; one update goes beside them
    int mostAttempts = 5; // of a read, while the server counts as reachable; one attempt while it does not
    std::chrono::milliseconds firstRetry{250}; // doubled each time
    std::chrono::milliseconds longestRetryAfter{30000}; // a server that asks for more is not waited for
    std::chrono::milliseconds addressLookup{
        2000}; // a file whose record nobody can look up is played all the same
    std::chrono::milliseconds firstProbe{1000}; // is it back? doubled up to
    std::chrono::milliseconds lastProbe{60000};
};

// What the drivers for libraries on servers have in common. A driver brings one statement to its server and
// one answer back; here statements wait for their turn:
// - texts are adapted to standard SPARQL;
// - updates go one at a time in the order given, and count as outstanding until they are through. One that
//   cannot have reached the server waits until it is back; one that may have been done is never sent again.
//   Where updates have a server of their own, that one alone is tried again and again;
// - a read that names what an unacknowledged update names waits for it, unless the server cannot be reached;
// - reads are sent again, with growing pauses, when the server could not be reached or went away;
// - a look-up by address is answered without rows when the server is late;
// - a server that cannot be reached is asked from time to time whether it is back. reachableChanged() tells
// both,
//   and reset() follows when something was answered with an error or with nothing meanwhile.
class ServerDriver : public SparqlDriver
{
    Q_OBJECT

public:
    using StatementId = quint64; // never given twice by one driver

    enum class Ending {
        Answered, // rows, or the acknowledgement of an update
        Refused, // the server said why not: asking again is of no use
        NotReached, // the server did not see the statement
        Busy, // the server saw it, did nothing, and may be asked again
        Lost, // gone before the answer was complete: an update may have been done
        Silent, // no byte of an answer in the time set: an update may have been done
    };
    struct Answer
    {
        Ending ending = Ending::Answered;
        RowTable table; // of a read that was answered
        QString error; // one line for the log, otherwise; never with a secret in it
        std::chrono::milliseconds retryAfter{0}; // Busy: as the server asked
    };

    ~ServerDriver() override;

    SparqlResult *exec(const SparqlQuery &query, QObject *owner) final;

protected:
    explicit ServerDriver(const ServerSettings &settings, const ServerPatience &patience = {});

    [[nodiscard]] const ServerSettings &settings() const { return m_settings; }

    // Brings a statement to the server, one text at a time: furtherTexts is empty here. answered() is called
    // for it exactly once, later than this call, unless it is cancelled before. The values of
    // statement.idColumns are numbers of ResourceIds in the answer.
    virtual void send(StatementId id, const StandardStatement &statement, bool isUpdate) = 0;
    // Nobody wants the answer any more. Only reads.
    virtual void cancel(StatementId id) = 0;

    // Says what became of a statement; ids that are not under way are ignored. This object may be gone
    // afterwards.
    void answered(StatementId id, Answer answer);

private:
    struct Read;
    struct Update;

    void answerWithoutRowsWhenLate(const std::shared_ptr<Read> &read);
    void giveUp(const std::shared_ptr<Read> &read);
    [[nodiscard]] bool maySend(const Read &read) const;
    [[nodiscard]] bool isBeingWritten(const QSet<QString> &iris) const;
    [[nodiscard]] bool updatesGoElsewhere() const;
    [[nodiscard]] bool updatesAreHeldUp() const;
    void sendWaiting();
    void sendRead(const std::shared_ptr<Read> &read);
    void sendNextUpdate();
    void readAnswered(const std::shared_ptr<Read> &read, Answer answer);
    void updateAnswered(Answer answer);
    void probeAnswered(const Answer &answer);
    void noteReachability(const Answer &answer);
    [[nodiscard]] bool sendsAgain(const std::shared_ptr<Read> &read, const Answer &answer);
    void rest(const std::shared_ptr<Read> &read, std::chrono::milliseconds time);
    void probe();
    void reached();
    void notReached();

    ServerSettings m_settings;
    ServerPatience m_patience;
    StatementId m_lastId = 0;
    std::deque<std::shared_ptr<Read>> m_waiting;
    QHash<StatementId, std::shared_ptr<Read>> m_underWay;
    std::deque<std::unique_ptr<Update>> m_updates;
    StatementId m_updateUnderWay = 0; // 0: none
    StatementId m_probeUnderWay = 0;
    QTimer m_updateRetry;
    QTimer m_probe;
    std::chrono::milliseconds m_nextProbe;
    bool m_isReachable = true;
    bool m_hasMissed = false; // something was answered without the server
};
