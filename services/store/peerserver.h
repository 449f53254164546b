// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"
#include "quad.h"

#include <gio/gio.h>
#include <libtracker-sparql/tracker-sparql.h>

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

// The private way into the store: a socket that only this user reaches. Each peer finds the store library's
// endpoint, which answers queries, and the object that tells what changed. Updates are taken out of the
// stream before the endpoint sees them, so that they can be checked, carried out in order and read back
// before they are acknowledged.
class PeerServer : public QObject
{
    Q_OBJECT

public:
    explicit PeerServer(QObject *parent = nullptr);
    ~PeerServer() override;

    // Listens at a socket of its own name in the folder, removing those of processes that are gone.
    bool listen(const QString &folder);
    // D-Bus address; empty before listen().
    [[nodiscard]] QString address() const { return m_address; }

    // The connection that queries are answered from; null: queries fail until there is another.
    void serve(TrackerSparqlConnection *reader);
    // Answers an update. An empty error acknowledges it. A ticket is answered once; a peer that left is no
    // error.
    void answer(quint64 ticket, const QString &error);

    void sendChanges(const QList<StoreQuad> &deletes, const QList<StoreQuad> &inserts);
    void sendReset();
    [[nodiscard]] int peerCount() const { return int(m_peers.size()); }

Q_SIGNALS:
    void updateReceived(quint64 ticket, const QStringList &texts);

private:
    struct Peer;
    struct Ticket;

    static gboolean accept(GDBusServer *, GDBusConnection *connection, gpointer self);
    static void peerClosed(GDBusConnection *connection, gboolean, GError *, gpointer self);
    void addPeer(GDBusConnection *connection);
    void serveTo(Peer *peer);
    void broadcast(const char *signal, GVariant *arguments);

    GRef<GDBusServer> m_server;
    GDBusNodeInfo *m_changesInfo = nullptr;
    QString m_address;
    QString m_socketPath;
    GRef<TrackerSparqlConnection> m_reader;
    std::vector<std::unique_ptr<Peer>> m_peers;
    std::vector<Ticket> m_tickets;
    quint64 m_lastTicket = 0;
};
