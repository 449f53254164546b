// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Where extensions lie, as the environment and the place of the program say.
namespace extensionfolders {

// Folders of description files; the first wins: the user's, then the system's, then that of the program's own
// prefix.
[[nodiscard]] QStringList descriptions();
// Folders of the plug-in that a description names: its own, that for plug-ins of its prefix, that of the
// program's prefix.
[[nodiscard]] QStringList libraries(const QString &descriptionPath);

// The paths of all description files, sorted by whole name ("name.desktop"); those of one name in the order
// of the folders. Nothing is opened.
[[nodiscard]] QStringList find(const QStringList &folders);

} // namespace extensionfolders
