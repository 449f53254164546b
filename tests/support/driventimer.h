// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QTimer>
#include <QTimerEvent>

// Lets a running timer run out now, as its event loop would. False when it does not run.
inline bool runOut(QTimer *timer)
{
    if (!timer || !timer->isActive())
        return false;
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
    return true;
}
