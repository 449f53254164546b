// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

struct VideoDetails;

// The values on the details page, in the locale's way of writing.
namespace DetailTexts {

// The title; without one the name of the file without its last suffix.
[[nodiscard]] QString heading(const VideoDetails &details);
// The suffix of the file's name in capitals; without one the kind of its MIME type.
[[nodiscard]] QString format(const VideoDetails &details);
// With one decimal and no group separators, in gigabytes above one, else in megabytes above one, else in
// kilobytes.
[[nodiscard]] QString size(qint64 bytes);
// In the device's time zone, short; empty where there is no such moment.
[[nodiscard]] QString date(const QDateTime &moment);
[[nodiscard]] QString time(const QDateTime &moment);
[[nodiscard]] QString count(int number);

} // namespace DetailTexts
