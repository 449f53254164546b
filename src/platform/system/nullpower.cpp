// SPDX-License-Identifier: GPL-3.0-or-later
#include "nullpower.h"

#include "systemlog.h"

NullSleepWatcher::NullSleepWatcher(QObject *parent) : SleepWatcher(parent)
{
    qCInfo(systemLog, "no system bus: nobody tells before the device sleeps");
}

NullIdleInhibitor::NullIdleInhibitor(QObject *parent) : IdleInhibitor(parent)
{
    qCInfo(systemLog, "no session bus: the display cannot be kept on");
}

void NullIdleInhibitor::setInhibited(bool inhibited, const QString &reason)
{
    Q_UNUSED(reason)
    m_inhibited = inhibited;
}
