// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// A text of a stranger's as one line that can stand among others: without control characters and without
// those that turn the direction of what follows; at most so many characters, and empty when there is nothing
// to see in it.
[[nodiscard]] QString plainText(const QString &text, qsizetype most);
