// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "odbcreplyparser.h"

#include "platform/system/helperprocess.h"

#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <optional>

struct Login;
struct ServerSettings;

// One helper program, from its start to its end: a connection to the server of its own, and at most one
// statement at a time.
class OdbcProcess : public QObject
{
    Q_OBJECT

public:
    enum class Ending { Answered, Refused, NotReached, Busy, Lost, Silent };
    struct Outcome
    {
        Ending ending = Ending::Answered;
        RowTable rows;
        QString error; // null when answered
    };

    // The login goes through the program's standard input; nothing of it is kept here once it is written.
    OdbcProcess(const QString &program, const ServerSettings &settings, const Login &login, QObject *parent);
    // Ends the program at once.
    ~OdbcProcess() override;

    [[nodiscard]] bool isIdle() const { return m_state == State::Running && !m_parser && !m_outcome; }
    // Milliseconds since the last answer, or since the start.
    [[nodiscard]] qint64 idleMs() const { return m_sinceAnswer.elapsed(); }

    // Idle ones only.
    void query(const QString &text, const QList<int> &idColumns);
    void update(const QString &text);
    // finished() comes soon all the same.
    void cancel();
    // Idle ones only: the program ends by itself.
    void retire();

    // After finished(), which comes once for each statement. It is idle again then, or ends.
    [[nodiscard]] Outcome takeOutcome() { return std::exchange(m_outcome, {}).value_or(Outcome()); }

    // To be connected to queued: whoever hears them may destroy this object.
Q_SIGNALS:
    void finished();
    // Once, last of all.
    void ended();

private:
    enum class State { Running, Ending, Ended };

    // The login on its way. The process's buffer shares these bytes until they are written, and goes before
    // them.
    struct Unsent
    {
        QByteArray bytes;
        ~Unsent();
    };

    void send(OdbcProtocol::Request kind, const QByteArray &bytes);
    void ask(OdbcProtocol::Request kind, const QString &text, OdbcReplyParser parser);
    void read();
    void kill(Ending ending, const QString &error);
    void processEnded();
    void finish(Outcome outcome);

    std::chrono::milliseconds m_timeout;
    Unsent m_login;
    HelperProcess m_process;
    QTimer m_silence; // runs while a statement is under way and no byte comes
    QElapsedTimer m_sinceAnswer;
    std::optional<OdbcReplyParser> m_parser; // of the statement under way
    std::optional<Outcome> m_outcome; // of the one before, until it is taken
    std::optional<Outcome> m_verdict; // why the program is ended from here
    State m_state = State::Running;
};
