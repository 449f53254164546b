// SPDX-License-Identifier: GPL-3.0-or-later
#include "bluezdirectory.h"

#include "sharelog.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString &bluez()
{
    static const QString name = u"org.bluez"_s;
    return name;
}

const QString &objectManager()
{
    static const QString name = u"org.freedesktop.DBus.ObjectManager"_s;
    return name;
}

} // namespace

BluezDirectory::BluezDirectory(const QDBusConnection &systemBus, QObject *parent)
    : QObject(parent),
      m_bus(systemBus),
      m_watcher(bluez(), systemBus, QDBusServiceWatcher::WatchForOwnerChange)
{
    qDBusRegisterMetaType<BluezInterfaces>();
    qDBusRegisterMetaType<BluezObjects>();
    if (!m_bus.isConnected()) {
        qCInfo(shareLog, "no system bus: nothing is sent by Bluetooth");
        return;
    }
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &before, const QString &owner) {
                if (!owner.isEmpty()) {
                    read();
                    return;
                }
                qCInfo(shareLog, "bluez (%ls) is gone: nothing is sent by Bluetooth",
                       qUtf16Printable(before));
                take({});
            });
    m_bus.connect(bluez(), u"/"_s, objectManager(), u"InterfacesAdded"_s, this, SLOT(objectsChanged()));
    m_bus.connect(bluez(), u"/"_s, objectManager(), u"InterfacesRemoved"_s, this, SLOT(objectsChanged()));
    m_bus.connect(bluez(), QString(), u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s, this,
                  SLOT(propertiesChanged(QDBusMessage)));
    read();
}

void BluezDirectory::objectsChanged()
{
    read();
}

void BluezDirectory::propertiesChanged(const QDBusMessage &signal)
{
    // A search for devices tells the signal strength of each many times a second: nobody asks for that here.
    static const QStringList relevant{u"Powered"_s, u"Paired"_s,    u"Alias"_s,  u"Icon"_s,
                                      u"UUIDs"_s,   u"Connected"_s, u"Address"_s};
    const QVariantMap values = qdbus_cast<QVariantMap>(signal.arguments().value(1));
    if (std::any_of(relevant.begin(), relevant.end(),
                    [&values](const QString &name) { return values.contains(name); }))
        read();
}

void BluezDirectory::read()
{
    if (m_reading) {
        m_readAgain = true;
        return;
    }
    m_reading = true;
    QDBusMessage message
        = QDBusMessage::createMethodCall(bluez(), u"/"_s, objectManager(), u"GetManagedObjects"_s);
    message.setAutoStartService(false);
    auto *call = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<BluezObjects> reply = *call;
        call->deleteLater();
        m_reading = false;
        if (std::exchange(m_readAgain, false)) {
            read();
            return;
        }
        if (reply.isError() && !m_failing)
            qCInfo(shareLog, "nothing is sent by Bluetooth: %ls", qUtf16Printable(reply.error().message()));
        m_failing = reply.isError();
        take(reply.isValid() ? reply.value() : BluezObjects());
    });
}

void BluezDirectory::take(const BluezObjects &objects)
{
    const bool powered = hasPoweredAdapter(objects);
    const QList<BluetoothDevice> devices = pairedDevices(objects);
    if (powered == m_powered && devices == m_devices)
        return;
    m_powered = powered;
    m_devices = devices;
    Q_EMIT changed();
}
