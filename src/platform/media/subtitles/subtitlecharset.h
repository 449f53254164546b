// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

namespace subtitles {

// By its byte order mark, as UTF-8 when it is valid UTF-8, as UTF-16 when every other byte is mostly zero;
// else in the charset that was usual for the language (ISO 639-1, with a script or country where that
// matters: "zh-TW") before Unicode.
[[nodiscard]] QString decode(const QByteArray &bytes, const QString &language);
// The name of that charset.
[[nodiscard]] QByteArray usualCharset(const QString &language);

} // namespace subtitles
