// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbcreplyparser.h"

#include "resourceids.h"

#include <cstring>
#include <optional>

using namespace OdbcProtocol;

namespace {

constexpr quint32 s_mostColumns = 1024;

template <class Value> std::optional<Value> valueAt(QByteArrayView bytes)
{
    Value value;
    if (bytes.size() < qsizetype(sizeof value))
        return std::nullopt;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

std::optional<RowTable::Type> typeOf(CellType type)
{
    switch (type) {
    case CellType::Unbound:
        return RowTable::Type::Unbound;
    case CellType::Text:
        return RowTable::Type::Text;
    case CellType::Integer:
        return RowTable::Type::Integer;
    case CellType::Double:
        return RowTable::Type::Double;
    case CellType::DateTime:
        return RowTable::Type::DateTime;
    }
    return std::nullopt;
}

bool isAnswer(quint32 kind)
{
    return kind >= quint32(Answer::Started) && kind <= quint32(Answer::Failed);
}

} // namespace

OdbcReplyParser::OdbcReplyParser(bool isUpdate, const QList<int> &idColumns, ResourceIds &ids)
    : m_isUpdate(isUpdate),
      m_idColumns(idColumns),
      m_ids(ids)
{
}

OdbcReplyParser::State OdbcReplyParser::feed(QByteArrayView bytes)
{
    m_bytes.append(bytes);
    QByteArrayView rest(m_bytes);
    State state = State::Incomplete;
    while (state == State::Incomplete) {
        const std::optional<Header> header = valueAt<Header>(rest);
        if (!header)
            break;
        if (!isAnswer(header->kind) || header->bytes > MaximumFrameBytes)
            return State::Invalid;
        const qsizetype whole = qsizetype(sizeof(Header)) + qsizetype(header->bytes);
        if (rest.size() < whole)
            break;
        state = frame(header->kind, rest.sliced(sizeof(Header), header->bytes));
        rest = rest.sliced(whole);
    }
    // Nobody asked for more.
    if (state != State::Incomplete && !rest.isEmpty())
        return State::Invalid;
    m_bytes.remove(0, m_bytes.size() - rest.size());
    return state;
}

OdbcReplyParser::State OdbcReplyParser::frame(quint32 kind, QByteArrayView bytes)
{
    const auto going = [](bool isGood) { return isGood ? State::Incomplete : State::Invalid; };
    switch (Answer(kind)) {
    case Answer::Started:
        return going(!std::exchange(m_isStarted, true) && bytes.isEmpty());
    case Answer::Columns:
        return going(columns(bytes));
    case Answer::Cells:
        return going(m_hasColumns && cells(bytes));
    case Answer::Done:
        return m_isStarted && m_hasColumns != m_isUpdate && m_column == 0 && bytes.isEmpty() ? State::Done
                                                                                             : State::Invalid;
    case Answer::Failed:
        return failed(bytes) ? State::Failed : State::Invalid;
    }
    return State::Invalid;
}

bool OdbcReplyParser::columns(QByteArrayView bytes)
{
    const std::optional<quint32> count = valueAt<quint32>(bytes);
    if (!m_isStarted || m_isUpdate || m_hasColumns || bytes.size() != sizeof(quint32)
        || *count > s_mostColumns)
        return false;
    m_hasColumns = true;
    m_rows = RowTable(int(*count));
    return true;
}

bool OdbcReplyParser::cells(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const std::optional<CellHeader> header = valueAt<CellHeader>(bytes);
        if (!header || header->bytes > MaximumValueBytes
            || bytes.size() - qsizetype(sizeof(CellHeader)) < qsizetype(header->bytes))
            return false;
        bytes = bytes.sliced(sizeof(CellHeader));
        if (!cell(header->type, bytes.first(header->bytes)))
            return false;
        bytes = bytes.sliced(header->bytes);
    }
    return true;
}

bool OdbcReplyParser::cell(CellType type, QByteArrayView utf8)
{
    const std::optional<RowTable::Type> known = typeOf(type);
    if (!known || m_rows.columns() == 0)
        return false;
    const int column = std::exchange(m_column, (m_column + 1) % m_rows.columns());
    if (*known == RowTable::Type::Unbound)
        return utf8.isEmpty() && m_rows.append(*known, {});
    if (m_idColumns.contains(column))
        return m_rows.append(RowTable::Type::Integer,
                             QByteArray::number(m_ids.idOf(QString::fromUtf8(utf8))));
    return m_rows.append(*known, utf8);
}

bool OdbcReplyParser::failed(QByteArrayView bytes)
{
    const std::optional<Failure> failure = valueAt<Failure>(bytes);
    if (!failure || *failure < Failure::NotReached || *failure > Failure::Silent)
        return false;
    m_failure = *failure;
    m_error = QString::fromUtf8(bytes.sliced(sizeof(Failure)));
    return true;
}
