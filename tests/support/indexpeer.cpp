// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/indexpeer.h"

#include <gio/gunixfdlist.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTimer>
#include <QUrl>

#include <utility>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char s_minerXml[] = R"xml(<node><interface name="org.freedesktop.Tracker3.Miner">
<method name="GetStatus"><arg type="s" direction="out"/></method>
<signal name="Progress"><arg type="s"/><arg type="d"/><arg type="i"/></signal>
</interface></node>)xml";

constexpr char s_endpointXml[] = R"xml(<node><interface name="org.freedesktop.Tracker3.Endpoint">
<method name="Query"><arg type="s" direction="in"/><arg type="h" direction="in"/>
<arg type="a{sv}" direction="in"/><arg type="as" direction="out"/></method>
</interface></node>)xml";

constexpr char s_minerPath[] = "/org/freedesktop/Tracker3/Miner/Files";

QString contentUrn(const QString &path)
{
    return u"urn:content:"_s + QString::fromLatin1(QUrl::toPercentEncoding(QFileInfo(path).fileName()));
}

int rowsPipe(GDBusMethodInvocation *invocation)
{
    GUnixFDList *descriptors
        = g_dbus_message_get_unix_fd_list(g_dbus_method_invocation_get_message(invocation));
    return g_unix_fd_list_get(descriptors, 0, nullptr);
}

GVariant *oneColumn()
{
    const char *const columns[] = {"a", nullptr};
    return g_variant_new("(^as)", columns);
}

// One row of one column, as an endpoint sends it: the number of columns, their types, where each ends, the
// texts.
QByteArray rowOf(const QByteArray &text)
{
    QByteArray row;
    for (const qint32 number : {qint32(1), qint32(TRACKER_SPARQL_VALUE_TYPE_INTEGER), qint32(text.size())})
        row.append(reinterpret_cast<const char *>(&number), sizeof number);
    return row + text + '\0';
}

} // namespace

IndexPeer::IndexPeer()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    m_bus = g_dbus_connection_new_for_address_sync(
        address.constData(),
        GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                             | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
    exportObject(s_minerPath, s_minerXml);
}

IndexPeer::~IndexPeer()
{
    for (GDBusMethodInvocation *invocation : std::as_const(m_unanswered))
        g_object_unref(invocation);
    for (const int pipe : std::as_const(m_pipes))
        ::close(pipe);
    for (const guint object : std::as_const(m_objects))
        g_dbus_connection_unregister_object(m_bus, object);
    for (const Served &served : std::as_const(m_served)) {
        g_object_unref(served.endpoint);
        tracker_sparql_connection_close(served.database);
        g_object_unref(served.database);
    }
    g_dbus_connection_close_sync(m_bus, nullptr, nullptr);
    g_object_unref(m_bus);
}

bool IndexPeer::own(const char *name)
{
    GVariant *reply = g_dbus_connection_call_sync(
        m_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
        g_variant_new("(su)", name, 4), nullptr, G_DBUS_CALL_FLAGS_NONE, 20000, nullptr, nullptr);
    if (!reply)
        return false;
    guint32 result = 0;
    g_variant_get(reply, "(u)", &result);
    g_variant_unref(reply);
    return result == 1;
}

void IndexPeer::release(const char *name)
{
    GVariant *reply = g_dbus_connection_call_sync(
        m_bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReleaseName",
        g_variant_new("(s)", name), nullptr, G_DBUS_CALL_FLAGS_NONE, 20000, nullptr, nullptr);
    if (reply)
        g_variant_unref(reply);
}

void IndexPeer::setStatus(const QString &status)
{
    m_status = status.toUtf8();
    g_dbus_connection_emit_signal(m_bus, nullptr, s_minerPath, "org.freedesktop.Tracker3.Miner", "Progress",
                                  g_variant_new("(sdi)", m_status.constData(), 0.5, 0), nullptr);
}

