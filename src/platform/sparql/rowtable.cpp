// SPDX-License-Identifier: GPL-3.0-or-later
#include "rowtable.h"

#include <QDateTime>

#include <cstring>
#include <limits>

bool RowTable::append(Type type, QByteArrayView utf8)
{
    if (size_t(m_bytes.size()) + size_t(utf8.size()) > std::numeric_limits<quint32>::max()
        || m_ends.size() >= mostCells)
        return false;
    m_bytes.append(utf8);
    m_ends.push_back(quint32(m_bytes.size()));
    m_types.push_back(type);
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
        std::memmove(m_bytes.data() + place, m_bytes.constData() + begin, end - begin);
        m_ends[target] = place + end - begin;
        m_types[target] = m_types[source];
        begin = end;
    }
}

void RowTable::truncate(int rows)
{
    const size_t cells = size_t(rows) * size_t(m_columns);
    m_ends.resize(cells);
    m_types.resize(cells);
    m_bytes.truncate(cells == 0 ? 0 : qsizetype(m_ends.back()));
}

void RowTable::removeRepeated(int column)
{
    if (column < 0 || column >= m_columns)
        return;
    std::vector<bool> seen;
    int kept = 0;
    const int all = rows();
    for (int row = 0; row < all; ++row) {
        const int number = bytes(size_t(row) * size_t(m_columns) + size_t(column)).toInt();
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
    if (size_t(m_bytes.size()) + size_t(other.m_bytes.size()) > std::numeric_limits<quint32>::max()
        || m_ends.size() + other.m_ends.size() > mostCells)
        return false;
    const auto base = quint32(m_bytes.size());
    m_bytes.append(other.m_bytes);
    for (const quint32 end : other.m_ends)
        m_ends.push_back(base + end);
    m_types.insert(m_types.end(), other.m_types.begin(), other.m_types.end());
    return true;
}

bool RowTable::contains(int row, int column) const
{
    return row >= 0 && row < rows() && column >= 0 && column < m_columns;
}

QByteArrayView RowTable::bytes(size_t cell) const
{
    const quint32 begin = cell == 0 ? 0 : m_ends[cell - 1];
    return QByteArrayView(m_bytes).sliced(begin, m_ends[cell] - begin);
}

QString RowTable::text(int row, int column) const
{
    if (!contains(row, column))
        return {};
    const size_t cell = size_t(row) * size_t(m_columns) + size_t(column);
    if (m_types[cell] == Type::Unbound)
        return {};
    const QByteArrayView utf8 = bytes(cell);
    return utf8.isEmpty() ? QStringLiteral("") : QString::fromUtf8(utf8);
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
