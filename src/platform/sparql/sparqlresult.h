// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "rowtable.h"

#include <QObject>
#include <QString>
#include <QVariant>

// The asynchronous answer to one statement. A driver derives from it. Owned by the caller once exec()
// returned it (its parent is the connection, so an unreleased result dies with that); release it with
// deleteLater().
class SparqlResult : public QObject
{
    Q_OBJECT

public:
    explicit SparqlResult(QObject *parent = nullptr);
    ~SparqlResult() override;

    // Non-zero, unique while the process lives (until 2^31 results were made).
    [[nodiscard]] int id() const { return m_id; }

    // True when the statement failed: at once after exec(), or later by the time of finished().
    [[nodiscard]] virtual bool hasError() const = 0;
    [[nodiscard]] virtual QString errorMessage() const = 0;
    [[nodiscard]] virtual bool isFinished() const = 0;

    // Steps to the next row; the first call steps to the first row. Only after finished(): all rows are local
    // by then.
    virtual bool next() = 0;
    // Column of the current row: a QString, or a number, or a QDateTime, each convertible as QVariant
    // converts. Invalid when the column is unbound or out of range.
    [[nodiscard]] virtual QVariant value(int column) const = 0;
    // The same as text, without building a QVariant; null when unbound.
    [[nodiscard]] virtual QString stringValue(int column) const { return value(column).toString(); }
    // The first `columns` of all rows from the present one on, packed; the result has no rows afterwards.
    // What does not fit into a table is left out.
    [[nodiscard]] virtual RowTable takeTable(int columns);
    // Number of rows, once finished.
    [[nodiscard]] virtual int size() const = 0;

Q_SIGNALS:
    // Exactly once, through the event loop, never from within exec().
    void finished();

private:
    const int m_id;
};
