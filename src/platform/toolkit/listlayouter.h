// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRectF>
#include <QSizeF>

#include <algorithm>

namespace toolkit {

// Rows first to last; none when last is below first.
struct RowRange
{
    int first = 0;
    int last = -1;

    [[nodiscard]] bool contains(int row) const { return row >= first && row <= last; }
    [[nodiscard]] int count() const { return last < first ? 0 : last - first + 1; }
    friend bool operator==(const RowRange &, const RowRange &) = default;
};

// Where the cells of a list are. Pure geometry, in the list's coordinates, which begin `offset` below the top
// of the first row.
class ListLayouter
{
public:
    void setRowCount(int rows) { m_rows = std::max(0, rows); }
    void setColumns(int columns) { m_columns = std::max(1, columns); }
    void setCellSize(const QSizeF &size) { m_cell = size; }
    void setWidth(qreal width) { m_width = width; }
    // The cells of a wide list stay this narrow, in its middle.
    void setMaximumMeasure(qreal measure) { m_measure = measure; }
    // How wide a line of cells is.
    [[nodiscard]] qreal measure() const { return m_measure > 0 ? std::min(m_measure, m_width) : m_width; }
    void setMirrored(bool mirrored) { m_mirrored = mirrored; }
    void setOffset(qreal offset) { m_offset = offset; }

    [[nodiscard]] int rowCount() const { return m_rows; }
    [[nodiscard]] int columns() const { return m_columns; }
    [[nodiscard]] qreal offset() const { return m_offset; }
    [[nodiscard]] qreal height() const; // of all rows
    [[nodiscard]] QRectF cellRect(int row) const;
    // -1: beside the cells.
    [[nodiscard]] int rowAt(const QPointF &point) const;
    // Rows that a stretch from `top` down to `bottom` touches, with `margin` more cell heights on either
    // side.
    [[nodiscard]] RowRange rows(qreal top, qreal bottom, qreal margin = 0) const;

private:
    int m_rows = 0;
    int m_columns = 1;
    QSizeF m_cell{0, 0};
    qreal m_width = 0;
    qreal m_measure = 0;
    qreal m_offset = 0;
    bool m_mirrored = false;
};

} // namespace toolkit
