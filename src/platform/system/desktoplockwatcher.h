// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "devicestate.h"
#include "logindsession.h"
#include "screensaverwatcher.h"

// The device lock is that of the login session, the key lock an active screen saver.
class DesktopLockWatcher : public LockWatcher
{
    Q_OBJECT

public:
    DesktopLockWatcher(const QDBusConnection &systemBus, const QDBusConnection &sessionBus, QObject *parent);
    [[nodiscard]] int state(int lock) const override;

private:
    void tellKeyLock();
    void tellMissing();

    LogindSession m_session;
    ScreenSaverWatcher m_freedesktop;
    ScreenSaverWatcher m_gnome;
    bool m_keysLocked = false;
};
