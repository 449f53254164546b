// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "common/workerprotocol.h"

#include <cstdint>
#include <string_view>
#include <vector>

// Collects the fields of a reply. Texts are cut at a character's end where they are too long.
class ReplyWriter
{
public:
    void addNumber(WorkerProtocol::Field field, std::int64_t value);
    void addText(WorkerProtocol::Field field, std::string_view text);
    [[nodiscard]] const std::vector<std::uint8_t> &bytes() const { return m_bytes; }

private:
    void add(WorkerProtocol::Field field, const void *data, std::size_t size);

    std::vector<std::uint8_t> m_bytes;
};

// The start of `text` of at most `maximum` bytes that does not end inside a UTF-8 character.
[[nodiscard]] std::string_view cutText(std::string_view text, std::size_t maximum);
