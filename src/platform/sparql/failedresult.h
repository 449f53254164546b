// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sparqlresult.h"

// The answer to a statement that could not even be sent: its error stands at once.
class FailedResult : public SparqlResult
{
    Q_OBJECT

public:
    explicit FailedResult(const QString &message, QObject *parent = nullptr);

    [[nodiscard]] bool hasError() const override { return true; }
    [[nodiscard]] QString errorMessage() const override { return m_message; }
    [[nodiscard]] bool isFinished() const override { return m_finished; }
    bool next() override { return false; }
    [[nodiscard]] QVariant value(int column) const override;
    [[nodiscard]] int size() const override { return 0; }

private:
    QString m_message;
    bool m_finished = false;
};
