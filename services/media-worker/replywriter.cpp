// SPDX-License-Identifier: GPL-3.0-or-later
#include "replywriter.h"

std::string_view cutText(std::string_view text, std::size_t maximum)
{
    if (text.size() <= maximum)
        return text;
    std::size_t end = maximum;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80)
        --end;
    return text.substr(0, end);
}

void ReplyWriter::add(WorkerProtocol::Field field, const void *data, std::size_t size)
{
    const WorkerProtocol::FieldHeader header{static_cast<std::uint16_t>(field),
                                             static_cast<std::uint16_t>(size)};
    const auto append = [this](const void *from, std::size_t count) {
        const auto *bytes = static_cast<const std::uint8_t *>(from);
        m_bytes.insert(m_bytes.end(), bytes, bytes + count);
    };
    append(&header, sizeof header);
    append(data, size);
}

void ReplyWriter::addNumber(WorkerProtocol::Field field, std::int64_t value)
{
    add(field, &value, sizeof value);
}

void ReplyWriter::addText(WorkerProtocol::Field field, std::string_view text)
{
    using namespace WorkerProtocol;
    const std::string_view cut
        = cutText(text, field == Field::Synopsis ? MaximumSynopsisBytes : MaximumTextBytes);
    if (!cut.empty())
        add(field, cut.data(), cut.size());
}
