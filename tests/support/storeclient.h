// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>
#include <libtracker-sparql/tracker-sparql.h>

#include <QList>
#include <QObject>
#include <QStringList>

// A client of the store's private socket, as plain as one can be: blocking queries and updates, and what the
// store told.
class StoreClient : public QObject
{
    Q_OBJECT

public:
    struct Quad
    {
        int graph = 0;
        int subject = 0;
        int predicate = 0;
        int object = 0;
        friend bool operator==(const Quad &, const Quad &) = default;
    };

    explicit StoreClient(const QString &address, QObject *parent = nullptr);
    ~StoreClient() override;

    [[nodiscard]] bool isConnected() const { return m_store != nullptr; }
    // Rows as texts; unbound: null. lastError() tells of a failure.
    QList<QStringList> query(const QString &text);
    // One column of the first row.
    QString value(const QString &text);
    // The error, empty when the store acknowledged it.
    QString update(const QString &text);
    // Several in one transaction.
    QString updateAll(const QStringList &texts);
    // The error of any method of the endpoint, called with a descriptor alone.
    QString callWithDescriptor(const char *method);
    [[nodiscard]] QString lastError() const { return m_error; }

    // What the store told since the start.
    QList<QList<Quad>> deletes;
    QList<QList<Quad>> inserts;
    int resets = 0;
    [[nodiscard]] QList<Quad> allInserts() const;
    [[nodiscard]] QList<Quad> allDeletes() const;
    void forget();

private:
    static void signalled(GDBusConnection *, const char *, const char *, const char *, const char *signal,
                          GVariant *arguments, gpointer self);

    GDBusConnection *m_bus = nullptr;
    TrackerSparqlConnection *m_store = nullptr;
    guint m_subscription = 0;
    QString m_error;
};
