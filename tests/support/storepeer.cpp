// SPDX-License-Identifier: GPL-3.0-or-later
// A store service for tests: a real database with the Nepomuk ontology in $XDG_DATA_HOME/kestrel/store, a
// real endpoint on a private socket, and no indexer. On the session bus it stands where the store service
// stands; the interface com.harrow.Kestrel.StorePeer beside it lets a test fill the database and tell clients
// of changes. KESTREL_PEER_DELAY_MS: appears on the bus only after that time.
#include <gio/gio.h>
#include <glib/gstdio.h>
#include <libtracker-sparql/tracker-sparql.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr char storeName[] = "com.harrow.Kestrel.Store";
constexpr char introspection[] = R"xml(<node>
  <interface name="com.harrow.Kestrel.Store">
    <method name="Socket"><arg type="s" direction="out"/></method>
  </interface>
  <interface name="com.harrow.Kestrel.StorePeer">
    <method name="Fill"><arg type="u" name="videos" direction="in"/></method>
    <method name="EmitChanged">
      <arg type="a(iiii)" name="deletes" direction="in"/>
      <arg type="a(iiii)" name="inserts" direction="in"/>
    </method>
    <method name="EmitReset"/>
    <method name="Serve"><arg type="b" name="on" direction="in"/></method>
  </interface>
</node>)xml";

struct Peer
{
    TrackerSparqlConnection *store = nullptr;
    GDBusServer *server = nullptr;
    std::vector<GDBusConnection *> clients;
    std::vector<TrackerEndpointDBus *> endpoints;
    std::string address;
};

[[noreturn]] void die(const char *what, const GError *error)
{
    g_printerr("kestrel-store-peer: %s: %s\n", what, error ? error->message : "");
    std::exit(1);
}

void tellClients(Peer &peer, const char *signal, GVariant *arguments)
{
    if (arguments)
        g_variant_ref_sink(arguments);
    for (GDBusConnection *client : peer.clients)
        g_dbus_connection_emit_signal(client, nullptr, "/com/harrow/Kestrel/Store/Changes",
                                      "com.harrow.Kestrel.Store.Changes", signal, arguments, nullptr);
    if (arguments)
        g_variant_unref(arguments);
}

TrackerResource *video(guint number)
{
    const std::string id = std::to_string(number);
    TrackerResource *resource = tracker_resource_new(("urn:uuid:video-" + id).c_str());
    tracker_resource_add_uri(resource, "rdf:type", "nmm:Video");
    tracker_resource_add_uri(resource, "rdf:type", "nfo:FileDataObject");
    tracker_resource_set_string(resource, "nie:url",
                                ("file:///home/user/MyDocs/clip%20" + id + ".mp4").c_str());
    tracker_resource_set_string(resource, "nfo:fileName", ("clip " + id + ".mp4").c_str());
    tracker_resource_set_string(resource, "nie:title", ("A holiday in the mountains, part " + id).c_str());
    tracker_resource_set_string(resource, "nie:mimeType", "video/mp4");
    tracker_resource_set_int64(resource, "nfo:duration", 60 + number % 3600);
    tracker_resource_set_int64(resource, "nmm:runTime", 0);
    return resource;
}

void fill(Peer &peer, guint videos)
{
    TrackerBatch *batch = tracker_sparql_connection_create_batch(peer.store);
    for (guint i = 0; i < videos; ++i) {
        TrackerResource *resource = video(i);
        tracker_batch_add_resource(batch, nullptr, resource);
        g_object_unref(resource);
    }
    GError *error = nullptr;
    if (!tracker_batch_execute(batch, nullptr, &error))
        die("filling", error);
    g_object_unref(batch);
}

void serveTo(Peer &peer, GDBusConnection *client)
{
    GError *error = nullptr;
    TrackerEndpointDBus *endpoint = tracker_endpoint_dbus_new(peer.store, client, nullptr, nullptr, &error);
    if (!endpoint)
        die("endpoint", error);
    peer.endpoints.push_back(endpoint);
}

