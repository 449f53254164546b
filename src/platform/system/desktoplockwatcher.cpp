// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktoplockwatcher.h"

#include "systemlog.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {
enum Lock { DeviceLock = 0, KeyLock = 1 };
enum LockState { Open = 0, Locked = 1, Unknown = 2 };
} // namespace

DesktopLockWatcher::DesktopLockWatcher(const QDBusConnection &systemBus, const QDBusConnection &sessionBus,
                                       QObject *parent)
    : LockWatcher(parent),
      m_session(systemBus, this),
      m_freedesktop(sessionBus, u"org.freedesktop.ScreenSaver"_s,
                    {u"/org/freedesktop/ScreenSaver"_s, u"/ScreenSaver"_s}),
      m_gnome(sessionBus, u"org.gnome.ScreenSaver"_s, {u"/org/gnome/ScreenSaver"_s})
{
    connect(&m_session, &LogindSession::lockedChanged, this,
            [this](bool locked) { Q_EMIT stateChanged(DeviceLock, locked ? Locked : Open); });
    for (const ScreenSaverWatcher *saver : {&m_freedesktop, &m_gnome}) {
        connect(saver, &ScreenSaverWatcher::activeChanged, this, &DesktopLockWatcher::tellKeyLock);
        connect(saver, &ScreenSaverWatcher::missing, this, &DesktopLockWatcher::tellMissing);
    }
}

int DesktopLockWatcher::state(int lock) const
{
    if (lock == DeviceLock)
        return m_session.isLocked() ? Locked : Open;
    if (lock == KeyLock)
        return m_keysLocked ? Locked : Open;
    return Unknown;
}

// Desktops have one of the two services, or both and one behind the other.
void DesktopLockWatcher::tellKeyLock()
{
    const bool locked = m_freedesktop.isActive() || m_gnome.isActive();
    if (std::exchange(m_keysLocked, locked) != locked)
        Q_EMIT stateChanged(KeyLock, locked ? Locked : Open);
}

void DesktopLockWatcher::tellMissing()
{
    if (m_freedesktop.isMissing() && m_gnome.isMissing())
        qCInfo(systemLog, "no screen saver service: the keys count as unlocked");
}
