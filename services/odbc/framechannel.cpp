// SPDX-License-Identifier: GPL-3.0-or-later
#include "framechannel.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <sys/uio.h>
#include <unistd.h>

using namespace OdbcProtocol;

namespace {

// What a pipe holds: the reader is woken once for it, and both work at the same time.
constexpr std::size_t s_cellsTogether = 64 * 1024 - sizeof(Header);
constexpr std::int64_t s_longestHoldMs = 1000;

std::int64_t now()
{
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(sinceBoot).count();
}

bool readAll(int descriptor, char *to, std::size_t bytes)
{
    while (bytes > 0) {
        const ssize_t got = read(descriptor, to, bytes);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        to += got;
        bytes -= std::size_t(got);
    }
    return true;
}

template <class Value> std::string_view bytesOf(const Value &value)
{
    return {reinterpret_cast<const char *>(&value), sizeof value};
}

} // namespace

std::optional<Frame> readFrame(int descriptor)
{
    Header header;
    if (!readAll(descriptor, reinterpret_cast<char *>(&header), sizeof header)
        || header.bytes > MaximumFrameBytes)
        return std::nullopt;
    Frame frame{header.kind, std::string(header.bytes, '\0')};
    if (!readAll(descriptor, frame.bytes.data(), frame.bytes.size()))
        return std::nullopt;
    return frame;
}

void AnswerWriter::started()
{
    m_flushedAt = now();
    write(Answer::Started, {});
}

void AnswerWriter::columns(std::uint32_t count)
{
    write(Answer::Columns, bytesOf(count));
}

void AnswerWriter::cell(CellType type, std::string_view utf8)
{
    const CellHeader header{type, std::uint32_t(utf8.size())};
    m_cells.append(bytesOf(header)).append(utf8);
    if (m_cells.size() >= s_cellsTogether || now() - m_flushedAt > s_longestHoldMs)
        flushCells();
}

void AnswerWriter::flushCells()
{
    if (!m_cells.empty())
        write(Answer::Cells, m_cells);
    m_cells.clear();
    m_flushedAt = now();
}

void AnswerWriter::done()
{
    flushCells();
    write(Answer::Done, {});
}

void AnswerWriter::failed(Failure failure, std::string_view text)
{
    m_cells.clear();
    write(Answer::Failed, std::string(bytesOf(failure)).append(text));
}

void AnswerWriter::write(Answer kind, std::string_view bytes) const
{
    Header header{std::uint32_t(kind), std::uint32_t(bytes.size())};
    std::array<iovec, 2> parts{{{&header, sizeof header}, {const_cast<char *>(bytes.data()), bytes.size()}}};
    std::size_t part = 0;
    while (part < parts.size()) {
        ssize_t written = writev(m_descriptor, &parts[part], int(parts.size() - part));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            _exit(0); // who asked is gone
        for (; part < parts.size() && std::size_t(written) >= parts[part].iov_len; ++part)
            written -= ssize_t(parts[part].iov_len);
        if (part < parts.size()) {
            parts[part].iov_base = static_cast<char *>(parts[part].iov_base) + written;
            parts[part].iov_len -= std::size_t(written);
        }
    }
}
