// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediaworkerpool.h"
#include "workerjail.h"
#include "workerprotocol.h"
#include "workerreplyparser.h"

#include "platform/system/helperprocess.h"

#include <QElapsedTimer>
#include <QSocketNotifier>

#include <optional>

// One worker, from its start to its end. Reads at most one file at a time.
class WorkerProcess : public QObject
{
    Q_OBJECT

public:
    enum class State { Starting, Idle, Busy, Ending, Ended };

    WorkerProcess(const WorkerCommand &command, const MediaWorkerPool::Limits &limits, QObject *parent);
    ~WorkerProcess() override;

    [[nodiscard]] State state() const { return m_state; }
    [[nodiscard]] WorkerProtocol::Jail jail() const { return m_jail; }
    [[nodiscard]] int filesRead() const { return m_filesRead; }
    // It was ended since it neither answered nor gave up by itself.
    [[nodiscard]] bool isStuck() const { return m_stuck; }
    // Milliseconds in the present state.
    [[nodiscard]] qint64 sinceChange() const { return m_sinceChange.elapsed(); }

    // Idle workers only. `file` is open for reading, and stays the caller's.
    void read(const MediaRequest &request, int file);
    // Over a limit: ends it. Called now and then by the owner; asks the system, blocks on nothing.
    void checkLimits();
    // The worker ends after it is idle, without a fault.
    void retire();
    // Ends it at once; the file that it reads counts as `status`. The descriptors are closed when this
    // returns, or a second has passed.
    void endNow(MediaReply::Status status);

Q_SIGNALS:
    void ready();
    // The answer about the file; for one that ended the worker, with how it ended. The state is set already.
    void replied(const MediaReply &reply);
    // Once, last of all.
    void ended();

private:
    void socketReadable();
    [[nodiscard]] bool receiveHello();
    void receiveReply();
    void processEnded();
    void setState(State state);
    void kill();
    void verdict(MediaReply::Status status, const QString &error);
    [[nodiscard]] MediaReply replyForEnd() const;
    void limitCpu() const;

    MediaWorkerPool::Limits m_limits;
    HelperProcess m_process;
    int m_socket = -1;
    std::optional<QSocketNotifier> m_notifier;
    State m_state = State::Starting;
    QElapsedTimer m_sinceChange;
    WorkerProtocol::Jail m_jail = WorkerProtocol::JailNone;
    pid_t m_worker = 0; // behind bubblewrap it is not the process that was started
    int m_filesRead = 0;
    qint64 m_cpuBefore = 0;
    std::optional<WorkerReplyParser> m_parser;
    bool m_stuck = false;
    std::optional<MediaReply> m_verdict; // why it was ended from here
};
