// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storeendpoint.h"

#include "platform/sparql/gref.h"

#include <QTcpServer>

#include <libtracker-sparql/tracker-sparql.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// Whoever takes a free port between asking for it and using it takes another one next time.
constexpr int mostAttempts = 20;

quint16 freePort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost) ? probe.serverPort() : quint16(0);
}

sparql::GRef<TrackerSparqlConnection> openStore(const QString &folder)
{
    const auto file = sparql::GRef<GFile>::taken(g_file_new_for_path(qPrintable(folder)));
    const auto ontology = sparql::GRef<GFile>::taken(tracker_sparql_get_ontology_nepomuk());
    sparql::GFailure failure;
    auto store = sparql::GRef<TrackerSparqlConnection>::taken(tracker_sparql_connection_new(
        TRACKER_SPARQL_CONNECTION_FLAGS_NONE, file.get(), ontology.get(), nullptr, &failure));
    if (!store)
        qWarning("no store: %s", qPrintable(failure.message()));
    return store;
}

} // namespace

struct StoreEndpoint::Private
{
    QTemporaryDir folder;
    sparql::GRef<TrackerSparqlConnection> store;
    sparql::GRef<TrackerEndpointHttp> endpoint;
    quint16 port = 0;
};

StoreEndpoint::StoreEndpoint() : d(std::make_unique<Private>()) { }

StoreEndpoint::~StoreEndpoint() = default;

bool StoreEndpoint::open()
{
    d->store = openStore(d->folder.path());
    for (int attempt = 0; d->store && !d->endpoint && attempt < mostAttempts; ++attempt) {
        d->port = freePort();
        sparql::GFailure failure;
        d->endpoint = sparql::GRef<TrackerEndpointHttp>::taken(
            tracker_endpoint_http_new(d->store.get(), d->port, nullptr, nullptr, &failure));
        if (!d->endpoint)
            qWarning("no endpoint: %s", qPrintable(failure.message()));
    }
    return bool(d->endpoint);
}

QUrl StoreEndpoint::address() const
{
    return QUrl(u"http://127.0.0.1:%1/sparql/"_s.arg(d->port));
}

QString StoreEndpoint::update(const QString &text)
{
    sparql::GFailure failure;
    tracker_sparql_connection_update(d->store.get(), text.toUtf8().constData(), nullptr, &failure);
    return failure.message();
}

QList<QStringList> StoreEndpoint::select(const QString &text)
{
    sparql::GFailure failure;
    const auto cursor = sparql::GRef<TrackerSparqlCursor>::taken(
        tracker_sparql_connection_query(d->store.get(), text.toUtf8().constData(), nullptr, &failure));
    QList<QStringList> rows;
    while (cursor && tracker_sparql_cursor_next(cursor.get(), nullptr, &failure)) {
        QStringList row;
        for (int i = 0; i < tracker_sparql_cursor_get_n_columns(cursor.get()); ++i)
            row.append(QString::fromUtf8(tracker_sparql_cursor_get_string(cursor.get(), i, nullptr)));
        rows.append(row);
    }
    if (failure) {
        qWarning("the store did not answer: %s", qPrintable(failure.message()));
        rows.clear();
    }
    return rows;
}
