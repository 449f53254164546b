// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"

#include <QObject>
#include <QTimer>

using TrackerSparqlConnection = struct _TrackerSparqlConnection;

// The database folder, opened read-only in this process; tried again while there is none.
class FolderReader : public QObject
{
    Q_OBJECT

public:
    explicit FolderReader(const QString &folder, QObject *parent = nullptr);
    ~FolderReader() override;

    [[nodiscard]] static QString defaultFolder();

    // Null until opened().
    [[nodiscard]] TrackerSparqlConnection *connection() const { return m_connection.get(); }

    // Opens the folder again: the database in it is another than before.
    void reopen();
    // Looks at once, instead of at the next attempt, whether there is a database now.
    void retryNow();

Q_SIGNALS:
    void opened();

private:
    void open();
    static void onOpened(GObject *source, GAsyncResult *answer, gpointer data);

    QString m_folder;
    QTimer m_retry;
    sparql::GRef<GCancellable> m_cancellable;
    sparql::GRef<TrackerSparqlConnection> m_connection;
};
