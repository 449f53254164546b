// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace VideoTimeHelper {

// Minutes and seconds with two digits each, hours in front when there are any, in the locale's digits: 01:05,
// 1:02:05.
[[nodiscard]] QString formatDuration(int seconds);

} // namespace VideoTimeHelper
