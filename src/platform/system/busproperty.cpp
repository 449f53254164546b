// SPDX-License-Identifier: GPL-3.0-or-later
#include "busproperty.h"

#include "buspeer.h"

#include <QDBusArgument>
#include <QDBusVariant>

using namespace Qt::Literals::StringLiterals;

namespace {
const QString PropertiesInterface = u"org.freedesktop.DBus.Properties"_s;
const QString ChangedSignal = u"PropertiesChanged"_s;
} // namespace

BusProperty::BusProperty(BusPeer *peer, const QString &path, const QString &interface, const QString &name,
                         QMetaType type, QObject *parent)
    : QObject(parent),
      m_peer(peer),
      m_path(path),
      m_interface(interface),
      m_name(name),
      m_type(type)
{
    peer->listen(path, PropertiesInterface, ChangedSignal, interface);
    connect(peer, &BusPeer::signalled, this, &BusProperty::hear);
    connect(peer, &BusPeer::appeared, this, &BusProperty::read);
    connect(peer, &BusPeer::vanished, this, &BusProperty::forget);
    if (peer->isPresent())
        read();
}

BusProperty::~BusProperty()
{
    m_peer->ignore(m_path, PropertiesInterface, ChangedSignal, m_interface);
}

void BusProperty::read()
{
    const int serial = ++m_serial;
    m_peer->call(BusPeer::method(m_path, PropertiesInterface, u"Get"_s, {m_interface, m_name}), this,
                 [this, serial](const QDBusMessage &reply) {
                     if (serial != m_serial)
                         return;
                     if (reply.type() == QDBusMessage::ErrorMessage)
                         Q_EMIT unreadable(reply.errorMessage());
                     else if (reply.signature() != u"v"_s)
                         Q_EMIT unreadable(u"an answer of type \"%1\""_s.arg(reply.signature()));
                     else
                         take(reply.arguments().constFirst().value<QDBusVariant>().variant());
                 });
}

void BusProperty::hear(const QDBusMessage &message)
{
    if (message.path() != m_path || message.interface() != PropertiesInterface
        || message.member() != ChangedSignal || message.signature() != u"sa{sv}as"_s)
        return;
    const QVariantList arguments = message.arguments();
    if (arguments.at(0).toString() != m_interface)
        return;
    const auto values = qdbus_cast<QVariantMap>(arguments.at(1));
    if (values.contains(m_name)) {
        ++m_serial;
        take(values.value(m_name));
    } else if (arguments.at(2).toStringList().contains(m_name)) {
        read();
    }
}

void BusProperty::take(const QVariant &value)
{
    if (value.metaType() != m_type) {
        Q_EMIT unreadable(u"a value of type %1"_s.arg(QString::fromUtf8(value.metaType().name())));
        return;
    }
    if (value == m_value)
        return;
    m_value = value;
    Q_EMIT changed(m_value);
}

void BusProperty::forget()
{
    ++m_serial;
    if (!m_value.isValid())
        return;
    m_value = QVariant();
    Q_EMIT changed(m_value);
}
