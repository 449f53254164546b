// SPDX-License-Identifier: GPL-3.0-or-later
#include "rowtable.h"

#include <QDateTime>

#include <limits>

bool RowTable::append(Type type, QByteArrayView utf8)
{
    if (size_t(m_bytes.size()) + size_t(utf8.size()) > std::numeric_limits<quint32>::max())
        return false;
    m_bytes.append(utf8);
    m_ends.push_back(quint32(m_bytes.size()));
    m_types.push_back(type);
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
