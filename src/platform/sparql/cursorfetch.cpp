// SPDX-License-Identifier: GPL-3.0-or-later
#include "cursorfetch.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

struct Fetch
{
    sparql::GRef<GDBusConnection> peer;
    sparql::GRef<GCancellable> cancellable;
    std::function<void(StatementOutcome)> done;
    StatementOutcome outcome;
};

using FetchPointer = std::unique_ptr<Fetch>;

RowTable::Type typeOf(TrackerSparqlValueType type)
{
    switch (type) {
    case TRACKER_SPARQL_VALUE_TYPE_UNBOUND:
        return RowTable::Type::Unbound;
    case TRACKER_SPARQL_VALUE_TYPE_INTEGER:
        return RowTable::Type::Integer;
    case TRACKER_SPARQL_VALUE_TYPE_DOUBLE:
        return RowTable::Type::Double;
    case TRACKER_SPARQL_VALUE_TYPE_DATETIME:
        return RowTable::Type::DateTime;
    case TRACKER_SPARQL_VALUE_TYPE_BOOLEAN:
        return RowTable::Type::Boolean;
    case TRACKER_SPARQL_VALUE_TYPE_URI:
    case TRACKER_SPARQL_VALUE_TYPE_STRING:
    case TRACKER_SPARQL_VALUE_TYPE_BLANK_NODE:
        break;
    }
    return RowTable::Type::Text;
}

bool appendRow(RowTable &table, TrackerSparqlCursor *cursor)
{
    for (int column = 0; column < table.columns(); ++column) {
        glong length = 0;
        const char *text = tracker_sparql_cursor_get_string(cursor, column, &length);
        const auto type
            = text ? typeOf(tracker_sparql_cursor_get_value_type(cursor, column)) : RowTable::Type::Unbound;
        if (!table.append(type, QByteArrayView(text, text ? length : 0)))
            return false;
    }
    return true;
}

// In a pool thread: touches nothing but the cursor and the outcome, which are the task's own meanwhile.
void readAllRows(GTask *task, gpointer source, gpointer data, GCancellable *cancellable)
{
    auto *cursor = static_cast<TrackerSparqlCursor *>(source);
    StatementOutcome &outcome = static_cast<Fetch *>(data)->outcome;
    RowTable table(tracker_sparql_cursor_get_n_columns(cursor));
    sparql::GFailure failure;
    bool fits = true;
    while (fits && tracker_sparql_cursor_next(cursor, cancellable, &failure))
        fits = appendRow(table, cursor);
    if (failure)
        outcome.error = failure.message();
    else if (!fits)
        outcome.error = u"the answer is too large"_s;
    else
        outcome.table = std::move(table);
    tracker_sparql_cursor_close(cursor);
    g_task_return_boolean(task, TRUE);
}

// The bus answers so while nobody stands at the endpoint's path.
bool isUnserved(const sparql::GFailure &failure)
{
    const GError *error = failure.get();
    return error && error->domain == G_DBUS_ERROR
        && (error->code == G_DBUS_ERROR_UNKNOWN_METHOD || error->code == G_DBUS_ERROR_UNKNOWN_OBJECT
            || error->code == G_DBUS_ERROR_UNKNOWN_INTERFACE);
}

void deliver(FetchPointer fetch)
{
    if (fetch->peer && g_dbus_connection_is_closed(fetch->peer.get()))
        fetch->outcome.isLost = true;
    fetch->done(std::move(fetch->outcome));
}

void stillThere(GObject *source, GAsyncResult *answer, gpointer data)
{
    FetchPointer fetch(static_cast<Fetch *>(data));
    sparql::GFailure failure;
    GVariant *reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), answer, &failure);
    if (reply)
        g_variant_unref(reply);
    else
        fetch->outcome.isLost = true;
    deliver(std::move(fetch));
}

void rowsRead(GObject *source, GAsyncResult *answer, gpointer data)
{
    Q_UNUSED(source)
    Q_UNUSED(answer)
    FetchPointer fetch(static_cast<Fetch *>(data));
    // Rows come over a pipe of their own. A store that ends cuts it at any byte, which looks like the end or
    // like damage, and that may be seen before the end of the connection is.
    if (!fetch->peer || g_cancellable_is_cancelled(fetch->cancellable.get())) {
        deliver(std::move(fetch));
        return;
    }
    GDBusConnection *peer = fetch->peer.get();
    GCancellable *cancellable = fetch->cancellable.get();
    g_dbus_connection_call(peer, nullptr, "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr,
                           G_DBUS_CALL_FLAGS_NONE, G_MAXINT, cancellable, stillThere, fetch.release());
}

void queryAnswered(GObject *source, GAsyncResult *answer, gpointer data)
{
    FetchPointer fetch(static_cast<Fetch *>(data));
    sparql::GFailure failure;
    auto cursor = sparql::GRef<TrackerSparqlCursor>::taken(
        tracker_sparql_connection_query_finish(TRACKER_SPARQL_CONNECTION(source), answer, &failure));
    if (!cursor) {
        fetch->outcome.error = failure ? failure.message() : u"the store gave no answer"_s;
        fetch->outcome.isUnserved = isUnserved(failure);
        deliver(std::move(fetch));
        return;
    }
    GTask *task = g_task_new(cursor.get(), fetch->cancellable.get(), rowsRead, fetch.get());
    g_task_set_check_cancellable(task, FALSE);
    g_task_set_task_data(task, fetch.release(), nullptr);
    g_task_run_in_thread(task, readAllRows);
    g_object_unref(task);
}

} // namespace

void fetchRows(TrackerSparqlConnection *connection, GDBusConnection *peer, const QString &text,
               GCancellable *cancellable, std::function<void(StatementOutcome)> done)
{
    auto fetch = std::make_unique<Fetch>();
    fetch->peer = sparql::GRef<GDBusConnection>::shared(peer);
    fetch->cancellable = sparql::GRef<GCancellable>::shared(cancellable);
    fetch->done = std::move(done);
    tracker_sparql_connection_query_async(connection, text.toUtf8().constData(), cancellable, queryAnswered,
                                          fetch.release());
}
