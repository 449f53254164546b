// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storeclient.h"

#include <gio/gunixfdlist.h>

#include <unistd.h>

namespace {

QString take(GError *error)
{
    if (!error)
        return {};
    const QString text = QString::fromUtf8(error->message);
    g_error_free(error);
    return text.isEmpty() ? QStringLiteral("an error without a text") : text;
}

QList<StoreClient::Quad> quads(GVariant *array)
{
    QList<StoreClient::Quad> list;
    GVariantIter iterator;
    g_variant_iter_init(&iterator, array);
    StoreClient::Quad quad;
    while (
        g_variant_iter_next(&iterator, "(iiii)", &quad.graph, &quad.subject, &quad.predicate, &quad.object))
        list.append(quad);
    return list;
}

} // namespace

StoreClient::StoreClient(const QString &address, QObject *parent) : QObject(parent)
{
    GError *error = nullptr;
    m_bus = g_dbus_connection_new_for_address_sync(address.toUtf8().constData(),
                                                   G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr,
                                                   nullptr, &error);
    m_error = take(error);
    if (!m_bus)
        return;
    m_subscription = g_dbus_connection_signal_subscribe(
        m_bus, nullptr, "com.harrow.Kestrel.Store.Changes", nullptr, "/com/harrow/Kestrel/Store/Changes",
        nullptr, G_DBUS_SIGNAL_FLAGS_NONE, &StoreClient::signalled, this, nullptr);
    error = nullptr;
    m_store = tracker_sparql_connection_bus_new("com.harrow.Kestrel.Store", nullptr, m_bus, &error);
    m_error = take(error);
}

StoreClient::~StoreClient()
{
    if (m_bus)
        g_dbus_connection_signal_unsubscribe(m_bus, m_subscription);
    g_clear_object(&m_store);
    g_clear_object(&m_bus);
}

QList<QStringList> StoreClient::query(const QString &text)
{
    QList<QStringList> rows;
    GError *error = nullptr;
    TrackerSparqlCursor *cursor
        = tracker_sparql_connection_query(m_store, text.toUtf8().constData(), nullptr, &error);
    while (cursor && tracker_sparql_cursor_next(cursor, nullptr, &error)) {
        QStringList row;
        for (int i = 0; i < tracker_sparql_cursor_get_n_columns(cursor); ++i)
            row.append(QString::fromUtf8(tracker_sparql_cursor_get_string(cursor, i, nullptr)));
        rows.append(row);
    }
    g_clear_object(&cursor);
    m_error = take(error);
    return rows;
}

QString StoreClient::value(const QString &text)
{
    return query(text).value(0).value(0);
}

QString StoreClient::update(const QString &text)
{
    GError *error = nullptr;
    tracker_sparql_connection_update(m_store, text.toUtf8().constData(), nullptr, &error);
    m_error = take(error);
    return m_error;
}

QString StoreClient::updateAll(const QStringList &texts)
{
    TrackerBatch *batch = tracker_sparql_connection_create_batch(m_store);
    for (const QString &text : texts)
        tracker_batch_add_sparql(batch, text.toUtf8().constData());
    GError *error = nullptr;
    tracker_batch_execute(batch, nullptr, &error);
    g_object_unref(batch);
    m_error = take(error);
    return m_error;
}

QString StoreClient::callWithDescriptor(const char *method)
{
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0)
        return QStringLiteral("no pipe");
    GUnixFDList *list = g_unix_fd_list_new();
    g_unix_fd_list_append(list, ends[0], nullptr);
    ::close(ends[0]);
    ::close(ends[1]);
    GError *error = nullptr;
    GVariant *reply = g_dbus_connection_call_with_unix_fd_list_sync(
        m_bus, nullptr, "/org/freedesktop/Tracker3/Endpoint", "org.freedesktop.Tracker3.Endpoint", method,
        g_variant_new("(h)", 0), nullptr, G_DBUS_CALL_FLAGS_NONE, 20000, list, nullptr, nullptr, &error);
    if (reply)
        g_variant_unref(reply);
    g_object_unref(list);
    return take(error);
}

QList<StoreClient::Quad> StoreClient::allInserts() const
{
    QList<Quad> all;
    for (const QList<Quad> &batch : inserts)
        all.append(batch);
    return all;
}

QList<StoreClient::Quad> StoreClient::allDeletes() const
{
    QList<Quad> all;
    for (const QList<Quad> &batch : deletes)
        all.append(batch);
    return all;
}

void StoreClient::forget()
{
    deletes.clear();
    inserts.clear();
    resets = 0;
}

void StoreClient::signalled(GDBusConnection *, const char *, const char *, const char *, const char *signal,
                            GVariant *arguments, gpointer self)
{
    auto *client = static_cast<StoreClient *>(self);
    if (g_strcmp0(signal, "Reset") == 0) {
        ++client->resets;
        return;
    }
    GVariant *deleted = g_variant_get_child_value(arguments, 0);
    GVariant *inserted = g_variant_get_child_value(arguments, 1);
    client->deletes.append(quads(deleted));
    client->inserts.append(quads(inserted));
    g_variant_unref(deleted);
    g_variant_unref(inserted);
}
