// SPDX-License-Identifier: GPL-3.0-or-later
#include "busname.h"

#include "remotelog.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr uint DoNotQueue = 4;
constexpr uint BecamePrimaryOwner = 1;
constexpr uint AlreadyOwner = 4;

QDBusMessage callOfBus(const QString &method)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

} // namespace

BusName::BusName(const QDBusConnection &bus, const QString &name, QObject *parent)
    : QObject(parent),
      m_bus(bus)
{
    request(name, true);
}

// A request that was not answered yet is carried out first: the bus keeps the order.
BusName::~BusName()
{
    QDBusMessage release = callOfBus(u"ReleaseName"_s);
    release << m_requested;
    m_bus.send(release);
}

void BusName::request(const QString &name, bool mayFallBack)
{
    m_requested = name;
    QDBusMessage call = callOfBus(u"RequestName"_s);
    call << name << DoNotQueue;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, name, mayFallBack] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError()) {
            qCWarning(remoteLog, "%s: not to be had: %s", qUtf8Printable(name),
                      qUtf8Printable(reply.error().message()));
        } else if (reply.value() == BecamePrimaryOwner || reply.value() == AlreadyOwner) {
            m_owned = name;
            Q_EMIT acquired(name);
        } else if (mayFallBack) {
            const QString other = name + u".instance%1"_s.arg(QCoreApplication::applicationPid());
            qCInfo(remoteLog, "%s: taken by another program, this one is %s", qUtf8Printable(name),
                   qUtf8Printable(other));
            request(other, false);
        } else {
            qCWarning(remoteLog, "%s: taken, too", qUtf8Printable(name));
        }
    });
}
