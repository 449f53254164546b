// SPDX-License-Identifier: GPL-3.0-or-later
#include "storelink.h"

#include "mainloop.h"
#include "sparqllog.h"
#include "updatequeue.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString busName = u"com.harrow.Kestrel.Store"_s;
// The service answers when it has something to read from, which may take it a while after a crash.
constexpr int socketTimeoutMs = 30000;
constexpr int firstRetryMs = 100;
constexpr int lastRetryMs = 10000;
constexpr int steadyMs = 10000;

} // namespace

std::shared_ptr<StoreLink> StoreLink::shared()
{
    static std::weak_ptr<StoreLink> link;
    std::shared_ptr<StoreLink> strong = link.lock();
    if (!strong) {
        strong.reset(new StoreLink);
        link = strong;
    }
    return strong;
}

StoreLink::StoreLink()
    : m_activator(busName, u"kestrel-store"_s),
      m_updates(std::make_unique<UpdateQueue>(*this))
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &StoreLink::findService);
    connect(&m_activator, &ServiceActivator::ready, this, &StoreLink::askForSocket);
    connect(&m_activator, &ServiceActivator::failed, this, &StoreLink::retryLater);
    connect(&m_activator, &ServiceActivator::ownerChanged, this, [this](bool owned) {
        // Somebody else started it: no need to wait for the next turn.
        if (owned && m_retry.isActive()) {
            m_retry.stop();
            findService();
        }
    });
}

StoreLink::~StoreLink() = default;

void StoreLink::start()
{
    if (m_started)
        return;
    m_started = true;
    turnGlibMainLoop();
    findService();
}

TrackerSparqlConnection *StoreLink::endpoint() const
{
    return m_peer ? m_peer->endpoint() : nullptr;
}

GDBusConnection *StoreLink::bus() const
{
    return m_peer ? m_peer->bus() : nullptr;
}

void StoreLink::findService()
{
    m_activator.ensure();
}

void StoreLink::askForSocket()
{
    const QDBusMessage call
        = QDBusMessage::createMethodCall(busName, u"/com/harrow/Kestrel/Store"_s, busName, u"Socket"_s);
    auto *reply
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, socketTimeoutMs), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        const QDBusPendingReply<QString> address = *done;
        if (address.isError())
            retryLater(address.error().message());
        else
            connectTo(address.value());
    });
}

void StoreLink::connectTo(const QString &address)
{
    m_peer = std::make_unique<PeerConnection>(address);
    connect(m_peer.get(), &PeerConnection::opened, this, &StoreLink::peerOpened);
    connect(m_peer.get(), &PeerConnection::failed, this, &StoreLink::peerLost);
    connect(m_peer.get(), &PeerConnection::closed, this,
            [this] { peerLost(u"the connection was closed"_s); });
    connect(m_peer.get(), &PeerConnection::changed, this, &StoreLink::changed);
    connect(m_peer.get(), &PeerConnection::rebuilt, this, &StoreLink::reset);
}

void StoreLink::peerOpened()
{
    const std::shared_ptr<StoreLink> self
        = shared_from_this(); // whoever is told may let go of the last connection
    m_lastReason.clear();
    m_upSince.start();
    const bool isAnother = m_wasUp || m_missed;
    m_wasUp = true;
    m_missed = false;
    qCInfo(lcSparql) << "connected to the store";
    Q_EMIT up();
    if (isAnother)
        Q_EMIT reset();
}

void StoreLink::peerLost(const QString &reason)
{
    const std::shared_ptr<StoreLink> self = shared_from_this();
    const bool wasUp = isUp();
    if (wasUp && m_upSince.hasExpired(steadyMs))
        m_failures = 0; // a service that dies as soon as it is up is not started ten times a second
    m_peer.release()->deleteLater(); // it is the one that is telling
    if (wasUp)
        Q_EMIT down();
    retryLater(reason);
}

void StoreLink::retryLater(const QString &reason)
{
    const int delay = std::min(firstRetryMs << std::min(m_failures, 10), lastRetryMs);
    ++m_failures;
    if (reason != m_lastReason)
        qCWarning(lcSparql).noquote() << "the store is not there:" << reason;
    m_lastReason = reason;
    m_retry.start(delay);
}
