// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

enum class FileAccess { None, ReadOnly };

// From here on this process (with every thread of it) may make only the system calls that reading media
// needs: memory, threads, clocks, and reading and writing what is open. Everything else fails with EPERM,
// also what future kernels add.
[[nodiscard]] bool enterSeccomp(FileAccess access);
