// SPDX-License-Identifier: GPL-3.0-or-later
#include "timetext.h"

namespace {

QString number(qint64 value, int digits, const QLocale &locale)
{
    QLocale plain(locale);
    plain.setNumberOptions(QLocale::OmitGroupSeparator);
    return plain.toString(value).rightJustified(digits, locale.zeroDigit().front());
}

} // namespace

QString timeText(qint64 seconds, const QLocale &locale, bool negative)
{
    const qint64 time = qMax<qint64>(0, seconds);
    QString text = number(time / 60 % 60, 2, locale) + u':' + number(time % 60, 2, locale);
    if (time >= 3600)
        text.prepend(number(time / 3600, 1, locale) + u':');
    if (negative)
        text.prepend(locale.negativeSign());
    return text;
}

QString signedTimeText(qint64 seconds, const QLocale &locale)
{
    return seconds < 0 ? timeText(-seconds, locale, true) : locale.positiveSign() + timeText(seconds, locale);
}
