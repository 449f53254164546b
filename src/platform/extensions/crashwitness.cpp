// SPDX-License-Identifier: GPL-3.0-or-later
#include "crashwitness.h"

#include "callmarker.h"
#include "extensioncode.h"
#include "hangwitness.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

#include <pthread.h>

namespace {

struct Handled
{
    int signal;
    struct sigaction before = {};
};

// The stack of the GUI thread may be what ran out.
constexpr size_t OwnStackSize = size_t(128) * 1024;

// SIGALRM ends a program that was asked to end and does not.
std::array<Handled, 6> s_handled = {{{SIGSEGV}, {SIGBUS}, {SIGFPE}, {SIGILL}, {SIGABRT}, {SIGALRM}}};
// Not destroyed at the end of the process, until which signals may come.
std::byte *s_ownStack = nullptr;
HangWitness *s_hangWitness = nullptr;
pthread_t s_guiThread;
int s_count = 0;

// Nothing but what is safe in a signal handler.
void noteSignal(int signal, siginfo_t *info, void *)
{
    const int error = errno;
    const extensioncode::Stack stack;
    const bool isGuiThread = pthread_equal(pthread_self(), s_guiThread) != 0;
    const char *state = signal == SIGALRM ? CallMarker::HungMark : CallMarker::CrashedMark;
    for (const extensioncode::Entry &entry : extensioncode::entries()) {
        const int marker = entry.marker;
        if (marker < 0)
            continue;
        const char *call = entry.call;
        const bool isPartOfIt = (call && isGuiThread) || stack.passes(entry);
        if (isPartOfIt)
            CallMarker::write(marker, CallMarker::Line::End, state, call ? call : CallMarker::OwnCode);
        else
            CallMarker::write(marker, CallMarker::Line::End, CallMarker::IdleMark);
    }
    for (const Handled &handled : s_handled) {
        if (handled.signal == signal)
            sigaction(signal, &handled.before, nullptr);
    }
    // A fault comes again by itself, what was sent does not. It waits until this has returned.
    if (info->si_code <= 0 || signal == SIGALRM)
        raise(signal);
    errno = error;
}

void giveOwnStack()
{
    stack_t now = {};
    if (sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0)
        return;
    s_ownStack = new std::byte[OwnStackSize];
    stack_t own = {};
    own.ss_sp = s_ownStack;
    own.ss_size = OwnStackSize;
    sigaltstack(&own, nullptr);
}

void takeOwnStack()
{
    if (!s_ownStack)
        return;
    stack_t none = {};
    none.ss_flags = SS_DISABLE;
    sigaltstack(&none, nullptr);
    delete[] s_ownStack;
    s_ownStack = nullptr;
}

void install()
{
    s_guiThread = pthread_self();
    [[maybe_unused]] const extensioncode::Stack first; // loads what it needs
    giveOwnStack();
    struct sigaction action = {};
    action.sa_sigaction = noteSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (Handled &handled : s_handled)
        sigaction(handled.signal, &action, &handled.before);
    s_hangWitness = new HangWitness;
}

// Somebody who came later keeps what he put there, and calls ours no more than once: it knows nobody then.
void uninstall()
{
    delete s_hangWitness;
    s_hangWitness = nullptr;
    for (const Handled &handled : s_handled) {
        struct sigaction now = {};
        sigaction(handled.signal, nullptr, &now);
        if (now.sa_sigaction == noteSignal)
            sigaction(handled.signal, &handled.before, nullptr);
    }
    takeOwnStack();
}

} // namespace

namespace crashwitness {

void watch(int marker)
{
    extensioncode::Entry *free = marker < 0 ? nullptr : extensioncode::find(-1);
    if (!free)
        return;
    free->call = nullptr;
    free->begin = 0;
    free->end = 0;
    free->marker = marker;
    if (s_count++ == 0)
        install();
}

void setCode(int marker, const void *code)
{
    if (extensioncode::Entry *entry = marker < 0 ? nullptr : extensioncode::find(marker))
        extensioncode::setCode(*entry, code);
}

void unwatch(int marker)
{
    extensioncode::Entry *entry = marker < 0 ? nullptr : extensioncode::find(marker);
    if (!entry)
        return;
    entry->marker = -1;
    if (--s_count == 0)
        uninstall();
}

void entered(int marker, const char *call)
{
    if (extensioncode::Entry *entry = marker < 0 ? nullptr : extensioncode::find(marker))
        entry->call = call;
}

void left(int marker)
{
    entered(marker, nullptr);
}

} // namespace crashwitness