bool IndexPeer::exportObject(const char *path, const char *xml)
{
    static const GDBusInterfaceVTable table = {&IndexPeer::called, nullptr, nullptr, {}};
    GDBusNodeInfo *node = g_dbus_node_info_new_for_xml(xml, nullptr);
    const guint object
        = g_dbus_connection_register_object(m_bus, path, node->interfaces[0], &table, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    if (object != 0)
        m_objects.append(object);
    return object != 0;
}

void IndexPeer::called(GDBusConnection *, const char *, const char *, const char *, const char *method,
                       GVariant *arguments, GDBusMethodInvocation *invocation, gpointer self)
{
    auto *peer = static_cast<IndexPeer *>(self);
    if (qstrcmp(method, "GetStatus") == 0) {
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(s)", peer->m_status.constData()));
        return;
    }
    ++peer->m_questions;
    if (peer->m_files >= 0) {
        const char *text = nullptr;
        g_variant_get_child(arguments, 0, "&s", &text);
        const QByteArrayView question(text);
        if (question.contains("COUNT"))
            peer->answer(invocation, rowOf(QByteArray::number(peer->m_files)));
        else if (!question.contains("DISTINCT")) // not about videos
            peer->answer(invocation, {});
        else
            QTimer::singleShot(std::exchange(peer->m_delayMs, 0), &peer->m_alive,
                               [peer, invocation] { peer->answer(invocation, {}); });
        return;
    }
    if (!peer->m_stalls) {
        peer->m_unanswered.append(invocation);
        return;
    }
    peer->m_pipes.append(rowsPipe(invocation));
    g_dbus_method_invocation_return_value(invocation, oneColumn());
}

void IndexPeer::answer(GDBusMethodInvocation *invocation, const QByteArray &rows)
{
    const int pipe = rowsPipe(invocation);
    g_dbus_method_invocation_return_value(invocation, oneColumn());
    if (::write(pipe, rows.constData(), size_t(rows.size())) != rows.size())
        qWarning("the rows were not taken");
    ::close(pipe);
}

void IndexPeer::announce(const char *path, bool added)
{
    GVariantBuilder builder;
    if (added) {
        g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sa{sv}}"));
        g_dbus_connection_emit_signal(m_bus, nullptr, "/", "org.freedesktop.DBus.ObjectManager",
                                      "InterfacesAdded", g_variant_new("(oa{sa{sv}})", path, &builder),
                                      nullptr);
    } else {
        g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
        g_dbus_connection_emit_signal(m_bus, nullptr, "/", "org.freedesktop.DBus.ObjectManager",
                                      "InterfacesRemoved", g_variant_new("(oas)", path, &builder), nullptr);
    }
}

bool IndexPeer::addEndpoint(const char *path)
{
    const QString folder = m_folder.filePath(u"index%1"_s.arg(++m_count));
    GFile *store = g_file_new_for_path(QFile::encodeName(folder).constData());
    GFile *ontology = tracker_sparql_get_ontology_nepomuk();
    Served served;
    served.database = tracker_sparql_connection_new(TRACKER_SPARQL_CONNECTION_FLAGS_NONE, store, ontology,
                                                    nullptr, nullptr);
    g_object_unref(store);
    g_object_unref(ontology);
    if (!served.database)
        return false;
    served.endpoint = tracker_endpoint_dbus_new(served.database, m_bus, path, nullptr, nullptr);
    m_served.insert(path, served);
    announce(path, true);
    return served.endpoint != nullptr;
}

void IndexPeer::removeEndpoint(const char *path)
{
    const Served served = m_served.take(path);
    g_object_unref(served.endpoint);
    tracker_sparql_connection_close(served.database);
    g_object_unref(served.database);
    announce(path, false);
}

bool IndexPeer::addDeafEndpoint()
{
    return exportObject(endpointPath, s_endpointXml);
}

bool IndexPeer::addSlowEndpoint(int files, int delayMs)
{
    m_files = files;
    m_delayMs = delayMs;
    return exportObject(endpointPath, s_endpointXml);
}

bool IndexPeer::addStallingEndpoint()
{
    m_stalls = true;
    return exportObject(endpointPath, s_endpointXml);
}

// Not the call that blocks: the endpoint answers from this thread meanwhile.
bool IndexPeer::update(const char *endpoint, const QString &text)
{
    struct Outcome
    {
        bool isDone = false;
        bool ok = false;
    } outcome;
    const auto done = [](GObject *database, GAsyncResult *result, gpointer data) {
        auto *outcome = static_cast<Outcome *>(data);
        GError *error = nullptr;
        tracker_sparql_connection_update_finish(TRACKER_SPARQL_CONNECTION(database), result, &error);
        if (error)
            qWarning("%s", error->message);
        outcome->ok = !error;
        outcome->isDone = true;
        g_clear_error(&error);
    };
    tracker_sparql_connection_update_async(m_served.value(endpoint).database, text.toUtf8().constData(),
                                           nullptr, done, &outcome);
    while (!outcome.isDone)
        g_main_context_iteration(nullptr, TRUE);
    return outcome.ok;
}

bool IndexPeer::put(const char *endpoint, const QString &path, const QString &properties)
{
    const QFileInfo info(path);
    const QString iri = QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
    const QString file
        = u"<%1> a nfo:FileDataObject ; nie:url \"%1\" ; nfo:fileName \"%2\" ; nfo:fileSize %3 ; "
          "nfo:fileLastModified \"%4\" ."_s.arg(iri, info.fileName())
              .arg(info.size())
              .arg(info.lastModified().toUTC().toString(Qt::ISODate));
    if (properties.isEmpty())
        return update(endpoint, u"INSERT DATA { GRAPH tracker:Video { %1 } }"_s.arg(file));
    const QString content
        = u"<%1> a nmm:Video ; nie:isStoredAs <%2> ; %3"_s.arg(contentUrn(path), iri, properties);
    return update(endpoint, u"INSERT DATA { GRAPH tracker:Video { %1 %2 } }"_s.arg(file, content));
}

bool IndexPeer::drop(const char *endpoint, const QString &path)
{
    const QString iri = QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded());
    return update(endpoint,
                  u"DELETE { GRAPH tracker:Video { <%1> a rdfs:Resource . <%2> a rdfs:Resource } } "
                  "WHERE { GRAPH tracker:Video { <%2> a rdfs:Resource } }"_s.arg(contentUrn(path), iri));
}
