// SPDX-License-Identifier: GPL-3.0-or-later
#include "bluetoothdevice.h"

#include <QCollator>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto adapterInterface = "org.bluez.Adapter1"_L1;
constexpr auto deviceInterface = "org.bluez.Device1"_L1;
constexpr auto objectPush = "00001105-0000-1000-8000-00805f9b34fb"_L1; // the service's number in the standard

bool isPowered(const BluezInterfaces &interfaces)
{
    return interfaces.value(adapterInterface).value(u"Powered"_s).toBool();
}

bool takesFiles(const QVariantMap &device)
{
    const QStringList services = device.value(u"UUIDs"_s).toStringList();
    return services.isEmpty() || services.contains(objectPush, Qt::CaseInsensitive);
}

} // namespace

bool hasPoweredAdapter(const BluezObjects &objects)
{
    return std::any_of(objects.begin(), objects.end(), isPowered);
}

QList<BluetoothDevice> pairedDevices(const BluezObjects &objects)
{
    QList<BluetoothDevice> devices;
    for (const BluezInterfaces &interfaces : objects) {
        const QVariantMap properties = interfaces.value(deviceInterface);
        const auto adapter = properties.value(u"Adapter"_s).value<QDBusObjectPath>();
        const BluezInterfaces adapterInterfaces = objects.value(adapter);
        BluetoothDevice device;
        device.address = properties.value(u"Address"_s).toString();
        if (device.address.isEmpty() || !properties.value(u"Paired"_s).toBool() || !takesFiles(properties)
            || !isPowered(adapterInterfaces))
            continue;
        device.adapterAddress = adapterInterfaces.value(adapterInterface).value(u"Address"_s).toString();
        device.name = properties.value(u"Alias"_s).toString().simplified();
        if (device.name.isEmpty())
            device.name = device.address;
        device.icon = properties.value(u"Icon"_s).toString();
        device.connected = properties.value(u"Connected"_s).toBool();
        devices.append(device);
    }
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(devices.begin(), devices.end(),
                     [&collator](const BluetoothDevice &a, const BluetoothDevice &b) {
                         if (a.connected != b.connected)
                             return a.connected;
                         return collator.compare(a.name, b.name) < 0;
                     });
    return devices;
}
