// SPDX-License-Identifier: GPL-3.0-or-later
#include "buspeer.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

using namespace Qt::Literals::StringLiterals;

BusPeer::BusPeer(const QDBusConnection &bus, const QString &name, QObject *parent)
    : QObject(parent),
      m_bus(bus),
      m_name(name),
      m_watcher(name, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                m_heard = true;
                setOwner(newOwner);
            });
    askOwner();
}

void BusPeer::askOwner()
{
    const QDBusMessage question
        = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                         u"org.freedesktop.DBus"_s, u"GetNameOwner"_s)
        << m_name;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        const QDBusPendingReply<QString> owner = *done;
        if (!m_heard)
            setOwner(owner.isError() ? QString() : owner.value());
    });
}

void BusPeer::setOwner(const QString &owner)
{
    const bool first = !std::exchange(m_known, true);
    if (owner == m_owner && !first)
        return;
    if (isPresent()) {
        for (const Rule &rule : std::as_const(m_rules))
            withdraw(rule);
    }
    const bool wasPresent = isPresent();
    const int generation = ++m_generation;
    m_owner.clear();
    if (wasPresent || owner.isEmpty())
        Q_EMIT vanished();
    if (owner.isEmpty() || generation != m_generation)
        return;
    m_owner = owner;
    for (const Rule &rule : std::as_const(m_rules))
        apply(rule);
    Q_EMIT appeared();
}

void BusPeer::apply(const Rule &rule)
{
    m_bus.connect(m_owner, rule.path, rule.interface, rule.member, rule.arguments, QString(), this,
                  SLOT(deliver(QDBusMessage)));
}

void BusPeer::withdraw(const Rule &rule)
{
    m_bus.disconnect(m_owner, rule.path, rule.interface, rule.member, rule.arguments, QString(), this,
                     SLOT(deliver(QDBusMessage)));
}

void BusPeer::listen(const QString &path, const QString &interface, const QString &member,
                     const QString &firstArgument)
{
    const Rule rule{path, interface, member,
                    firstArgument.isEmpty() ? QStringList() : QStringList{firstArgument}};
    const bool isNew = !m_rules.contains(rule);
    m_rules.append(rule); // once for each who listens
    if (isNew && isPresent())
        apply(rule);
}

void BusPeer::ignore(const QString &path, const QString &interface, const QString &member,
                     const QString &firstArgument)
{
    const Rule rule{path, interface, member,
                    firstArgument.isEmpty() ? QStringList() : QStringList{firstArgument}};
    if (m_rules.removeOne(rule) && !m_rules.contains(rule) && isPresent())
        withdraw(rule);
}

QDBusMessage BusPeer::method(const QString &path, const QString &interface, const QString &member,
                             const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(QString(), path, interface, member);
    message.setArguments(arguments);
    return message;
}

// To the owner itself: a call by the name would start the service when it went just now.
QDBusMessage BusPeer::addressed(const QDBusMessage &method) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(isPresent() ? m_owner : m_name, method.path(),
                                                          method.interface(), method.member());
    message.setArguments(method.arguments());
    message.setAutoStartService(false);
    return message;
}

void BusPeer::call(const QDBusMessage &method, QObject *context, Answer answered, int timeoutMs)
{
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(addressed(method), timeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, watcher, &QObject::deleteLater);
    connect(watcher, &QDBusPendingCallWatcher::finished, context,
            [this, generation = m_generation, answered = std::move(answered)](QDBusPendingCallWatcher *done) {
                if (generation == m_generation)
                    answered(done->reply());
            });
}

void BusPeer::send(const QDBusMessage &method)
{
    m_bus.send(addressed(method));
}
