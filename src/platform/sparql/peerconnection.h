// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "changenotifier.h"
#include "gref.h"

#include <QObject>

using TrackerSparqlConnection = struct _TrackerSparqlConnection;

// The private connection to the store service at one address: its SPARQL endpoint and what it tells of
// changes. Dead once closed() or failed() came; make another.
class PeerConnection : public QObject
{
    Q_OBJECT

public:
    explicit PeerConnection(const QString &address, QObject *parent = nullptr);
    ~PeerConnection() override;

    // Null until opened().
    [[nodiscard]] TrackerSparqlConnection *endpoint() const { return m_endpoint.get(); }
    [[nodiscard]] GDBusConnection *bus() const { return m_bus.get(); }

Q_SIGNALS:
    void opened();
    void failed(QString reason);
    void closed();
    void changed(QList<ChangeNotifier::Quad> deletes, QList<ChangeNotifier::Quad> inserts);
    // The database behind the service was rebuilt.
    void rebuilt();

private:
    void busOpened(GDBusConnection *bus);

    static void onBusOpened(GObject *source, GAsyncResult *answer, gpointer data);
    static void onEndpointOpened(GObject *source, GAsyncResult *answer, gpointer data);
    static void onClosed(GDBusConnection *bus, gboolean vanished, GError *error, gpointer data);
    static void onSignal(GDBusConnection *bus, const gchar *sender, const gchar *path, const gchar *interface,
                         const gchar *signal, GVariant *arguments, gpointer data);

    sparql::GRef<GCancellable> m_cancellable;
    sparql::GRef<GDBusConnection> m_bus;
    sparql::GRef<TrackerSparqlConnection> m_endpoint;
    guint m_subscription = 0;
    gulong m_closedHandler = 0;
};
