// SPDX-License-Identifier: GPL-3.0-or-later
#include "peerconnection.h"

#include "sparqllog.h"

#include <QPointer>

#include <libtracker-sparql/tracker-sparql.h>

#include <memory>

namespace {

constexpr char serviceName[] = "com.harrow.Kestrel.Store";
constexpr char changesPath[] = "/com/harrow/Kestrel/Store/Changes";
constexpr char changesInterface[] = "com.harrow.Kestrel.Store.Changes";

QList<ChangeNotifier::Quad> quadsOf(GVariant *arguments, gsize index)
{
    QList<ChangeNotifier::Quad> quads;
    GVariant *array = g_variant_get_child_value(arguments, index);
    quads.reserve(qsizetype(g_variant_n_children(array)));
    GVariantIter iterator;
    g_variant_iter_init(&iterator, array);
    ChangeNotifier::Quad quad;
    while (
        g_variant_iter_next(&iterator, "(iiii)", &quad.graph, &quad.subject, &quad.predicate, &quad.object))
        quads.append(quad);
    g_variant_unref(array);
    return quads;
}

// An answer may come after the object that asked is gone.
using Asker = QPointer<PeerConnection>;

Asker takeAsker(gpointer data)
{
    const std::unique_ptr<Asker> asker(static_cast<Asker *>(data));
    return *asker;
}

} // namespace

PeerConnection::PeerConnection(const QString &address, QObject *parent)
    : QObject(parent),
      m_cancellable(sparql::GRef<GCancellable>::taken(g_cancellable_new()))
{
    g_dbus_connection_new_for_address(address.toUtf8().constData(),
                                      G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr,
                                      m_cancellable.get(), onBusOpened, new Asker(this));
}

PeerConnection::~PeerConnection()
{
    g_cancellable_cancel(m_cancellable.get());
    if (!m_bus)
        return;
    if (m_subscription != 0)
        g_dbus_connection_signal_unsubscribe(m_bus.get(), m_subscription);
    if (m_closedHandler != 0)
        g_signal_handler_disconnect(m_bus.get(), m_closedHandler);
    g_dbus_connection_close(m_bus.get(), nullptr, nullptr, nullptr);
}

void PeerConnection::onBusOpened(GObject *source, GAsyncResult *answer, gpointer data)
{
    Q_UNUSED(source)
    sparql::GFailure failure;
    auto bus
        = sparql::GRef<GDBusConnection>::taken(g_dbus_connection_new_for_address_finish(answer, &failure));
    const Asker self = takeAsker(data);
    if (!self)
        return;
    if (bus)
        self->busOpened(bus.get());
    else
        Q_EMIT self->failed(failure.message());
}

void PeerConnection::busOpened(GDBusConnection *bus)
{
    m_bus = sparql::GRef<GDBusConnection>::shared(bus);
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    m_closedHandler = g_signal_connect(bus, "closed", G_CALLBACK(onClosed), this);
    m_subscription
        = g_dbus_connection_signal_subscribe(bus, nullptr, changesInterface, nullptr, changesPath, nullptr,
                                             G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr);
    // The library wants a name even where there is no bus daemon to route by it.
    tracker_sparql_connection_bus_new_async(serviceName, nullptr, bus, m_cancellable.get(), onEndpointOpened,
                                            new Asker(this));
}

void PeerConnection::onEndpointOpened(GObject *source, GAsyncResult *answer, gpointer data)
{
    Q_UNUSED(source)
    sparql::GFailure failure;
    auto endpoint = sparql::GRef<TrackerSparqlConnection>::taken(
        tracker_sparql_connection_bus_new_finish(answer, &failure));
    const Asker self = takeAsker(data);
    if (!self)
        return;
    if (!endpoint) {
        Q_EMIT self->failed(failure.message());
        return;
    }
    self->m_endpoint = endpoint;
    Q_EMIT self->opened();
}

void PeerConnection::onClosed(GDBusConnection *bus, gboolean vanished, GError *error, gpointer data)
{
    Q_UNUSED(bus)
    Q_UNUSED(vanished)
    Q_UNUSED(error)
    Q_EMIT static_cast<PeerConnection *>(data)->closed();
}

void PeerConnection::onSignal(GDBusConnection *bus, const gchar *sender, const gchar *path,
                              const gchar *interface, const gchar *signal, GVariant *arguments, gpointer data)
{
    Q_UNUSED(bus)
    Q_UNUSED(sender)
    Q_UNUSED(path)
    Q_UNUSED(interface)
    auto *self = static_cast<PeerConnection *>(data);
    if (g_str_equal(signal, "Reset"))
        Q_EMIT self->rebuilt();
    else if (g_str_equal(signal, "Changed")
             && g_variant_is_of_type(arguments, G_VARIANT_TYPE("(a(iiii)a(iiii))")))
        Q_EMIT self->changed(quadsOf(arguments, 0), quadsOf(arguments, 1));
    else
        qCWarning(lcSparql) << "the store told something unknown:" << signal;
}
