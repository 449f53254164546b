// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktopindex.h"

#include "objectwalk.h"
#include "storelog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_answerMs = 3000;
constexpr int s_againMs = 500;
constexpr int s_retryMs = 5000;

const QString s_endpointInterface = u"org.freedesktop.Tracker3.Endpoint"_s;
const QString s_minerInterface = u"org.freedesktop.Tracker3.Miner"_s;

// The newer name first: its owner may keep the older one as well.
const QStringList &indexNames()
{
    static const QStringList names{u"org.freedesktop.LocalSearch3"_s,
                                   u"org.freedesktop.Tracker3.Miner.Files"_s};
    return names;
}

} // namespace

DesktopIndex::DesktopIndex(const QDBusConnection &bus, QObject *parent) : QObject(parent), m_bus(bus)
{
    m_names.setConnection(m_bus);
    m_names.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    connect(&m_names, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &name, const QString &, const QString &owner) {
                setOwnerOf(name, owner.isNull() ? u""_s : owner);
            });
    m_againTimer.setSingleShot(true);
    m_againTimer.setInterval(s_againMs);
    connect(&m_againTimer, &QTimer::timeout, this, &DesktopIndex::walk);
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(s_retryMs);
    connect(&m_retryTimer, &QTimer::timeout, this, &DesktopIndex::walk);
}

void DesktopIndex::start()
{
    for (const QString &name : indexNames()) {
        m_names.addWatchedService(name);
        askOwner(name);
    }
}

void DesktopIndex::askOwner(const QString &name)
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s, u"GetNameOwner"_s);
    question << name;
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question, s_answerMs), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, name] {
        answer->deleteLater();
        const QDBusPendingReply<QString> reply = *answer;
        if (m_owners.value(name).isNull()) // no change was heard meanwhile
            setOwnerOf(name, reply.isValid() ? reply.value() : u""_s);
    });
}

void DesktopIndex::setOwnerOf(const QString &name, const QString &owner)
{
    m_owners.insert(name, owner);
    if (m_owners.size() == indexNames().size())
        chooseOwner();
}

void DesktopIndex::chooseOwner()
{
    QString owner;
    for (const QString &name : indexNames()) {
        if (owner.isEmpty())
            owner = m_owners.value(name);
    }
    if (owner == m_owner && m_state != State::Looking)
        return;
    follow(false);
    m_owner = owner;
    delete m_walk;
    m_againTimer.stop();
    m_retryTimer.stop();
    setEndpoints({});
    if (m_owner.isEmpty()) {
        setState(State::Absent);
        return;
    }
    qCInfo(lcStore, "the desktop's file index is %s", qUtf8Printable(m_owner));
    m_state = State::Looking;
    follow(true);
    walk();
}

void DesktopIndex::follow(bool on)
{
    if (m_owner.isEmpty())
        return;
    const QString manager = u"org.freedesktop.DBus.ObjectManager"_s;
    const auto with = [&](const QString &interface, const QString &signal, const char *slot) {
        if (on)
            m_bus.connect(m_owner, QString(), interface, signal, this, slot);
        else
            m_bus.disconnect(m_owner, QString(), interface, signal, this, slot);
    };
    with(s_minerInterface, u"Progress"_s, SLOT(onProgress(QString, double, int)));
    with(manager, u"InterfacesAdded"_s, SLOT(lookAgain()));
    with(manager, u"InterfacesRemoved"_s, SLOT(lookAgain()));
}

void DesktopIndex::lookAgain()
{
    if (!m_owner.isEmpty() && !m_againTimer.isActive())
        m_againTimer.start();
}

void DesktopIndex::walk()
{
    if (m_walk) {
        m_againTimer.start();
        return;
    }
    m_walk = new ObjectWalk(m_bus, m_owner, this);
    connect(m_walk, &ObjectWalk::finished, this, [this](const QHash<QString, QStringList> &objects) {
        m_walk->deleteLater();
        m_walk.clear();
        takeObjects(objects);
    });
}

void DesktopIndex::takeObjects(const QHash<QString, QStringList> &objects)
{
    QStringList endpoints;
    QString miner;
    for (auto it = objects.cbegin(); it != objects.cend(); ++it) {
        if (it->contains(s_endpointInterface))
            endpoints.append(it.key());
        if (it->contains(s_minerInterface))
            miner = it.key();
    }
    endpoints.sort();
    setEndpoints(endpoints);
    if (endpoints.isEmpty()) {
        setState(State::Busy);
        m_retryTimer.start();
    } else if (!miner.isEmpty()) {
        askStatus(miner);
    } else {
        setState(State::Ready); // it has nothing that could be under way
    }
}

void DesktopIndex::askStatus(const QString &miner)
{
    const QDBusMessage question
        = QDBusMessage::createMethodCall(m_owner, miner, s_minerInterface, u"GetStatus"_s);
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question, s_answerMs), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, asked = m_owner] {
        answer->deleteLater();
        const QDBusPendingReply<QString> reply = *answer;
        if (asked != m_owner)
            return;
        if (!reply.isValid())
            m_retryTimer.start();
        setStatus(reply.isValid() ? reply.value() : QString());
    });
}

void DesktopIndex::onProgress(const QString &status, double, int)
{
    if (m_endpoints.isEmpty() && status == u"Idle"_s)
        lookAgain();
    else
        setStatus(status);
}

void DesktopIndex::setStatus(const QString &status)
{
    if (!m_endpoints.isEmpty())
        setState(status == u"Idle"_s ? State::Ready : State::Busy);
}

void DesktopIndex::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    Q_EMIT stateChanged();
}

void DesktopIndex::setEndpoints(const QStringList &endpoints)
{
    if (endpoints == m_endpoints)
        return;
    m_endpoints = endpoints;
    Q_EMIT endpointsChanged();
}
