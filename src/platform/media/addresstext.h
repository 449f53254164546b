// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// A text for other eyes, a log line or a message on a bus: every address in it is without the user name and
// the password that may stand before its host.
[[nodiscard]] QString withoutCredentials(const QString &text);
