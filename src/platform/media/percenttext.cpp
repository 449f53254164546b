// SPDX-License-Identifier: GPL-3.0-or-later
#include "percenttext.h"

#include <QLocale>

#include <array>
#include <memory>

#include <unicode/unum.h>

// QLocale has the sign, but not where it stands.
QString percentText(double share)
{
    UErrorCode status = U_ZERO_ERROR;
    const QByteArray locale = QLocale().name().toLatin1();
    const std::unique_ptr<UNumberFormat, decltype(&unum_close)> format(
        unum_open(UNUM_PERCENT, nullptr, 0, locale.constData(), nullptr, &status), unum_close);
    std::array<UChar, 32> text = {};
    int length = 0;
    if (U_SUCCESS(status)) {
        unum_setAttribute(format.get(), UNUM_MAX_FRACTION_DIGITS, 0);
        length = unum_formatDouble(format.get(), share, text.data(), int(text.size()), nullptr, &status);
    }
    if (U_FAILURE(status) || length > int(text.size()))
        return QLocale().toString(share * 100, 'f', 0) + QLocale().percent();
    return QString::fromUtf16(text.data(), length);
}
