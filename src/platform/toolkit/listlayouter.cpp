// SPDX-License-Identifier: GPL-3.0-or-later
#include "listlayouter.h"

#include <algorithm>
#include <cmath>

namespace toolkit {

qreal ListLayouter::height() const
{
    const int lines = (m_rows + m_columns - 1) / m_columns;
    return lines * m_cell.height();
}

QRectF ListLayouter::cellRect(int row) const
{
    const qreal width = measure() / m_columns;
    const int column = row % m_columns;
    const qreal left = (m_width - measure()) / 2;
    return {left + width * (m_mirrored ? m_columns - 1 - column : column),
            (row / m_columns) * m_cell.height() - m_offset, width, m_cell.height()};
}

int ListLayouter::rowAt(const QPointF &point) const
{
    const qreal y = point.y() + m_offset;
    if (m_cell.height() <= 0 || y < 0 || y >= height())
        return -1;
    const int line = int(y / m_cell.height());
    for (int row = line * m_columns; row < std::min(m_rows, (line + 1) * m_columns); ++row) {
        if (cellRect(row).contains(point))
            return row;
    }
    return -1;
}

RowRange ListLayouter::rows(qreal top, qreal bottom, qreal margin) const
{
    if (m_rows == 0 || m_cell.height() <= 0 || bottom <= top)
        return {};
    const qreal more = margin * m_cell.height();
    const qreal from = top + m_offset - more;
    const qreal to = bottom + m_offset + more;
    if (to <= 0 || from >= height())
        return {};
    const int firstLine = std::max(0, int(std::floor(from / m_cell.height())));
    const int lastLine = std::max(firstLine, int(std::ceil(to / m_cell.height())) - 1);
    return {firstLine * m_columns, std::min(m_rows, (lastLine + 1) * m_columns) - 1};
}

} // namespace toolkit
