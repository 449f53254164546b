// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

// Minutes and seconds with two digits each, hours in front when there are any, in the locale's digits: 01:05,
// 1:02:05. `negative` writes the locale's minus sign in front.
[[nodiscard]] QString timeText(qint64 seconds, const QLocale &locale, bool negative = false);

// The same with a plus or minus sign in front, for a way in time.
[[nodiscard]] QString signedTimeText(qint64 seconds, const QLocale &locale);
