// SPDX-License-Identifier: GPL-3.0-or-later
#include "rowtable.h"

#include "loosetext.h"

#include <QDateTime>

#include <cstring>
#include <limits>
#include <vector>

namespace {

// As QByteArrayView::toInt(), which looks at a locale for every number.
int smallNumber(QByteArrayView digits)
{
    constexpr qsizetype mostDigits = 9;
    if (digits.size() > mostDigits)
        return digits.toInt();
    int number = 0;
    for (const char digit : digits) {
        if (digit < '0' || digit > '9')
            return digits.toInt();
        number = 10 * number + (digit - '0');
    }
    return number;
}

} // namespace

bool RowTable::append(Type type, QByteArrayView utf8)
{
    if (m_bytes.size() + size_t(utf8.size()) > std::numeric_limits<quint32>::max()
        || m_ends.size() >= mostCells)
        return false;
    m_bytes.append(utf8.data(), size_t(utf8.size()));
    m_ends.append(quint32(m_bytes.size()));
    m_types.append(type);
    return true;
}

// `to` is not behind `from`, and all rows before it are in their places.
void RowTable::moveRow(int from, int to)
{
    if (from == to)
        return;
    size_t source = size_t(from) * size_t(m_columns);
    size_t target = size_t(to) * size_t(m_columns);
    quint32 begin = m_ends[source - 1]; // before the ends around it are overwritten
    for (int column = 0; column < m_columns; ++column, ++source, ++target) {
        const quint32 end = m_ends[source];
        const quint32 place = target == 0 ? 0 : m_ends[target - 1];
        std::memmove(m_bytes.data() + place, m_bytes.data() + begin, end - begin);
        m_ends[target] = place + end - begin;
        m_types[target] = m_types[source];
        begin = end;
    }
}

void RowTable::truncate(int rows)
{
    const size_t cells = size_t(rows) * size_t(m_columns);
    m_ends.truncate(cells);
    m_types.truncate(cells);
    m_bytes.truncate(cells == 0 ? 0 : m_ends[cells - 1]);
}

void RowTable::removeRepeated(int column)
{
    if (column < 0 || column >= m_columns)
        return;
    std::vector<bool> seen;
    int kept = 0;
    const int all = rows();
    for (int row = 0; row < all; ++row) {
        const int number = smallNumber(bytes(size_t(row) * size_t(m_columns) + size_t(column)));
        if (number > 0) {
            if (seen.size() <= size_t(number))
                seen.resize(size_t(number) + 1);
            if (seen[size_t(number)])
                continue;
            seen[size_t(number)] = true;
        }
        moveRow(row, kept++);
    }
    if (kept < all)
        truncate(kept);
}

bool RowTable::appendRows(const RowTable &other)
{
    Q_ASSERT(m_columns == other.m_columns);
    if (m_bytes.size() + other.m_bytes.size() > std::numeric_limits<quint32>::max()
        || m_ends.size() + other.m_ends.size() > mostCells)
        return false;
    const auto base = quint32(m_bytes.size());
    m_bytes.append(other.m_bytes.data(), other.m_bytes.size());
    for (size_t cell = 0; cell < other.m_ends.size(); ++cell)
        m_ends.append(base + other.m_ends[cell]);
    m_types.append(other.m_types.data(), other.m_types.size());
    return true;
}

QByteArrayView RowTable::utf8(int row, int column) const
{
    return contains(row, column) ? bytes(size_t(row) * size_t(m_columns) + size_t(column)) : QByteArrayView();
}

bool RowTable::contains(int row, int column) const
{
    return row >= 0 && row < rows() && column >= 0 && column < m_columns;
}

QByteArrayView RowTable::bytes(size_t cell) const
{
    const quint32 begin = cell == 0 ? 0 : m_ends[cell - 1];
    return QByteArrayView(m_bytes.data() + begin, qsizetype(m_ends[cell] - begin));
}

QString RowTable::text(int row, int column) const
{
    if (!contains(row, column))
        return {};
    const size_t cell = size_t(row) * size_t(m_columns) + size_t(column);
    if (m_types[cell] == Type::Unbound)
        return {};
    const QByteArrayView utf8 = bytes(cell);
    return utf8.isEmpty() ? QStringLiteral("") : fromLooseUtf8(utf8);
}

QVariant RowTable::value(int row, int column) const
{
    if (!contains(row, column))
        return {};
    const size_t cell = size_t(row) * size_t(m_columns) + size_t(column);
    switch (m_types[cell]) {
    case Type::Unbound:
        return {};
    case Type::Integer:
        return bytes(cell).toLongLong();
    case Type::Double:
        return bytes(cell).toDouble();
    case Type::Boolean:
        return bytes(cell) == "true";
    case Type::DateTime: {
        const QString text = QString::fromLatin1(bytes(cell));
        const QDateTime when = QDateTime::fromString(text, Qt::ISODateWithMs);
        return when.isValid() ? QVariant(when) : QVariant(text);
    }
    case Type::Text:
        break;
    }
    return text(row, column);
}
