// SPDX-License-Identifier: GPL-3.0-or-later
#include "failedresult.h"

#include <QTimer>

FailedResult::FailedResult(const QString &message, QObject *parent) : SparqlResult(parent), m_message(message)
{
    QTimer::singleShot(0, this, [this] {
        m_finished = true;
        Q_EMIT finished();
    });
}

QVariant FailedResult::value(int column) const
{
    Q_UNUSED(column)
    return {};
}
