// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "changenotifier.h"
#include "peerconnection.h"
#include "platform/system/serviceactivator.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

class UpdateQueue;

// The one road of this process to the store service: brings the service up, asks the session bus where its
// private socket is, connects, and does so again when the service went away. Shared by every connection and
// notifier; lives as long as one of them, or as an update that is not acknowledged yet.
class StoreLink : public QObject, public std::enable_shared_from_this<StoreLink>
{
    Q_OBJECT

public:
    [[nodiscard]] static std::shared_ptr<StoreLink> shared();
    ~StoreLink() override;

    // Begins to connect, unless it did so before.
    void start();

    // Null unless the link is up.
    [[nodiscard]] TrackerSparqlConnection *endpoint() const;
    [[nodiscard]] GDBusConnection *bus() const;
    [[nodiscard]] bool isUp() const { return endpoint() != nullptr; }

    [[nodiscard]] UpdateQueue &updates() { return *m_updates; }

    // A statement was answered without the store: when it comes, it comes late.
    void noteMissed() { m_missed = true; }

Q_SIGNALS:
    void up();
    void down();
    // Another store than before: restarted, rebuilt, or come late.
    void reset();
    void changed(QList<ChangeNotifier::Quad> deletes, QList<ChangeNotifier::Quad> inserts);

private:
    StoreLink();

    void findService();
    void askForSocket();
    void connectTo(const QString &address);
    void peerOpened();
    void peerLost(const QString &reason);
    void retryLater(const QString &reason);

    ServiceActivator m_activator;
    QTimer m_retry;
    std::unique_ptr<PeerConnection> m_peer;
    std::unique_ptr<UpdateQueue> m_updates;
    QElapsedTimer m_upSince;
    int m_failures = 0;
    QString m_lastReason; // told once, not at every attempt
    bool m_started = false;
    bool m_wasUp = false;
    bool m_missed = false;
};
