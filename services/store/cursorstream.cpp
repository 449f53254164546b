// SPDX-License-Identifier: GPL-3.0-or-later
#include "cursorstream.h"

#include "database.h"

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int s_rowsAtOnce = 500;
constexpr int s_mostRows = 5'000'000; // more than any disk has; whoever sends more is no index
} // namespace

struct CursorStream::Shared
{
    GRef<TrackerSparqlCursor> cursor; // the thread's
    GRef<GCancellable> cancellable;
    CursorStream *stream; // null once it is gone; not for the thread
};

struct CursorStream::Piece
{
    std::shared_ptr<Shared> shared;
    QList<QStringList> rows;
    bool last;
    QString error;
};

CursorStream::CursorStream(GRef<TrackerSparqlCursor> cursor, QObject *parent)
    : QObject(parent),
      m_shared(new Shared{std::move(cursor), GRef<GCancellable>(g_cancellable_new()), this})
{
    const GRef<GTask> task(g_task_new(nullptr, m_shared->cancellable.get(), nullptr, nullptr));
    g_task_set_task_data(task.get(), new std::shared_ptr<Shared>(m_shared),
                         [](gpointer data) { delete static_cast<std::shared_ptr<Shared> *>(data); });
    g_task_run_in_thread(task.get(), &CursorStream::read);
}

CursorStream::~CursorStream()
{
    m_shared->stream = nullptr;
    g_cancellable_cancel(m_shared->cancellable.get());
}

void CursorStream::read(GTask *task, gpointer, gpointer data, GCancellable *cancellable)
{
    const auto shared = *static_cast<std::shared_ptr<Shared> *>(data);
    TrackerSparqlCursor *cursor = shared->cursor.get();
    QList<QStringList> rows;
    QString error;
    int count = 0;
    GError *failure = nullptr;
    while (tracker_sparql_cursor_next(cursor, cancellable, &failure)) {
        if (++count > s_mostRows) {
            error = u"too many rows"_s;
            break;
        }
        QStringList cells;
        for (int column = 0; column < tracker_sparql_cursor_get_n_columns(cursor); ++column)
            cells.append(columnText(cursor, column));
        rows.append(cells);
        if (rows.size() == s_rowsAtOnce)
            deliver(shared, std::exchange(rows, {}), false, {});
    }
    if (failure)
        error = QString::fromUtf8(GErrorRef(failure)->message);
    deliver(shared, rows, true, error);
    g_task_return_boolean(task, TRUE);
}

void CursorStream::deliver(const std::shared_ptr<Shared> &shared, QList<QStringList> rows, bool last,
                           const QString &error)
{
    auto *piece = new Piece{shared, std::move(rows), last, error};
    GSource *source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(source, &CursorStream::take, piece,
                          [](gpointer data) { delete static_cast<Piece *>(data); });
    g_source_attach(source, nullptr);
    g_source_unref(source);
}

gboolean CursorStream::take(gpointer data)
{
    const auto *piece = static_cast<Piece *>(data);
    if (CursorStream *stream = piece->shared->stream; stream && !piece->rows.isEmpty())
        Q_EMIT stream->rows(piece->rows);
    if (CursorStream *stream = piece->shared->stream; stream && piece->last)
        Q_EMIT stream->finished(piece->error);
    return G_SOURCE_REMOVE;
}
