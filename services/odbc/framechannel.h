// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/servers/odbcprotocol.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct Frame
{
    std::uint32_t kind = 0;
    std::string bytes;
};

// Waits for the next frame. Nothing when the other side is gone or sends what is no frame.
[[nodiscard]] std::optional<Frame> readFrame(int descriptor);

// Writes answers. Waits while nobody reads; when nobody will, the process ends.
class AnswerWriter
{
public:
    explicit AnswerWriter(int descriptor) : m_descriptor(descriptor) { }

    void started();
    void columns(std::uint32_t count);
    // Goes out with others: when enough of them are together, when a second has passed since the last time,
    // or with the end of the answer.
    void cell(OdbcProtocol::CellType type, std::string_view utf8);
    void done();
    void failed(OdbcProtocol::Failure failure, std::string_view text);

private:
    void write(OdbcProtocol::Answer kind, std::string_view bytes) const;
    void flushCells();

    int m_descriptor;
    std::string m_cells;
    std::int64_t m_flushedAt = 0; // milliseconds
};