void serveClients(Peer &peer, bool on)
{
    for (TrackerEndpointDBus *endpoint : peer.endpoints)
        g_object_unref(endpoint);
    peer.endpoints.clear();
    if (!on)
        return;
    for (GDBusConnection *client : peer.clients)
        serveTo(peer, client);
}

gboolean clientCame(GDBusServer *server, GDBusConnection *client, gpointer data)
{
    (void)server;
    Peer &peer = *static_cast<Peer *>(data);
    serveTo(peer, client);
    peer.clients.push_back(static_cast<GDBusConnection *>(g_object_ref(client)));
    return TRUE;
}

void called(GDBusConnection *bus, const gchar *sender, const gchar *path, const gchar *interface,
            const gchar *method, GVariant *arguments, GDBusMethodInvocation *invocation, gpointer data)
{
    (void)bus, (void)sender, (void)path, (void)interface;
    Peer &peer = *static_cast<Peer *>(data);
    GVariant *answer = nullptr;
    if (g_str_equal(method, "Socket")) {
        answer = g_variant_new("(s)", peer.address.c_str());
    } else if (g_str_equal(method, "Fill")) {
        guint videos = 0;
        g_variant_get(arguments, "(u)", &videos);
        fill(peer, videos);
    } else if (g_str_equal(method, "EmitChanged")) {
        tellClients(peer, "Changed", arguments);
    } else if (g_str_equal(method, "EmitReset")) {
        tellClients(peer, "Reset", nullptr);
    } else if (g_str_equal(method, "Serve")) {
        gboolean on = FALSE;
        g_variant_get(arguments, "(b)", &on);
        serveClients(peer, on != FALSE);
    }
    g_dbus_method_invocation_return_value(invocation, answer);
}

void openStore(Peer &peer)
{
    GError *error = nullptr;
    gchar *folder = g_build_filename(g_get_user_data_dir(), "kestrel", "store", nullptr);
    g_mkdir_with_parents(folder, 0700);
    GFile *file = g_file_new_for_path(folder);
    GFile *ontology = tracker_sparql_get_ontology_nepomuk();
    peer.store = tracker_sparql_connection_new(TRACKER_SPARQL_CONNECTION_FLAGS_NONE, file, ontology, nullptr,
                                               &error);
    if (!peer.store)
        die("store", error);
    g_object_unref(ontology);
    g_object_unref(file);
    g_free(folder);
}

void serve(Peer &peer)
{
    GError *error = nullptr;
    const std::string where = std::string("unix:dir=") + g_get_user_runtime_dir();
    gchar *guid = g_dbus_generate_guid();
    peer.server
        = g_dbus_server_new_sync(where.c_str(), G_DBUS_SERVER_FLAGS_NONE, guid, nullptr, nullptr, &error);
    if (!peer.server)
        die("socket", error);
    g_free(guid);
    g_signal_connect(peer.server, "new-connection", G_CALLBACK(clientCame), &peer);
    g_dbus_server_start(peer.server);
    peer.address = g_dbus_server_get_client_address(peer.server);
}

gboolean appear(gpointer data)
{
    Peer &peer = *static_cast<Peer *>(data);
    GError *error = nullptr;
    GDBusConnection *bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    if (!bus)
        die("bus", error);
    static const GDBusInterfaceVTable table = {called, nullptr, nullptr, {}};
    GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(introspection, &error);
    for (GDBusInterfaceInfo **info = node->interfaces; *info; ++info)
        g_dbus_connection_register_object(bus, "/com/harrow/Kestrel/Store", *info, &table, &peer, nullptr,
                                          &error);
    g_bus_own_name_on_connection(bus, storeName, G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr,
                                 nullptr);
    return G_SOURCE_REMOVE;
}

} // namespace

int main()
{
    Peer peer;
    openStore(peer);
    serve(peer);
    const char *delay = g_getenv("KESTREL_PEER_DELAY_MS");
    if (delay)
        g_timeout_add(static_cast<guint>(std::atoi(delay)), appear, &peer);
    else
        appear(&peer);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
    return 0;
}
