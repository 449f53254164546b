// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>

// The small change of JSON's grammar.
namespace json {

[[nodiscard]] inline bool isSpace(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

[[nodiscard]] inline bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

[[nodiscard]] bool isNumber(QByteArrayView text);

// What stands behind a backslash; NUL when nothing may be written so.
[[nodiscard]] char unescaped(char c);

// -1 when it is none.
[[nodiscard]] int hexDigit(char c);

void appendUtf8(QByteArray &text, char32_t code);

} // namespace json
