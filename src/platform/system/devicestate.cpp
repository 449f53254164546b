// SPDX-License-Identifier: GPL-3.0-or-later
#include "devicestate.h"

#include "desktopdisplaywatcher.h"
#include "desktopidleinhibitor.h"
#include "desktoplockwatcher.h"
#include "logindsleepwatcher.h"
#include "modemcalls.h"
#include "nulldevicestate.h"
#include "nullpower.h"
#include "policyproperty.h"
#include "sysfsbacklightcontrol.h"
#include "systemlog.h"
#include "usbmodeddaemon.h"

#include <QGuiApplication>

using namespace Qt::Literals::StringLiterals;

namespace {
// Null where the program's windows are not an X server's.
xcb_connection_t *xServer()
{
    const auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance());
    const auto *x11
        = application ? application->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->connection() : nullptr;
}

DeviceStateOverrides &overrides()
{
    static DeviceStateOverrides set;
    return set;
}
} // namespace

void setDeviceStateOverrides(const DeviceStateOverrides &replacement)
{
    overrides() = replacement;
}

DeviceStateOverrides deviceStateOverrides()
{
    return overrides();
}

LockWatcher *LockWatcher::create(QObject *parent)
{
    if (overrides().lock)
        return overrides().lock(parent);
    const QDBusConnection system = QDBusConnection::systemBus();
    const QDBusConnection session = QDBusConnection::sessionBus();
    if (!system.isConnected() && !session.isConnected())
        return new NullLockWatcher(parent);
    return new DesktopLockWatcher(system, session, parent);
}

DisplayWatcher *DisplayWatcher::create(QObject *parent)
{
    if (overrides().display)
        return overrides().display(parent);
    const QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected() && !xServer())
        return new NullDisplayWatcher(parent);
    return new DesktopDisplayWatcher(session, xServer(), parent);
}

CallMonitor *CallMonitor::create(QObject *parent)
{
    if (overrides().call)
        return overrides().call(parent);
    if (!QDBusConnection::systemBus().isConnected())
        return new NullCallMonitor(parent);
    return ModemCallMonitor::createShared(parent);
}

UsbMode *UsbMode::instance()
{
    if (overrides().usbMode)
        return overrides().usbMode();
    static UsbMode *const machine = []() -> UsbMode * {
        if (QDBusConnection::systemBus().isConnected())
            return new UsbModedDaemon(QDBusConnection::systemBus());
        return new NullUsbMode;
    }();
    return machine;
}

void UsbMode::onChange(QObject *context, const Listener &listener)
{
    Q_UNUSED(context)
    Q_UNUSED(listener)
}

ContextProperty *ContextProperty::create(const QString &key, QObject *parent)
{
    if (overrides().context)
        return overrides().context(key, parent);
    return new PolicyProperty(key, QDBusConnection::sessionBus(), u"/sys"_s, parent);
}

BacklightControl *BacklightControl::create()
{
    if (overrides().backlight)
        return overrides().backlight();
    if (const std::optional<BacklightSwitch> found = findBacklightSwitch(u"/sys"_s))
        return new SysfsBacklightControl(*found);
    qCInfo(systemLog, "no content-adaptive backlight that may be set");
    return new NullBacklightControl;
}

SleepWatcher *SleepWatcher::create(const QString &reason, QObject *parent)
{
    if (overrides().sleep)
        return overrides().sleep(parent);
    const QDBusConnection system = QDBusConnection::systemBus();
    if (!system.isConnected())
        return new NullSleepWatcher(parent);
    return new LogindSleepWatcher(system, reason, parent);
}

IdleInhibitor *IdleInhibitor::create(QObject *parent)
{
    if (overrides().idle)
        return overrides().idle(parent);
    const QDBusConnection session = QDBusConnection::sessionBus();
    if (!session.isConnected())
        return new NullIdleInhibitor(parent);
    return new DesktopIdleInhibitor(session, parent);
}
