// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"

#include <libtracker-sparql/tracker-sparql.h>

#include <QList>
#include <QObject>
#include <QStringList>

#include <memory>

// Reads the rows of a cursor whose source may be slow or never answer: a thread of the library waits for
// them, the object's thread gets them in pieces. Destroying it ends the reading; nobody waits for the thread.
class CursorStream : public QObject
{
    Q_OBJECT

public:
    explicit CursorStream(GRef<TrackerSparqlCursor> cursor, QObject *parent = nullptr);
    ~CursorStream() override;

Q_SIGNALS:
    void rows(const QList<QStringList> &rows);
    // The last word; empty when all rows came.
    void finished(const QString &error);

private:
    struct Shared;
    struct Piece;

    static void read(GTask *task, gpointer source, gpointer data, GCancellable *cancellable);
    static void deliver(const std::shared_ptr<Shared> &shared, QList<QStringList> rows, bool last,
                        const QString &error);
    static gboolean take(gpointer piece);

    std::shared_ptr<Shared> m_shared;
};
