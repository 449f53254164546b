// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bluetoothdevice.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

class QDBusMessage;

// The adapters and paired devices of bluez on the system bus, followed. bluez is never started by this; while
// it is away there are none.
class BluezDirectory : public QObject
{
    Q_OBJECT

public:
    explicit BluezDirectory(const QDBusConnection &systemBus, QObject *parent = nullptr);

    [[nodiscard]] bool isPowered() const { return m_powered; }
    [[nodiscard]] QList<BluetoothDevice> devices() const { return m_devices; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void objectsChanged();
    void propertiesChanged(const QDBusMessage &signal);

private:
    void read();
    void take(const BluezObjects &objects);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    QList<BluetoothDevice> m_devices;
    bool m_powered = false;
    bool m_failing = false; // it answers, but not with what was asked for, or there is none
    bool m_reading = false;
    bool m_readAgain = false;
};
