// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

// Where the code of the loaded extensions lies, and which of them is being called: for signal handlers, which
// may read nothing else.
namespace extensioncode {

struct Entry
{
    std::atomic<int> marker = -1; // the descriptor of the marker file; -1: nobody's
    std::atomic<std::uintptr_t> begin = 0;
    std::atomic<std::uintptr_t> end = 0;
    std::atomic<const char *> call = nullptr; // that is under way on the GUI thread
};
static_assert(std::atomic<std::uintptr_t>::is_always_lock_free);

constexpr int MostExtensions = 16;
using Entries = std::array<Entry, MostExtensions>;
[[nodiscard]] Entries &entries();

// Null when there is none; of -1 one that is free.
[[nodiscard]] Entry *find(int marker);
void setCode(Entry &entry, const void *addressInLibrary);

// The return addresses of the thread that calls; safe in a signal handler once it was called elsewhere.
struct Stack
{
    Stack();
    [[nodiscard]] bool passes(const Entry &entry) const;

    std::array<void *, 256> addresses;
    int depth;
};

} // namespace extensioncode
