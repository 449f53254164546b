// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

struct VideoFacts;

// What was read in the file of a video, in the locale's way of writing.
namespace FactTexts {

// One line a fact, those that the file tells; none without facts. `url` is where the file lies.
[[nodiscard]] QStringList lines(const VideoFacts &facts, const QString &url);

[[nodiscard]] QString frameRate(double rate); // at most two decimals
[[nodiscard]] QString bitRate(qint64 bitsPerSecond);
// As a person knows it: what lies in their home begins with "~".
[[nodiscard]] QString folder(const QString &url);
// How many, and in which languages as far as they are known.
[[nodiscard]] QString tracks(int count, const QStringList &languages);

} // namespace FactTexts
