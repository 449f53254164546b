// SPDX-License-Identifier: GPL-3.0-or-later
#include "servicepresence.h"

#include "sharelog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

using namespace Qt::Literals::StringLiterals;

namespace {

QDBusMessage busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

} // namespace

ServicePresence::ServicePresence(const QDBusConnection &bus, const QString &name, QObject *parent)
    : QObject(parent),
      m_bus(bus),
      m_name(name),
      m_watcher(name, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    if (!m_bus.isConnected()) {
        log();
        return;
    }
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                m_owned = !owner.isEmpty();
                log();
                Q_EMIT changed();
            });
    // A service file that comes with an installation is noticed.
    m_bus.connect(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s,
                  u"ActivatableServicesChanged"_s, this, SLOT(listActivatable()));
    ask(busCall(u"NameHasOwner"_s) << m_name, &ServicePresence::ownerTold);
    listActivatable();
}

void ServicePresence::listActivatable()
{
    ask(busCall(u"ListActivatableNames"_s), &ServicePresence::activatableTold);
}

void ServicePresence::ask(const QDBusMessage &question, Answered answered)
{
    ++m_pending;
    auto *call = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, answered] {
        call->deleteLater();
        --m_pending;
        (this->*answered)(call->reply());
    });
}

void ServicePresence::ownerTold(const QDBusMessage &reply)
{
    become(reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toBool(), m_activatable);
}

void ServicePresence::activatableTold(const QDBusMessage &reply)
{
    become(m_owned,
           reply.type() == QDBusMessage::ReplyMessage
               && reply.arguments().value(0).toStringList().contains(m_name));
}

void ServicePresence::become(bool owned, bool activatable)
{
    const bool changes = owned != m_owned || activatable != m_activatable;
    m_owned = owned;
    m_activatable = activatable;
    log();
    if (changes)
        Q_EMIT changed();
}

void ServicePresence::log()
{
    if (m_pending > 0 || isAvailable() == m_loggedAvailable)
        return;
    m_loggedAvailable = isAvailable();
    qCInfo(shareLog, m_loggedAvailable ? "%ls is there" : "%ls is not there: nothing is shared by it",
           qUtf16Printable(m_name));
}
