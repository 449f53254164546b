// SPDX-License-Identifier: GPL-3.0-or-later
#include "hangwitness.h"

#include "callmarker.h"
#include "extensioncode.h"
#include "extensionslog.h"

#include <QAbstractEventDispatcher>

#include <atomic>
#include <cerrno>
#include <csignal>

#include <sys/syscall.h>
#include <unistd.h>

// As the manual names it; not every C library does.
#ifndef sigev_notify_thread_id
#define sigev_notify_thread_id _sigev_un._tid
#endif

namespace {

// How long between two looks; what both find in one turn of the event loop stands still.
constexpr time_t Seconds = 1;

// Turns of the event loop, and the one of the last look.
std::atomic<unsigned> s_turn = 0;
std::atomic<unsigned> s_seenTurn = 0;
std::atomic<bool> s_isMarked = false;

int signalOfTimer()
{
    return SIGRTMIN + 9;
}

// Nothing but what is safe in a signal handler.
void look(int)
{
    const int error = errno;
    const unsigned turn = s_turn;
    if (s_seenTurn.exchange(turn) == turn && !s_isMarked) {
        const extensioncode::Stack stack;
        for (const extensioncode::Entry &entry : extensioncode::entries()) {
            const int marker = entry.marker;
            if (marker < 0 || !stack.passes(entry))
                continue;
            const char *call = entry.call;
            CallMarker::write(marker, CallMarker::Line::End, CallMarker::HungMark,
                              call ? call : CallMarker::OwnCode);
            s_isMarked = true;
        }
    }
    errno = error;
}

} // namespace

HangWitness::HangWitness()
{
    struct sigaction before = {};
    if (sigaction(signalOfTimer(), nullptr, &before) != 0 || before.sa_handler != SIG_DFL)
        return; // somebody else's
    struct sigevent event = {};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = signalOfTimer();
    event.sigev_notify_thread_id = pid_t(syscall(SYS_gettid));
    if (timer_create(CLOCK_THREAD_CPUTIME_ID, &event, &m_timer) != 0)
        return;
    s_seenTurn = s_turn - 1;
    struct sigaction action = {};
    action.sa_handler = look;
    action.sa_flags = SA_RESTART | SA_ONSTACK;
    sigaction(signalOfTimer(), &action, nullptr);
    const struct itimerspec interval = {{Seconds, 0}, {Seconds, 0}};
    timer_settime(m_timer, 0, &interval, nullptr);
    m_isRunning = true;
    for (const auto turn : {&QAbstractEventDispatcher::aboutToBlock, &QAbstractEventDispatcher::awake})
        connect(QAbstractEventDispatcher::instance(), turn, this, &HangWitness::turnBegins);
}

HangWitness::~HangWitness()
{
    if (!m_isRunning)
        return;
    timer_delete(m_timer);
    turnBegins();
    // One that is under way ends nothing.
    struct sigaction action = {};
    action.sa_handler = SIG_IGN;
    sigaction(signalOfTimer(), &action, nullptr);
    action.sa_handler = SIG_DFL;
    sigaction(signalOfTimer(), &action, nullptr);
}

// It came back.
void HangWitness::turnBegins()
{
    ++s_turn;
    if (!s_isMarked.exchange(false))
        return;
    for (const extensioncode::Entry &entry : extensioncode::entries()) {
        if (entry.marker >= 0)
            CallMarker::write(entry.marker, CallMarker::Line::End, "");
    }
    qCWarning(extensionsLog, "an extension kept the program from answering for more than %lld s",
              static_cast<long long>(Seconds));
}
