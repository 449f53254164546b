// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

// Appends characters of four bytes (native order, not aligned) as UTF-8. What is no character becomes U+FFFD.
void appendUtf8(std::string &text, std::string_view wide);
