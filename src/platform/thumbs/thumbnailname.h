// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// The file name, without its suffix, of an address's thumbnail: the MD5 in hexadecimal of the address in its
// one spelling (decoded, encoded again, "#" as "%23"), so that every spelling of an address has the same
// thumbnail.
[[nodiscard]] QByteArray thumbnailName(const QString &uri);

// $HOME/.thumbnails/<flavor>/<name>.jpeg
[[nodiscard]] QString thumbnailFolder(const QString &flavor);
[[nodiscard]] QString thumbnailPath(const QString &uri, const QString &flavor);
