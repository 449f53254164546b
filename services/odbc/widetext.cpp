// SPDX-License-Identifier: GPL-3.0-or-later
#include "widetext.h"

#include <cstring>

namespace {

void appendCharacter(std::string &text, char32_t character)
{
    const auto tail = [&](int shift) { return char(0x80 | ((character >> shift) & 0x3f)); };
    if (character < 0x80) {
        text += char(character);
    } else if (character < 0x800) {
        text += char(0xc0 | (character >> 6));
        text += tail(0);
    } else if (character < 0x10000) {
        text += char(0xe0 | (character >> 12));
        text += tail(6);
        text += tail(0);
    } else {
        text += char(0xf0 | (character >> 18));
        text += tail(12);
        text += tail(6);
        text += tail(0);
    }
}

} // namespace

void appendUtf8(std::string &text, std::string_view wide)
{
    for (; wide.size() >= sizeof(char32_t); wide.remove_prefix(sizeof(char32_t))) {
        char32_t character = 0;
        std::memcpy(&character, wide.data(), sizeof character);
        const bool isCharacter = character <= 0x10ffff && (character < 0xd800 || character > 0xdfff);
        appendCharacter(text, isCharacter ? character : char32_t(0xfffd));
    }
}
