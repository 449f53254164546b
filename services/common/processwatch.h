// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

#include <sys/types.h>

// What a process has used so far.
struct ProcessUsage
{
    qint64 cpuMs = 0;
    qint64 residentBytes = 0;
};

// From /proc, without blocking; nothing when the process is gone.
[[nodiscard]] std::optional<ProcessUsage> readUsage(pid_t process);
