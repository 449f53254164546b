// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bluezdirectory.h"
#include "servicepresence.h"

#include <QObject>

// What this machine can share with, kept up to date, so that the sheet shows the right rows at once.
class ShareTargets : public QObject
{
    Q_OBJECT

public:
    ShareTargets(const QDBusConnection &sessionBus, const QDBusConnection &systemBus, QObject *parent);

    // By the desktop portal. A portal that does not run yet is trusted to have its parts; of one that runs, a
    // part that it lacks is known.
    [[nodiscard]] bool hasEmail() const { return m_portal.isAvailable() && m_email; }
    [[nodiscard]] bool hasOpenWith() const { return m_portal.isAvailable() && m_openUri; }
    // By bluez's object exchange service, over an adapter that is on.
    [[nodiscard]] bool hasBluetooth() const { return m_obex.isAvailable() && m_bluez.isPowered(); }
    [[nodiscard]] const BluezDirectory &bluez() const { return m_bluez; }

Q_SIGNALS:
    void changed();

private:
    void portalChanged();
    void askVersion(const QString &interface, bool *has);

    QDBusConnection m_session;
    ServicePresence m_portal;
    ServicePresence m_obex;
    BluezDirectory m_bluez;
    bool m_email = true;
    bool m_openUri = true;
};
