// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "idlehold.h"

// The desktop portal: a request that lasts until it is closed.
class PortalIdleHold : public IdleHold
{
    Q_OBJECT

public:
    explicit PortalIdleHold(const QDBusConnection &sessionBus, QObject *parent = nullptr);

protected:
    void ask(const QString &reason) override;
    void giveBack() override;

private:
    void answered(const QDBusMessage &reply);
    void hear(const QDBusMessage &message);
    void follow(const QString &request);

    QString m_request; // the object path
    uint m_response = 0; // to it; 0 also before there is one
    int m_number = 0; // of the last request
};
