// SPDX-License-Identifier: GPL-3.0-or-later
#include "workerprocess.h"

#include "processwatch.h"
#include "workerlog.h"

#include <QTimer>

#include <array>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int StartDeadlineMs = 15000;
constexpr int RetireDeadlineMs = 2000;
// The worker gives up by itself a little before it would be ended, so that what it found so far is not lost.
constexpr double OwnShareOfTime = 0.8;

std::pair<int, int> makeSockets()
{
    std::array<int, 2> ends = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        return {-1, -1};
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const int on = 1;
    setsockopt(ends[0], SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
    return {ends[0], ends[1]};
}

// Mapping is not using: libraries and the stacks of threads take a multiple of what they touch. What is used
// is watched; this only stops a run-away allocation between two looks.
qint64 addressSpace(qint64 memoryBytes)
{
#ifdef __SANITIZE_ADDRESS__
    Q_UNUSED(memoryBytes)
    return 0;
#else
    return 2 * memoryBytes + (qint64(1) << 30);
#endif
}

MediaReply replyOf(MediaReply::Status status, const QString &error)
{
    MediaReply reply;
    reply.status = status;
    reply.error = error;
    return reply;
}

} // namespace

WorkerProcess::WorkerProcess(const WorkerCommand &command, const MediaWorkerPool::Limits &limits,
                             QObject *parent)
    : QObject(parent),
      m_limits(limits),
      m_process(this)
{
    m_sinceChange.start();
    const auto [ours, theirs] = makeSockets();
    m_socket = ours;
    m_notifier.emplace(ours, QSocketNotifier::Read);
    connect(&*m_notifier, &QSocketNotifier::activated, this, &WorkerProcess::socketReadable);
    connect(&m_process, &HelperProcess::ended, this, &WorkerProcess::processEnded);

    const WorkerLimits processLimits{.addressSpaceBytes = addressSpace(limits.memoryBytes)};
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.startHelper(command.program, command.arguments,
                          [theirs = theirs, processLimits] { prepareWorkerProcess(theirs, processLimits); });
    ::close(theirs);
}

WorkerProcess::~WorkerProcess()
{
    m_process.disconnect(this);
    if (m_process.state() != QProcess::NotRunning) {
        kill();
        m_process.waitForFinished(1000);
    }
    m_notifier.reset();
    if (m_socket >= 0)
        ::close(m_socket);
}

void WorkerProcess::setState(State state)
{
    m_state = state;
    m_sinceChange.restart();
}

void WorkerProcess::socketReadable()
{
    if (m_state == State::Starting) {
        if (receiveHello()) {
            setState(State::Idle);
            Q_EMIT ready();
        }
    } else {
        receiveReply();
    }
}

// The credentials that come with the first message name the worker's process as it is seen from here, also
// out of a process namespace.
bool WorkerProcess::receiveHello()
{
    WorkerProtocol::Hello hello;
    iovec part = {&hello, sizeof hello};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t received = recvmsg(m_socket, &message, MSG_CMSG_CLOEXEC);
    if (received < 0 && (errno == EAGAIN || errno == EINTR))
        return false;
    const cmsghdr *const header = CMSG_FIRSTHDR(&message);
    if (header && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_CREDENTIALS) {
        ucred credentials = {};
        std::memcpy(&credentials, CMSG_DATA(header), sizeof credentials);
        m_worker = credentials.pid;
    }
    const bool valid = received == sizeof hello && hello.magic == WorkerProtocol::HelloMagic && m_worker > 0
        && hello.jail > WorkerProtocol::JailNone && hello.jail <= WorkerProtocol::JailBubblewrap;
    if (!valid) {
        m_notifier->setEnabled(false);
        kill();
        return false;
    }
    m_jail = WorkerProtocol::Jail(hello.jail);
    return true;
}

void WorkerProcess::read(const MediaRequest &request, int file)
{
    WorkerProtocol::Request wire;
    wire.flags = (request.wantMetadata ? WorkerProtocol::WantMetadata : 0u)
        | (request.wantFrame ? WorkerProtocol::WantFrame : 0u)
        | (request.wantStreams ? WorkerProtocol::WantStreams : 0u);
    wire.coverWidth = static_cast<std::uint32_t>(qMax(0, request.frameSize.width()));
    wire.coverHeight = static_cast<std::uint32_t>(qMax(0, request.frameSize.height()));
    wire.positionPermille = static_cast<std::uint32_t>(qBound(0.0, request.framePosition, 1.0) * 1000);
    wire.timeLimitMs = static_cast<std::uint32_t>(m_limits.wallMs * OwnShareOfTime);

    iovec part = {&wire, sizeof wire};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control = {};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr *const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof file);
    std::memcpy(CMSG_DATA(header), &file, sizeof file);

    m_parser.emplace(request);
    m_cpuBefore = readUsage(m_worker).value_or(ProcessUsage()).cpuMs;
    limitCpu();
    ++m_filesRead;
    setState(State::Busy);
    // The buffer of an idle worker is empty: this neither blocks nor stops half-way. A worker that is gone
    // meanwhile ends the request when its end is noticed.
    if (sendmsg(m_socket, &message, MSG_NOSIGNAL) != sizeof wire)
        kill();
}

