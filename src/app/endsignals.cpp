// SPDX-License-Identifier: GPL-3.0-or-later
#include "endsignals.h"

#include "applog.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

constexpr unsigned PatienceSeconds = 20;

// Where the handler says that a signal came; -1: nobody listens.
std::atomic<int> wakeUp = -1;
static_assert(std::atomic<int>::is_always_lock_free);

// In whatever thread and in the middle of whatever it does: nothing but what is safe there.
void noteSignal(int)
{
    const int before = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof one);
    alarm(PatienceSeconds);
    errno = before;
}

} // namespace

EndSignals::EndSignals(QObject *parent) : QObject(parent)
{
    const int wakes = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakes < 0) {
        qCWarning(appLog, "signals end the program at once: %s", std::strerror(errno));
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(wakes, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [wakes] {
        std::uint64_t count = 0;
        if (read(wakes, &count, sizeof count) == sizeof count)
            QCoreApplication::quit();
    });
    wakeUp = wakes;
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (Handled &handled : m_handled) {
        sigaction(handled.signal, nullptr, &handled.before);
        if (handled.before.sa_handler != SIG_IGN)
            sigaction(handled.signal, &action, nullptr);
    }
}

EndSignals::~EndSignals()
{
    if (!m_notifier)
        return;
    for (const Handled &handled : m_handled)
        sigaction(handled.signal, &handled.before, nullptr);
    close(wakeUp.exchange(-1));
}
