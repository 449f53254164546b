// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gobjectref.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <functional>

using TrackerSparqlConnection = struct _TrackerSparqlConnection;

// The extension's own connection to the service that keeps the library: asks the session bus where its
// private socket is, connects, and does so again when the service went away. Nothing waits for it.
class StorePeer : public QObject
{
    Q_OBJECT

public:
    explicit StorePeer(QObject *parent = nullptr);
    ~StorePeer() override;

    // Begins to connect; called again, tries at once what would be tried later.
    void start();
    [[nodiscard]] bool isOpen() const { return m_endpoint != nullptr; }

    // Rows of texts; unbound cells are empty. An answer comes exactly once, through the event loop, unless
    // forget() or the end of this object came first.
    using Answer = std::function<void(const QList<QStringList> &rows, const QString &error)>;
    void ask(const QString &sparql, Answer answer);
    // Identifiers of videos that were recorded from one time until before another, those around a time first.
    // Empty also when the service does not tell.
    using Recorded = std::function<void(const QList<int> &ids)>;
    void askRecorded(const QDateTime &from, const QDateTime &until, const QDateTime &around, int most,
                     const Recorded &answer);
    // Drops all questions that have no answer yet.
    void forget();

    // A text as part of a SPARQL text, in quotes.
    [[nodiscard]] static QString literal(const QString &text);

Q_SIGNALS:
    void opened();
    // There is no store at the moment; opened() comes when there is one again.
    void lost(QString reason);
    // Some video came, went, or has another title, file name or place.
    void changed();

private:
    struct Question;
    void findSocket();
    void connectTo(const QString &address);
    void busOpened(GDBusConnection *bus);
    void close();
    void retryLater(const QString &reason);

    static void onBusOpened(GObject *source, GAsyncResult *result, gpointer data);
    static void onEndpointOpened(GObject *source, GAsyncResult *result, gpointer data);
    static void onClosed(GDBusConnection *bus, gboolean vanished, GError *error, gpointer data);
    static void onSignal(GDBusConnection *bus, const gchar *sender, const gchar *path, const gchar *interface,
                         const gchar *signal, GVariant *arguments, gpointer data);
    static void onCursor(GObject *source, GAsyncResult *result, gpointer data);
    static void readRows(GTask *task, gpointer source, gpointer data, GCancellable *cancellable);
    static void onRows(GObject *source, GAsyncResult *result, gpointer data);

    QTimer m_retry;
    int m_failures = 0;
    bool m_isConnecting = false;
    GObjectRef<GCancellable> m_opening;
    GObjectRef<GCancellable> m_asking;
    GObjectRef<GDBusConnection> m_bus;
    GObjectRef<TrackerSparqlConnection> m_endpoint;
    guint m_subscription = 0;
    gulong m_closedHandler = 0;
};