// In whole seconds, and therefore only the backstop of checkLimits(), for the case that this process is held
// up.
void WorkerProcess::limitCpu() const
{
    rlimit limit = {};
    if (prlimit(m_worker, RLIMIT_CPU, nullptr, &limit) != 0)
        return;
    limit.rlim_cur = static_cast<rlim_t>((m_cpuBefore + m_limits.cpuMs) / 1000 + 2);
    prlimit(m_worker, RLIMIT_CPU, &limit, nullptr);
}

void WorkerProcess::receiveReply()
{
    std::array<char, 256 * 1024> buffer;
    const ssize_t received = recv(m_socket, buffer.data(), buffer.size(), 0);
    if (received < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (received <= 0) {
        // The end of the process is what counts; it is reported apart.
        m_notifier->setEnabled(false);
        return;
    }
    if (m_state != State::Busy || !m_parser) {
        verdict(MediaReply::Status::Crashed, u"the worker spoke without being asked"_s);
        return;
    }
    switch (m_parser->feed(QByteArray::fromRawData(buffer.data(), received))) {
    case WorkerReplyParser::State::Incomplete:
        return;
    case WorkerReplyParser::State::Invalid:
        verdict(MediaReply::Status::Crashed, u"the worker's answer is malformed"_s);
        return;
    case WorkerReplyParser::State::Complete:
        break;
    }
    const MediaReply reply = m_parser->takeReply();
    m_parser.reset();
    setState(State::Idle);
    Q_EMIT replied(reply);
}

void WorkerProcess::checkLimits()
{
    if (m_state == State::Starting && sinceChange() > StartDeadlineMs)
        verdict(MediaReply::Status::TimedOut, u"the worker did not start"_s);
    if (m_state != State::Busy || m_verdict)
        return;
    const std::optional<ProcessUsage> usage = readUsage(m_worker);
    m_stuck = sinceChange() > m_limits.wallMs;
    if (m_stuck)
        verdict(MediaReply::Status::TimedOut, u"no answer after %1 ms"_s.arg(m_limits.wallMs));
    else if (usage && usage->cpuMs - m_cpuBefore > m_limits.cpuMs)
        verdict(MediaReply::Status::TimedOut, u"more than %1 ms of processor time"_s.arg(m_limits.cpuMs));
    else if (usage && usage->residentBytes > m_limits.memoryBytes)
        verdict(MediaReply::Status::TooMuchMemory,
                u"more than %1 MiB of memory"_s.arg(m_limits.memoryBytes >> 20));
}

void WorkerProcess::verdict(MediaReply::Status status, const QString &error)
{
    if (!m_verdict)
        m_verdict = replyOf(status, error);
    m_notifier->setEnabled(false);
    if (m_state == State::Idle)
        setState(State::Ending);
    kill();
}

void WorkerProcess::kill()
{
    // Behind bubblewrap: the worker's end is what closes the file, and bubblewrap follows.
    if (m_worker > 0 && m_process.state() != QProcess::NotRunning)
        ::kill(m_worker, SIGKILL);
    else
        m_process.kill();
}

void WorkerProcess::retire()
{
    if (m_state == State::Ended)
        return;
    m_notifier->setEnabled(false);
    setState(State::Ending);
    ::shutdown(m_socket, SHUT_RDWR);
    QTimer::singleShot(RetireDeadlineMs, this, &WorkerProcess::kill);
}

void WorkerProcess::endNow(MediaReply::Status status)
{
    verdict(status, u"the file was let go"_s);
    m_process.waitForFinished(1000);
}

MediaReply WorkerProcess::replyForEnd() const
{
    if (m_verdict)
        return *m_verdict;
    // bubblewrap ends with 128 + the signal that ended the worker.
    const bool crashed = m_process.exitStatus() == QProcess::CrashExit;
    const int code = m_process.exitCode();
    const int signal = crashed ? code : code - 128;
    if (!crashed && code == WorkerProtocol::ExitOutOfMemory)
        return replyOf(MediaReply::Status::TooMuchMemory, u"the worker could not get more memory"_s);
    if (signal == SIGXCPU)
        return replyOf(MediaReply::Status::TimedOut,
                       u"more than %1 ms of processor time"_s.arg(m_limits.cpuMs));
    return replyOf(MediaReply::Status::Crashed,
                   signal > 0 ? u"the worker ended with signal %1"_s.arg(signal)
                              : u"the worker ended with status %1"_s.arg(code));
}

void WorkerProcess::processEnded()
{
    if (m_state == State::Ended)
        return;
    // An answer that came in whole before the end still counts.
    for (int reads = 0; m_state == State::Busy && m_notifier->isEnabled() && reads < 4096; ++reads)
        receiveReply();
    m_notifier->setEnabled(false);
    const bool busy = m_state == State::Busy;
    setState(State::Ended);
    if (busy)
        Q_EMIT replied(replyForEnd());
    Q_EMIT ended();
}
