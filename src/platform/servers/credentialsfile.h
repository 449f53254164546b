// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "credentials.h"

#include <QString>

// Reads the login of `server` from a file of this form, in UTF-8:
//
//     # a comment
//     [archive.example:443]
//     user = anna
//     password = what follows the blank, up to the end of the line
//
// One section a login; a server may have several, of which the first that fits counts. The file has to be a
// regular one of this user with the mode 0600 or 0400; where a symbolic link leads counts, not the link.
// Otherwise, and when a line of it is not understood, the error says what is wrong and how it is mended. A
// file that is not there is none. Reads on the calling thread.
[[nodiscard]] Login loginFromFile(const QString &path, const QString &server, const QString &user);
