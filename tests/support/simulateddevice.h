// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/system/devicestate.h"
#include "platform/system/idleinhibitor.h"
#include "platform/system/sleepwatcher.h"

#include <QList>
#include <QString>
#include <QTimer>

#include <chrono>

// The device as a test says it is: locks, display, sleep and idleness. One set a process; every back end that
// is made while it is installed shows it.
//
//     SimulatedDevice device;                       // installs itself, beside the overrides that stand
//     device.setLock(0, 1);                    // told at once ...
//     device.setDelay(20ms); device.setDisplay(0); // ... or late
//     device.announceSleep(); ... QTRY_VERIFY(!device.isHolding());
class SimulatedDevice
{
public:
    SimulatedDevice();
    ~SimulatedDevice();
    Q_DISABLE_COPY_MOVE(SimulatedDevice)

    // Changes are told this late; zero: at once.
    void setDelay(std::chrono::milliseconds delay) { m_delay = delay; }

    void setLock(int lock, int state);
    void setDisplay(int state);

    // Every service goes: open, on, nothing held.
    void lose();

    // The sleep service is not there, or refuses to wait: aboutToSleep() comes, and nothing is held.
    void setSleepCannotBeDelayed(bool cannot) { m_cannotDelay = cannot; }
    void announceSleep();
    void wake(); // also: the sleep was called off
    [[nodiscard]] bool isHolding() const { return m_holding; }
    [[nodiscard]] int releases() const { return m_releases; }

    [[nodiscard]] bool isIdleInhibited() const { return m_inhibited; }
    // Every request in order: "+reason" and "-".
    [[nodiscard]] QStringList idleRequests() const { return m_idleRequests; }

private:
    friend class FakeLockWatcher;
    friend class FakeDisplayWatcher;
    friend class FakeSleepWatcher;
    friend class FakeIdleInhibitor;
    template <typename Change> void tell(Change change);

    QList<class FakeLockWatcher *> m_lockWatchers;
    QList<class FakeDisplayWatcher *> m_displayWatchers;
    QList<class FakeSleepWatcher *> m_sleepWatchers;
    QObject m_context; // of what is told late
    std::chrono::milliseconds m_delay{0};
    int m_locks[2] = {0, 0};
    int m_display = 1;
    bool m_cannotDelay = false;
    bool m_holding = false;
    int m_releases = 0;
    bool m_inhibited = false;
    QStringList m_idleRequests;
};
