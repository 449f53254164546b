// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"
#include "sleepwatcher.h"

#include <QDBusUnixFileDescriptor>

// Holds logind's delay lock on sleep, and gives it back when the work before a sleep is done.
class LogindSleepWatcher : public SleepWatcher
{
    Q_OBJECT

public:
    LogindSleepWatcher(const QDBusConnection &systemBus, const QString &reason, QObject *parent);
    [[nodiscard]] bool isHolding() const override { return m_lock.isValid(); }
    void release() override;

private:
    void take();
    void taken(const QDBusMessage &reply);
    void hear(const QDBusMessage &message);
    void prepareForSleep();
    void wakeUp();

    BusPeer m_logind;
    QString m_reason;
    QDBusUnixFileDescriptor m_lock;
    bool m_asked = false; // for the lock, without an answer yet
    bool m_sleeping = false; // from the announcement to the waking
    bool m_released = false; // for this sleep
};
