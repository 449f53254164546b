// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

// What goes between the driver for Virtuoso servers and its helper program, by the helper's standard input
// and output. Both are built together and run on one machine, so the integers are native. A frame is a Header
// and its bytes. The driver trusts nothing that comes back: see odbcreplyparser.h.
namespace OdbcProtocol {

// What either side may say in one frame. More is broken.
constexpr std::uint32_t MaximumFrameBytes = 256u << 20;

// The longest value of a cell, as UTF-8. A query that gives a longer one fails: a list is no place for it.
constexpr std::uint32_t MaximumValueBytes = 1u << 20;

enum class Request : std::uint32_t {
    // Seconds that the server has for anything (32 bits), four strings (driver, server, user, password), and
    // zeros.
    Open = 1,
    Query = 2, // the text
    Update = 3, // the text
    Cancel = 4, // the statement under way is no longer wanted; it is answered all the same
};

// A query is answered by Started, Columns, any number of Cells and Done; an update by Started and Done.
// Failed may come instead of each, and is the last.
enum class Answer : std::uint32_t {
    Started = 11, // the server is about to see the statement
    Columns = 12, // how many (32 bits)
    Cells = 13, // row by row, not cut at the end of a row: CellHeader and bytes
    Done = 14,
    Failed = 15, // a Failure (32 bits), then one line of text
};

enum class Failure : std::uint32_t { NotReached = 1, Refused = 2, Busy = 3, Lost = 4, Silent = 5 };

enum class CellType : std::uint32_t { Unbound = 0, Text = 1, Integer = 2, Double = 3, DateTime = 4 };

struct Header
{
    std::uint32_t kind = 0;
    std::uint32_t bytes = 0;
};

struct CellHeader
{
    CellType type = CellType::Unbound;
    std::uint32_t bytes = 0; // of UTF-8
};

} // namespace OdbcProtocol
