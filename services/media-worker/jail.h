// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/workerprotocol.h"

#include <string>

// Shuts this process in before it reads any file: no new privileges, no core dump, no network, no other
// program, no other process; files only below the library folders and `pluginFolder`, to read.
// `insideBubblewrap` tells that the process already stands in namespaces and a root of its own. What it got
// is the return value; JailNone: not even the system call filter, so nothing may be read.
[[nodiscard]] WorkerProtocol::Jail enterJail(const std::string &pluginFolder, bool insideBubblewrap);
