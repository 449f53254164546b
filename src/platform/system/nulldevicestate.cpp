// SPDX-License-Identifier: GPL-3.0-or-later
#include "nulldevicestate.h"

#include "systemlog.h"

namespace {
enum LockState { LockOpen = 0, LockUnknown = 2 };
constexpr int KeyLock = 1;
constexpr int DisplayOn = 1;
constexpr int NoCall = 0;
} // namespace

NullLockWatcher::NullLockWatcher(QObject *parent) : LockWatcher(parent)
{
    qCInfo(systemLog, "no source of lock state: the device counts as unlocked");
}

int NullLockWatcher::state(int lock) const
{
    return lock >= 0 && lock <= KeyLock ? LockOpen : LockUnknown;
}

NullDisplayWatcher::NullDisplayWatcher(QObject *parent) : DisplayWatcher(parent)
{
    qCInfo(systemLog, "no source of display state: the display counts as on");
}

int NullDisplayWatcher::state() const
{
    return DisplayOn;
}

NullCallMonitor::NullCallMonitor(QObject *parent) : CallMonitor(parent)
{
    qCInfo(systemLog, "no source of call state: no call counts as active");
}

int NullCallMonitor::getState() const
{
    return NoCall;
}

bool NullUsbMode::isMassStorage() const
{
    return false;
}

NullContextProperty::NullContextProperty(const QString &key, QObject *parent)
    : ContextProperty(parent),
      m_key(key)
{
}

void NullContextProperty::subscribe()
{
    qCInfo(systemLog, "no key-value store: %ls has no value", qUtf16Printable(m_key));
}

void NullContextProperty::unsubscribe() { }

QVariant NullContextProperty::value() const
{
    return {};
}

void NullBacklightControl::set(int mode)
{
    qCDebug(systemLog, "no content-adaptive backlight: mode %d dropped", mode);
}
