// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariantMap>

// A paired device that can be sent to.
struct BluetoothDevice
{
    QString address; // AA:BB:CC:DD:EE:FF
    QString adapterAddress;
    QString name;
    QString icon; // bluez's: "phone", "computer", ...; often empty
    bool connected = false;

    friend bool operator==(const BluetoothDevice &, const BluetoothDevice &) = default;
};

// What bluez manages: object -> interface -> property.
using BluezInterfaces = QMap<QString, QVariantMap>;
using BluezObjects = QMap<QDBusObjectPath, BluezInterfaces>;
Q_DECLARE_METATYPE(BluezInterfaces)
Q_DECLARE_METATYPE(BluezObjects)

[[nodiscard]] bool hasPoweredAdapter(const BluezObjects &objects);
// Paired devices of powered adapters that take files, or do not say what they take; the connected ones first,
// then by name.
[[nodiscard]] QList<BluetoothDevice> pairedDevices(const BluezObjects &objects);
