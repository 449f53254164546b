// SPDX-License-Identifier: GPL-3.0-or-later
#include "peerserver.h"

#include "changesxml.h"
#include "endpointmessages.h"
#include "storelog.h"
#include "updatetext.h"

#include <gio/gunixfdlist.h>

#include <QDir>
#include <QFile>
#include <QPointer>

#include <signal.h>
#include <unistd.h>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char s_changesPath[] = "/com/harrow/Kestrel/Store/Changes";
constexpr char s_changesInterface[] = "com.harrow.Kestrel.Store.Changes";

void sendError(GDBusConnection *connection, GDBusMessage *call, const QString &error)
{
    const GRef<GDBusMessage> reply(g_dbus_message_new_method_error_literal(
        call, "org.freedesktop.Tracker.Error.Unsupported", error.toUtf8().constData()));
    g_dbus_connection_send_message(connection, reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
}

gboolean authorize(GDBusAuthObserver *, GIOStream *, GCredentials *credentials, gpointer)
{
    const GRef<GCredentials> own(g_credentials_new());
    return credentials && g_credentials_is_same_user(credentials, own.get(), nullptr);
}

gboolean allowMechanism(GDBusAuthObserver *, const char *mechanism, gpointer)
{
    return g_strcmp0(mechanism, "EXTERNAL") == 0;
}

// Sockets that processes left behind which were killed.
void removeStaleSockets(const QDir &folder)
{
    const QStringList names = folder.entryList({u"store-*.socket"_s}, QDir::System | QDir::Files);
    for (const QString &name : names) {
        const int pid = QStringView(name).sliced(6).chopped(7).toInt();
        if (pid > 0 && ::kill(pid, 0) != 0 && errno == ESRCH)
            QFile::remove(folder.filePath(name));
    }
}

GVariant *quadArray(const QList<StoreQuad> &quads)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiii)"));
    for (const StoreQuad &quad : quads)
        g_variant_builder_add(&builder, "(iiii)", quad.graph, quad.subject, quad.predicate, quad.object);
    return g_variant_builder_end(&builder);
}

// One update on its way from the bus thread to the main loop.
struct Incoming
{
    GRef<GDBusConnection> connection;
    GRef<GDBusMessage> call;
    EndpointMessages::Kind kind = EndpointMessages::Kind::Update;
};

} // namespace

struct PeerServer::Ticket
{
    quint64 number = 0;
    GRef<GDBusConnection> connection;
    GRef<GDBusMessage> call;
};

struct PeerServer::Peer
{
    GRef<GDBusConnection> connection;
    GRef<GObject> endpoint;
    GThreadPool *readers = nullptr; // one thread: updates of a peer keep their order
    guint filter = 0;
    guint changesId = 0;
    QPointer<PeerServer> server;

    static GDBusMessage *filterMessage(GDBusConnection *connection, GDBusMessage *message, gboolean incoming,
                                       gpointer data);
    static void readUpdate(gpointer incoming, gpointer server);
};

// Runs in the bus thread.
GDBusMessage *PeerServer::Peer::filterMessage(GDBusConnection *connection, GDBusMessage *message,
                                              gboolean incoming, gpointer data)
{
    using namespace EndpointMessages;
    const Kind kind = incoming ? kindOf(message) : Kind::Other;
    if (kind == Kind::Other)
        return message;
    if (kind == Kind::Query) {
        const auto refusal = refusalOf(queryText(message));
        if (!refusal)
            return message;
        sendError(connection, message, *refusal);
    } else if (kind == Kind::Refused) {
        sendError(connection, message, u"only queries and updates are served here"_s);
    } else {
        auto *update = new Incoming{shareGRef(connection), shareGRef(message), kind};
        g_thread_pool_push(static_cast<GThreadPool *>(data), update, nullptr);
    }
    g_object_unref(message);
    return nullptr;
}

// Runs in the peer's reading thread.
void PeerServer::Peer::readUpdate(gpointer incoming, gpointer self)
{
    auto update = std::shared_ptr<Incoming>(static_cast<Incoming *>(incoming));
    const int descriptor = EndpointMessages::takeInput(update->call.get());
    const auto texts = descriptor >= 0 ? EndpointMessages::readTexts(descriptor, update->kind) : std::nullopt;
    if (descriptor >= 0)
        ::close(descriptor);
    std::optional<QString> refusal;
    if (!texts)
        refusal = u"the update did not come as text alone"_s;
    for (qsizetype i = 0; texts && i < texts->size() && !refusal; ++i)
        refusal = refusalOf(texts->at(i));
    if (refusal) {
        sendError(update->connection.get(), update->call.get(), *refusal);
        return;
    }
    auto *server = static_cast<PeerServer *>(self);
    QMetaObject::invokeMethod(
        server,
        [server, update, texts = *texts] {
            const quint64 number = ++server->m_lastTicket;
            server->m_tickets.push_back({number, std::move(update->connection), std::move(update->call)});
            Q_EMIT server->updateReceived(number, texts);
        },
        Qt::QueuedConnection);
}

PeerServer::PeerServer(QObject *parent)
    : QObject(parent),
      m_changesInfo(g_dbus_node_info_new_for_xml(s_changesXml, nullptr))
{
}

PeerServer::~PeerServer()
{
    if (m_server)
        g_dbus_server_stop(m_server.get());
    for (const auto &peer : m_peers) {
        g_signal_handlers_disconnect_by_data(peer->connection.get(), this);
        g_dbus_connection_remove_filter(peer->connection.get(), peer->filter);
        g_dbus_connection_close_sync(peer->connection.get(), nullptr, nullptr);
        g_thread_pool_free(peer->readers, FALSE, TRUE);
    }
    if (!m_socketPath.isEmpty())
        QFile::remove(m_socketPath);
    g_dbus_node_info_unref(m_changesInfo);
}

