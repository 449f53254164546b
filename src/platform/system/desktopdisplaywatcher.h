// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"
#include "busproperty.h"
#include "devicestate.h"
#include "dpmspower.h"

#include <memory>

// The display as the compositor has it; as the X server has it where no compositor tells; on where nobody
// does.
class DesktopDisplayWatcher : public DisplayWatcher
{
    Q_OBJECT

public:
    // `xServer` is null where the program's windows are not the X server's.
    DesktopDisplayWatcher(const QDBusConnection &sessionBus, xcb_connection_t *xServer, QObject *parent);
    [[nodiscard]] int state() const override { return m_state; }

protected:
    void connectNotify(const QMetaMethod &signal) override;
    void disconnectNotify(const QMetaMethod &signal) override;

private:
    void evaluate();
    void askXServerIfNeeded();

    BusPeer m_compositor;
    BusProperty m_powerSaveMode;
    std::unique_ptr<DpmsPower> m_xPower;
    int m_state;
};
