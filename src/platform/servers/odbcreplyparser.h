// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "odbcprotocol.h"

#include "platform/sparql/rowtable.h"

#include <QByteArray>
#include <QList>
#include <QString>

class ResourceIds;

// The answer of the helper program to one statement, out of pieces as they come. Believes nothing: whatever
// is not as it should be is Invalid.
class OdbcReplyParser
{
public:
    enum class State { Incomplete, Done, Failed, Invalid };

    // `idColumns`, from 0, hold numbers of `ids` instead of the IRIs that come.
    OdbcReplyParser(bool isUpdate, const QList<int> &idColumns, ResourceIds &ids);

    // The state after these bytes; nothing is fed after another one than Incomplete.
    [[nodiscard]] State feed(QByteArrayView bytes);

    // The server may have seen the statement.
    [[nodiscard]] bool isStarted() const { return m_isStarted; }
    [[nodiscard]] RowTable takeRows() { return std::move(m_rows); }
    // Once failed.
    [[nodiscard]] OdbcProtocol::Failure failure() const { return m_failure; }
    [[nodiscard]] QString error() const { return m_error; }

private:
    [[nodiscard]] State frame(quint32 kind, QByteArrayView bytes);
    [[nodiscard]] bool columns(QByteArrayView bytes);
    [[nodiscard]] bool cells(QByteArrayView bytes);
    [[nodiscard]] bool cell(OdbcProtocol::CellType type, QByteArrayView utf8);
    [[nodiscard]] bool failed(QByteArrayView bytes);

    QByteArray m_bytes; // of the frame that is not whole yet
    bool m_isUpdate;
    QList<int> m_idColumns;
    ResourceIds &m_ids;
    RowTable m_rows;
    bool m_isStarted = false;
    bool m_hasColumns = false;
    int m_column = 0; // of the next cell
    OdbcProtocol::Failure m_failure = OdbcProtocol::Failure::Refused;
    QString m_error;
};
