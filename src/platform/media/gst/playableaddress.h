// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// The address as GStreamer takes it. A file: address may come in any spelling (blanks, `#`, `?` or a stray
// `%` as they stand in the file's name); in any other blanks and letters beyond ASCII are escaped.
[[nodiscard]] QByteArray playableAddress(const QString &uri);
[[nodiscard]] bool isFileAddress(const QString &uri);
// Whether it can be asked for at all, in the spelling of playableAddress().
[[nodiscard]] bool isPlayableAddress(const QByteArray &address);
