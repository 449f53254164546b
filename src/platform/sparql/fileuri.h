// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// A file: address is spelled differently by GLib, by Qt and by hand. The store knows one spelling: "file://"
// and the path, every byte escaped as %XX (upper-case digits) but A-Z a-z 0-9 - _ . ! ~ * ' ( ) / & = : @ + $
// , which is what g_filename_to_uri() writes.

// The canonical spelling of a file: address in any spelling: escaped or not, with or without "localhost",
// with one or three slashes, '?' and '#' taken as parts of the name. Any other address comes back unchanged.
[[nodiscard]] QString canonicalFileUri(const QString &address);

// The canonical address of an absolute local path (its bytes as the file system has them).
[[nodiscard]] QString fileUriFromPath(const QByteArray &path);
