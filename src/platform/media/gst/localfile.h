// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

enum class LocalFile {
    Ordinary, // or not there at all: opening it tells
    Playlist, // a list of addresses of other files
    NoFile, // a pipe, a socket, a device: opening it may take for ever, or reading it never end
};

// What lies behind a file: address. Waits for the disk.
[[nodiscard]] LocalFile localFile(const QString &uri);
