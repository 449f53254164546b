// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// A share, 1 for all, as the current locale writes per cents, without decimals: "42%", "42 %", "%42".
[[nodiscard]] QString percentText(double share);
