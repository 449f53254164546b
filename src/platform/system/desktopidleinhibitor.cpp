// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktopidleinhibitor.h"

#include "systemlog.h"

DesktopIdleInhibitor::DesktopIdleInhibitor(const QDBusConnection &sessionBus, QObject *parent)
    : IdleInhibitor(parent),
      m_portal(sessionBus, this),
      m_screenSaver(sessionBus, this)
{
    connect(&m_portal, &IdleHold::helpChanged, this, &DesktopIdleInhibitor::spread);
    connect(&m_screenSaver, &IdleHold::helpChanged, this, &DesktopIdleInhibitor::spread);
}

DesktopIdleInhibitor::~DesktopIdleInhibitor()
{
    DesktopIdleInhibitor::setInhibited(false, m_reason);
}

void DesktopIdleInhibitor::setInhibited(bool inhibited, const QString &reason)
{
    m_inhibited = inhibited;
    m_reason = reason;
    m_compositor.setWanted(inhibited);
    m_portal.setWanted(inhibited, reason);
    spread();
}

bool DesktopIdleInhibitor::isEffective() const
{
    return m_compositor.isHeld() || m_portal.state() == IdleHold::State::Held
        || m_screenSaver.state() == IdleHold::State::Held;
}

// The screen saver helps out until the portal does.
void DesktopIdleInhibitor::spread()
{
    m_screenSaver.setWanted(m_inhibited && m_portal.isOfNoHelp(), m_reason);
    const bool helpless
        = m_inhibited && m_portal.isOfNoHelp() && m_screenSaver.isOfNoHelp() && !m_compositor.isHeld();
    if (helpless && !m_helplessnessTold)
        qCInfo(systemLog, "neither a portal nor a screen saver service keeps the display on");
    m_helplessnessTold = (m_helplessnessTold || helpless) && !isEffective();
}
