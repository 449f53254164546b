// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/simulateddevice.h"

namespace {
SimulatedDevice *s_device = nullptr;
}

class FakeLockWatcher : public LockWatcher
{
public:
    explicit FakeLockWatcher(QObject *parent) : LockWatcher(parent) { s_device->m_lockWatchers.append(this); }
    ~FakeLockWatcher() override
    {
        if (s_device)
            s_device->m_lockWatchers.removeOne(this);
    }
    [[nodiscard]] int state(int lock) const override
    {
        return lock == 0 || lock == 1 ? s_device->m_locks[lock] : 2;
    }
};

class FakeDisplayWatcher : public DisplayWatcher
{
public:
    explicit FakeDisplayWatcher(QObject *parent) : DisplayWatcher(parent)
    {
        s_device->m_displayWatchers.append(this);
    }
    ~FakeDisplayWatcher() override
    {
        if (s_device)
            s_device->m_displayWatchers.removeOne(this);
    }
    [[nodiscard]] int state() const override { return s_device->m_display; }
};

class FakeSleepWatcher : public SleepWatcher
{
public:
    explicit FakeSleepWatcher(QObject *parent) : SleepWatcher(parent)
    {
        s_device->m_sleepWatchers.append(this);
        s_device->m_holding = !s_device->m_cannotDelay;
    }
    ~FakeSleepWatcher() override
    {
        if (s_device)
            s_device->m_sleepWatchers.removeOne(this);
    }
    [[nodiscard]] bool isHolding() const override { return s_device->m_holding; }
    void release() override
    {
        ++s_device->m_releases;
        s_device->m_holding = false;
    }
};

class FakeIdleInhibitor : public IdleInhibitor
{
public:
    using IdleInhibitor::IdleInhibitor;
    void setInhibited(bool inhibited, const QString &reason) override
    {
        s_device->m_inhibited = inhibited;
        s_device->m_idleRequests.append(inhibited ? u'+' + reason : QStringLiteral("-"));
    }
    [[nodiscard]] bool isInhibited() const override { return s_device->m_inhibited; }
};

SimulatedDevice::SimulatedDevice()
{
    s_device = this;
    DeviceStateOverrides overrides = deviceStateOverrides();
    overrides.lock = [](QObject *parent) -> LockWatcher * { return new FakeLockWatcher(parent); };
    overrides.display = [](QObject *parent) -> DisplayWatcher * { return new FakeDisplayWatcher(parent); };
    overrides.sleep = [](QObject *parent) -> SleepWatcher * { return new FakeSleepWatcher(parent); };
    overrides.idle = [](QObject *parent) -> IdleInhibitor * { return new FakeIdleInhibitor(parent); };
    setDeviceStateOverrides(overrides);
}

SimulatedDevice::~SimulatedDevice()
{
    DeviceStateOverrides overrides = deviceStateOverrides();
    overrides.lock = nullptr;
    overrides.display = nullptr;
    overrides.sleep = nullptr;
    overrides.idle = nullptr;
    setDeviceStateOverrides(overrides);
    s_device = nullptr;
}

template <typename Change> void SimulatedDevice::tell(Change change)
{
    if (m_delay.count() == 0)
        change();
    else
        QTimer::singleShot(m_delay, &m_context, change);
}

void SimulatedDevice::setLock(int lock, int state)
{
    tell([this, lock, state] {
        m_locks[lock] = state;
        for (FakeLockWatcher *watcher : std::as_const(m_lockWatchers))
            Q_EMIT watcher->stateChanged(lock, state);
    });
}

void SimulatedDevice::setDisplay(int state)
{
    tell([this, state] {
        m_display = state;
        for (FakeDisplayWatcher *watcher : std::as_const(m_displayWatchers))
            Q_EMIT watcher->stateChanged(state);
    });
}

void SimulatedDevice::lose()
{
    tell([this] { m_holding = false; });
    for (const int lock : {0, 1})
        setLock(lock, 0);
    setDisplay(1);
}

void SimulatedDevice::announceSleep()
{
    tell([this] {
        for (FakeSleepWatcher *watcher : std::as_const(m_sleepWatchers))
            Q_EMIT watcher->aboutToSleep();
    });
}

void SimulatedDevice::wake()
{
    tell([this] {
        m_holding = !m_cannotDelay;
        for (FakeSleepWatcher *watcher : std::as_const(m_sleepWatchers))
            Q_EMIT watcher->wokeUp();
    });
}
