// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From here on neither this process nor its children can make an Internet socket. What asks the service to is
// refused before; this holds also for what nobody thought of. False when the kernel does not offer it.
bool giveUpNetwork();
