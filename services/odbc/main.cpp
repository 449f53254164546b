// SPDX-License-Identifier: GPL-3.0-or-later
// kestrel-odbc: speaks to one Virtuoso server for the application. ODBC blocks, and what is loaded for it is
// a driver of somebody else's: it does both in a process of its own. Requests come by standard input and
// answers go to standard output, as odbcprotocol.h has them; it ends with its input.
#include "odbcsession.h"

#include <condition_variable>
#include <csignal>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace OdbcProtocol;

namespace {

// Requests from the thread that reads them to the one that may be held up by the server.
class RequestQueue
{
public:
    void append(Frame frame)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_frames.push_back(std::move(frame));
            cancelled = false;
        }
        m_filled.notify_one();
    }
    Frame take()
    {
        std::unique_lock lock(m_mutex);
        m_filled.wait(lock, [this] { return !m_frames.empty(); });
        Frame frame = std::move(m_frames.front());
        m_frames.pop_front();
        return frame;
    }

    // Of the statement that came last: the next one comes when that is answered.
    std::atomic<bool> cancelled = false;

private:
    std::mutex m_mutex;
    std::condition_variable m_filled;
    std::deque<Frame> m_frames;
};

[[noreturn]] void serve(RequestQueue &requests)
{
    AnswerWriter answers(STDOUT_FILENO);
    OdbcSession session(answers, requests.cancelled);
    for (;;) {
        Frame frame = requests.take();
        OdbcLogin login;
        switch (Request(frame.kind)) {
        case Request::Open:
            if (!login.read(frame.bytes))
                _exit(1);
            explicit_bzero(frame.bytes.data(), frame.bytes.size());
            session.setLogin(std::move(login));
            break;
        case Request::Query:
        case Request::Update:
            session.execute(frame.bytes, Request(frame.kind) == Request::Update);
            break;
        default:
            _exit(1);
        }
    }
}

} // namespace

int main()
{
    // The password is in here: no other process of the user reads it, and no core dump holds it.
    prctl(PR_SET_DUMPABLE, 0);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGPIPE, SIG_IGN);
    RequestQueue requests;
    std::thread([&requests] { serve(requests); }).detach();
    while (std::optional<Frame> frame = readFrame(STDIN_FILENO)) {
        if (Request(frame->kind) == Request::Cancel)
            requests.cancelled = true;
        else
            requests.append(std::move(*frame));
    }
    // Not by way of the destructors: the other thread may wait for the server for ever.
    _exit(0);
}
