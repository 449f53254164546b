// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "growingarray.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

// The rows of one answer, packed: all texts one behind the other as UTF-8, five bytes beside each.
class RowTable
{
public:
    enum class Type : quint8 { Unbound, Text, Integer, Double, DateTime, Boolean };

    RowTable() = default;
    explicit RowTable(int columns) : m_columns(columns) { }

    // Cells without a text take memory, too.
    static constexpr size_t mostCells = size_t(1) << 28;

    // Cells come row by row. False when the table is full (4 GiB of text, or mostCells).
    [[nodiscard]] bool append(Type type, QByteArrayView utf8);
    // Keeps the first of all rows with the same number in `column`, and every row without one. Numbers count
    // from 1: a bit is held for each up to the greatest.
    void removeRepeated(int column);

    // All rows of another table with as many columns. False when the table is full, which it then stays.
    [[nodiscard]] bool appendRows(const RowTable &other);

    [[nodiscard]] int columns() const { return m_columns; }
    [[nodiscard]] qsizetype textBytes() const { return qsizetype(m_bytes.size()); }
    [[nodiscard]] int rows() const { return m_columns > 0 ? int(m_ends.size() / size_t(m_columns)) : 0; }

    // As it came, empty when unbound or out of range; lives as long as the table is not changed.
    [[nodiscard]] QByteArrayView utf8(int row, int column) const;
    // Null when unbound or out of range.
    [[nodiscard]] QString text(int row, int column) const;
    [[nodiscard]] QVariant value(int row, int column) const;

private:
    [[nodiscard]] bool contains(int row, int column) const;
    [[nodiscard]] QByteArrayView bytes(size_t cell) const;
    void moveRow(int from, int to);
    void truncate(int rows);

    int m_columns = 0;
    GrowingArray<char> m_bytes;
    GrowingArray<quint32> m_ends;
    GrowingArray<Type> m_types;
};
