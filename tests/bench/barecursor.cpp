// SPDX-License-Identifier: GPL-3.0-or-later
#include "barecursor.h"

#include "platform/sparql/dialectadapter.h"
#include "platform/sparql/gref.h"
#include "support/storetexts.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <libtracker-sparql/tracker-sparql.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int columns = 8;

QString libraryText()
{
    QString text = storetexts::library.arg(u"<urn:equipment:Maker:Model:>"_s);
    return text.replace(u"_FILTER_"_s, QString());
}

} // namespace

struct BareCursor::Private
{
    QByteArray text = adaptToStore(SparqlQuery(libraryText())).text.toUtf8();
    sparql::GRef<GDBusConnection> bus;
    sparql::GRef<TrackerSparqlConnection> store;
};

BareCursor::BareCursor() : d(std::make_unique<Private>())
{
    const QString service = u"com.harrow.Kestrel.Store"_s;
    const QDBusMessage call
        = QDBusMessage::createMethodCall(service, u"/com/harrow/Kestrel/Store"_s, service, u"Socket"_s);
    const QByteArray address
        = QDBusConnection::sessionBus().call(call).arguments().value(0).toString().toUtf8();
    sparql::GFailure failure;
    d->bus = sparql::GRef<GDBusConnection>::taken(g_dbus_connection_new_for_address_sync(
        address.constData(), G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr, nullptr, &failure));
    if (d->bus)
        d->store = sparql::GRef<TrackerSparqlConnection>::taken(
            tracker_sparql_connection_bus_new("com.harrow.Kestrel.Store", nullptr, d->bus.get(), &failure));
    if (!d->store)
        qFatal("bare connection: %s", qPrintable(failure.message()));
}

BareCursor::~BareCursor() = default;

int BareCursor::run() const
{
    sparql::GFailure failure;
    const auto cursor = sparql::GRef<TrackerSparqlCursor>::taken(
        tracker_sparql_connection_query(d->store.get(), d->text.constData(), nullptr, &failure));
    if (!cursor)
        qFatal("bare query: %s", qPrintable(failure.message()));
    int rows = 0;
    volatile qint64 bytes = 0; // what was looked at cannot be left out
    while (tracker_sparql_cursor_next(cursor.get(), nullptr, &failure)) {
        for (int column = 0; column < columns; ++column) {
            glong length = 0;
            tracker_sparql_cursor_get_string(cursor.get(), column, &length);
            bytes = bytes + length;
        }
        ++rows;
    }
    return rows;
}
