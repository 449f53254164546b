// SPDX-License-Identifier: GPL-3.0-or-later
#include "plaintext.h"

#include <QChar>
#include <QList>

#include <algorithm>

namespace {

// Embeddings, overrides and isolates, and their deprecated kin.
bool turnsDirection(char32_t character)
{
    return (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x206F);
}

bool isLeftOut(char32_t character)
{
    return turnsDirection(character) || QChar::isNonCharacter(character)
        || QChar::category(character) == QChar::Other_Control;
}

bool isSeen(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Format:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Separator_Space:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

QString plainText(const QString &text, qsizetype most)
{
    // Line breaks and tabs are spaces before they would be left out.
    QList<uint> characters = text.simplified().toUcs4();
    characters.removeIf([](uint character) { return isLeftOut(character); });
    characters.resize(std::min(characters.size(), most));
    if (std::none_of(characters.cbegin(), characters.cend(), isSeen))
        return {};
    const auto *first = reinterpret_cast<const char32_t *>(characters.constData());
    return QString::fromUcs4(first, characters.size()).simplified();
}
