// SPDX-License-Identifier: GPL-3.0-or-later
#include "outstandingupdates.h"

#include "sparqldriver.h"
#include "sparqllog.h"

#include <QEventLoop>
#include <QTimer>

OutstandingUpdates &OutstandingUpdates::instance()
{
    static OutstandingUpdates updates;
    return updates;
}

void OutstandingUpdates::change(int by)
{
    m_count += by;
    if (m_count == 0)
        Q_EMIT noneLeft();
}

bool OutstandingUpdates::wait(int timeoutMs)
{
    if (m_count == 0)
        return true;
    QEventLoop loop;
    connect(this, &OutstandingUpdates::noneLeft, &loop, &QEventLoop::quit);
    QTimer::singleShot(timeoutMs, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (m_count > 0)
        qCWarning(lcSparql) << m_count << "updates were not acknowledged within" << timeoutMs << "ms";
    return m_count == 0;
}

bool sparqlWaitForUpdates(int timeoutMs)
{
    return OutstandingUpdates::instance().wait(timeoutMs);
}
