// SPDX-License-Identifier: GPL-3.0-or-later
#include "jsontext.h"

namespace json {

// -?int frac? exp?
bool isNumber(QByteArrayView text)
{
    const char *at = text.begin();
    const char *end = text.end();
    const auto digits = [&] {
        const char *first = at;
        while (at < end && isDigit(*at))
            ++at;
        return at > first;
    };
    const auto take = [&](QByteArrayView any) {
        const bool matches = at < end && any.contains(*at);
        at += matches ? 1 : 0;
        return matches;
    };
    take("-");
    if (!take("0") && !digits())
        return false;
    if (take(".") && !digits())
        return false;
    if (take("eE")) {
        take("+-");
        if (!digits())
            return false;
    }
    return at == end;
}

char unescaped(char c)
{
    switch (c) {
    case '"':
    case '\\':
    case '/':
        return c;
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return '\0';
    }
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

void appendUtf8(QByteArray &text, char32_t code)
{
    const auto tail = [&](unsigned shift) { return char(0x80U | ((code >> shift) & 0x3FU)); };
    if (code < 0x80)
        text.append(char(code));
    else if (code < 0x800)
        text.append(char(0xC0U | (code >> 6U))).append(tail(0));
    else if (code < 0x10000)
        text.append(char(0xE0U | (code >> 12U))).append(tail(6)).append(tail(0));
    else
        text.append(char(0xF0U | (code >> 18U))).append(tail(12)).append(tail(6)).append(tail(0));
}

} // namespace json
