// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>

// File systems that only this process and its children see.
namespace mounts {

// To be called before the process has a second thread. `fresh` are folders that are made anew, empty and
// writable; what lies beside them stays to be seen.
[[nodiscard]] bool enterNamespace(const QByteArrayList &fresh);

// An empty file system, at a folder that is made where it is missing. It looks like a volume to GIO: not of a
// kind, nor from a source, that only the system uses.
[[nodiscard]] bool mount(const QByteArray &path);
[[nodiscard]] bool unmount(const QByteArray &path);
// As unmount(), but fails while something in it is open.
[[nodiscard]] bool unmountIdle(const QByteArray &path);
// A file system of so many bytes, at a folder that is made where it is missing.
[[nodiscard]] bool mountSmall(const QByteArray &path, int bytes);
// What is mounted there cannot be written to any more.
[[nodiscard]] bool makeReadOnly(const QByteArray &path);
// A file is another one for this process from now on.
[[nodiscard]] bool cover(const QByteArray &file, const QByteArray &with);
// Whatever mount() has mounted, newest first.
void unmountAll();

} // namespace mounts
