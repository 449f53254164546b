// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

namespace languages {

// As it is written today: of "ger", "deu", "de-DE" and "German" "de" ("de-DE" keeps its country). Empty: no
// language.
[[nodiscard]] QString normalized(const QString &language);
// The same but for country and script; nothing is like an unknown one.
[[nodiscard]] bool areAlike(const QString &one, const QString &other);
// As people who read the user's language call it: "Deutsch", "allemand", "German (Switzerland)". Empty for an
// unknown one.
[[nodiscard]] QString displayName(const QString &language);
// The same in the middle of a line, where many languages write it small: "saksa", "allemand".
[[nodiscard]] QString nameInText(const QString &language);
// What the user understands, best first.
[[nodiscard]] QStringList ofUser();
// How far in front it is among those (0: first); -1: not among them.
[[nodiscard]] int rank(const QString &language, const QStringList &wanted);

} // namespace languages
