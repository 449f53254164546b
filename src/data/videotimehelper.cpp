// SPDX-License-Identifier: GPL-3.0-or-later
#include "videotimehelper.h"

#include <QLocale>

namespace {

bool isDirectionalFormatting(QChar character)
{
    switch (character.unicode()) {
    case 0x200F: // right-to-left mark
    case 0x200E: // left-to-right mark
    case 0x202D: // overrides
    case 0x202E:
    case 0x202A: // embeddings
    case 0x202B:
    case 0x202C: // pop
        return true;
    default:
        return false;
    }
}

QString twoDigits(const QLocale &locale, int number)
{
    return number > 9 ? locale.toString(number) : locale.toString(0) + locale.toString(number);
}

} // namespace

QString VideoTimeHelper::formatDuration(int seconds)
{
    const QLocale locale;
    const int hours = seconds / 3600;
    QString text;
    if (hours > 0)
        text = locale.toString(hours) + u':';
    text += twoDigits(locale, seconds % 3600 / 60) + u':' + twoDigits(locale, seconds % 60);
    text.removeIf(isDirectionalFormatting);
    return text;
}