bool PeerServer::listen(const QString &folder)
{
    removeStaleSockets(QDir(folder));
    m_socketPath = folder + u"/store-%1.socket"_s.arg(::getpid());
    QFile::remove(m_socketPath);
    char *escaped = g_dbus_address_escape_value(QFile::encodeName(m_socketPath).constData());
    const QByteArray address = QByteArray("unix:path=") + escaped;
    g_free(escaped);
    char *guid = g_dbus_generate_guid();
    const GRef<GDBusAuthObserver> observer(g_dbus_auth_observer_new());
    g_signal_connect(observer.get(), "authorize-authenticated-peer", G_CALLBACK(&authorize), nullptr);
    g_signal_connect(observer.get(), "allow-mechanism", G_CALLBACK(&allowMechanism), nullptr);
    GError *error = nullptr;
    m_server.reset(g_dbus_server_new_sync(address.constData(),
                                          G_DBUS_SERVER_FLAGS_AUTHENTICATION_REQUIRE_SAME_USER, guid,
                                          observer.get(), nullptr, &error));
    g_free(guid);
    if (!m_server) {
        qCWarning(lcStore, "cannot listen at %s: %s", address.constData(), error->message);
        g_error_free(error);
        return false;
    }
    g_signal_connect(m_server.get(), "new-connection", G_CALLBACK(&PeerServer::accept), this);
    g_dbus_server_start(m_server.get());
    m_address = QString::fromUtf8(address);
    return true;
}

gboolean PeerServer::accept(GDBusServer *, GDBusConnection *connection, gpointer self)
{
    static_cast<PeerServer *>(self)->addPeer(connection);
    return TRUE;
}

void PeerServer::addPeer(GDBusConnection *connection)
{
    auto peer = std::make_unique<Peer>();
    peer->connection = shareGRef(connection);
    peer->readers = g_thread_pool_new(&Peer::readUpdate, this, 1, FALSE, nullptr);
    peer->filter = g_dbus_connection_add_filter(connection, &Peer::filterMessage, peer->readers, nullptr);
    static const GDBusInterfaceVTable table = {};
    peer->changesId = g_dbus_connection_register_object(
        connection, s_changesPath, m_changesInfo->interfaces[0], &table, nullptr, nullptr, nullptr);
    g_signal_connect(connection, "closed", G_CALLBACK(&PeerServer::peerClosed), this);
    serveTo(peer.get());
    m_peers.push_back(std::move(peer));
}

void PeerServer::peerClosed(GDBusConnection *connection, gboolean, GError *, gpointer self)
{
    auto *server = static_cast<PeerServer *>(self);
    const auto found = std::find_if(server->m_peers.begin(), server->m_peers.end(),
                                    [&](const auto &peer) { return peer->connection.get() == connection; });
    if (found == server->m_peers.end())
        return;
    const auto peer = std::move(*found);
    server->m_peers.erase(found);
    g_signal_handlers_disconnect_by_data(connection, self);
    g_dbus_connection_remove_filter(connection, peer->filter);
    // What it sent before it left is carried out.
    g_thread_pool_free(peer->readers, FALSE, FALSE);
}

void PeerServer::serveTo(Peer *peer)
{
    peer->endpoint.reset();
    if (!m_reader)
        return;
    GError *error = nullptr;
    peer->endpoint.reset(G_OBJECT(
        tracker_endpoint_dbus_new(m_reader.get(), peer->connection.get(), nullptr, nullptr, &error)));
    if (error) {
        qCWarning(lcStore, "cannot serve a client: %s", error->message);
        g_error_free(error);
    }
}

void PeerServer::serve(TrackerSparqlConnection *reader)
{
    m_reader.reset(reader ? static_cast<TrackerSparqlConnection *>(g_object_ref(reader)) : nullptr);
    for (const auto &peer : m_peers)
        serveTo(peer.get());
}

void PeerServer::answer(quint64 ticket, const QString &error)
{
    const auto found = std::find_if(m_tickets.begin(), m_tickets.end(),
                                    [&](const Ticket &waiting) { return waiting.number == ticket; });
    if (found == m_tickets.end())
        return;
    if (error.isEmpty()) {
        const GRef<GDBusMessage> reply(g_dbus_message_new_method_reply(found->call.get()));
        g_dbus_connection_send_message(found->connection.get(), reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                       nullptr, nullptr);
    } else {
        sendError(found->connection.get(), found->call.get(), error);
    }
    m_tickets.erase(found);
}

void PeerServer::broadcast(const char *signal, GVariant *arguments)
{
    GVariant *shared = g_variant_ref_sink(arguments);
    for (const auto &peer : m_peers) {
        g_dbus_connection_emit_signal(peer->connection.get(), nullptr, s_changesPath, s_changesInterface,
                                      signal, shared, nullptr);
    }
    g_variant_unref(shared);
}

void PeerServer::sendChanges(const QList<StoreQuad> &deletes, const QList<StoreQuad> &inserts)
{
    GVariant *arguments[] = {quadArray(deletes), quadArray(inserts)};
    broadcast("Changed", g_variant_new_tuple(arguments, 2));
}

void PeerServer::sendReset()
{
    broadcast("Reset", g_variant_new_tuple(nullptr, 0));
}
