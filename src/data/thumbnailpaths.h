// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Where pictures of videos lie: the file of an address is named by thumbnailName().
namespace ThumbnailPaths {

[[nodiscard]] QString defaultFolder(const QString &flavor);
// Exists afterwards, unless it cannot be made.
[[nodiscard]] QString pauseFolder(const QString &flavor);

[[nodiscard]] QString defaultPath(const QString &url, const QString &flavor);
[[nodiscard]] QString pausePath(const QString &url, const QString &flavor);

} // namespace ThumbnailPaths
