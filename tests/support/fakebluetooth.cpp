// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakebluetooth.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace {

QDBusMessage propertiesChanged(const QString &path, const QString &interface, const QVariantMap &properties)
{
    QDBusMessage signal
        = QDBusMessage::createSignal(path, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s);
    signal << interface << properties << QStringList();
    return signal;
}

QString devicePath(const QString &address)
{
    return u"/org/bluez/hci0/dev_"_s + QString(address).replace(u':', u'_');
}

const QString adapterPath = u"/org/bluez/hci0"_s;
const QString sessionPath = u"/org/bluez/obex/client/session7"_s;

} // namespace

FakeBluez::FakeBluez(const QString &busAddress)
    : m_name(QUuid::createUuid().toString()),
      m_bus(QDBusConnection::connectToBus(busAddress, m_name))
{
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<Objects>();
    m_bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
}

FakeBluez::~FakeBluez()
{
    m_bus.unregisterObject(u"/"_s);
    QDBusConnection::disconnectFromBus(m_name);
}

bool FakeBluez::appear()
{
    return m_bus.registerService(u"org.bluez"_s);
}

void FakeBluez::disappear()
{
    m_bus.unregisterService(u"org.bluez"_s);
}

void FakeBluez::setAdapter(bool powered)
{
    change(adapterPath, u"org.bluez.Adapter1"_s,
           {{u"Address"_s, u"11:22:33:44:55:66"_s}, {u"Powered"_s, powered}});
}

void FakeBluez::addDevice(const QString &address, const QVariantMap &properties)
{
    QVariantMap all{{u"Address"_s, address},
                    {u"Paired"_s, true},
                    {u"Adapter"_s, QVariant::fromValue(QDBusObjectPath(adapterPath))}};
    all.insert(properties);
    const QDBusObjectPath path(devicePath(address));
    const Interfaces interfaces{{u"org.bluez.Device1"_s, all}};
    objects[path] = interfaces;
    QDBusMessage signal
        = QDBusMessage::createSignal(u"/"_s, u"org.freedesktop.DBus.ObjectManager"_s, u"InterfacesAdded"_s);
    signal << QVariant::fromValue(path) << QVariant::fromValue(interfaces);
    m_bus.send(signal);
}

void FakeBluez::removeDevice(const QString &address)
{
    const QDBusObjectPath path(devicePath(address));
    objects.remove(path);
    QDBusMessage signal
        = QDBusMessage::createSignal(u"/"_s, u"org.freedesktop.DBus.ObjectManager"_s, u"InterfacesRemoved"_s);
    signal << QVariant::fromValue(path) << QStringList{u"org.bluez.Device1"_s};
    m_bus.send(signal);
}

void FakeBluez::change(const QString &path, const QString &interface, const QVariantMap &properties)
{
    objects[QDBusObjectPath(path)][interface].insert(properties);
    m_bus.send(propertiesChanged(path, interface, properties));
}

QString FakeBluez::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return {};
}

bool FakeBluez::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.member() != "GetManagedObjects"_L1)
        return false;
    ++reads;
    if (nonsense)
        m_bus.send(message.createReply(u"what?"_s));
    else
        m_bus.send(message.createReply(QVariant::fromValue(objects)));
    return true;
}

FakeObex::FakeObex(const QString &busAddress)
    : m_name(QUuid::createUuid().toString()),
      m_bus(QDBusConnection::connectToBus(busAddress, m_name))
{
    m_bus.registerVirtualObject(u"/org/bluez/obex"_s, this, QDBusConnection::SubPath);
}

FakeObex::~FakeObex()
{
    m_bus.unregisterObject(u"/org/bluez/obex"_s);
    QDBusConnection::disconnectFromBus(m_name);
}

bool FakeObex::appear()
{
    return m_bus.registerService(u"org.bluez.obex"_s);
}

void FakeObex::disappear()
{
    m_bus.unregisterService(u"org.bluez.obex"_s);
}

QString FakeObex::transferPath() const
{
    return sessionPath + u"/transfer%1"_s.arg(sent.size());
}

void FakeObex::change(const QVariantMap &properties)
{
    m_bus.send(propertiesChanged(transferPath(), u"org.bluez.obex.Transfer1"_s, properties));
}

void FakeObex::transferred(quint64 bytes)
{
    change({{u"Transferred"_s, bytes}});
}

void FakeObex::status(const QString &status)
{
    change({{u"Status"_s, status}});
}

QString FakeObex::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return {};
}

bool FakeObex::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    const QVariantList arguments = message.arguments();
    if (message.member() == hangs) {
        message.setDelayedReply(true);
        ++unanswered;
        return true;
    }
    if (message.member() == refuses) {
        m_bus.send(
            message.createErrorReply(u"org.bluez.obex.Error.Failed"_s, u"Unable to find service record"_s));
        return true;
    }
    if (message.member() == "CreateSession"_L1) {
        const auto options = qdbus_cast<QVariantMap>(arguments.value(1));
        sessions.append(u"%1 %2 %3"_s.arg(arguments.value(0).toString(),
                                          options.value(u"Source"_s).toString(),
                                          options.value(u"Target"_s).toString()));
        m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(sessionPath))));
        return true;
    }
    if (message.member() == "SendFile"_L1 && message.path() == sessionPath) {
        sent.append(arguments.value(0).toString());
        if (completesAtOnce)
            status(u"complete"_s);
        const QVariantMap properties{{u"Status"_s, u"queued"_s}, {u"Size"_s, size}, {u"Name"_s, u"x"_s}};
        m_bus.send(message.createReply({QVariant::fromValue(QDBusObjectPath(transferPath())), properties}));
        return true;
    }
    if (message.member() == "RemoveSession"_L1) {
        removed.append(qvariant_cast<QDBusObjectPath>(arguments.value(0)).path());
        m_bus.send(message.createReply());
        return true;
    }
    return false;
}
