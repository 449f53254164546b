// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "compositoridlehold.h"
#include "idleinhibitor.h"
#include "portalidlehold.h"
#include "screensaveridlehold.h"

// Through the desktop portal, else through the screen saver service; beside them through the compositor.
class DesktopIdleInhibitor : public IdleInhibitor
{
    Q_OBJECT

public:
    DesktopIdleInhibitor(const QDBusConnection &sessionBus, QObject *parent);
    ~DesktopIdleInhibitor() override;
    void setInhibited(bool inhibited, const QString &reason) override;
    [[nodiscard]] bool isInhibited() const override { return m_inhibited; }
    // A service has granted it, or the compositor knows of it.
    [[nodiscard]] bool isEffective() const;

private:
    void spread();

    CompositorIdleHold m_compositor;
    PortalIdleHold m_portal;
    ScreenSaverIdleHold m_screenSaver;
    QString m_reason;
    bool m_inhibited = false;
    bool m_helplessnessTold = false;
};
