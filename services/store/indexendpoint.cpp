// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexendpoint.h"

#include "cursorstream.h"
#include "indexquery.h"
#include "storelog.h"
#include "storepaths.h"

#include "platform/sparql/fileuri.h"

#include <QPointer>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int s_changeMs = 200; // changes come in bursts
// A file that was moved may be told as one that went and, when it has been read again, one that came.
constexpr int s_dropMs = 3000;
// Ten times what it took on a slow machine, and an end.
constexpr qint64 s_patiencePerFileMs = 1;
constexpr qint64 s_longestPatienceMs = 3600000;
constexpr qsizetype s_mostNamed = 200; // resources in a question
constexpr qsizetype s_mostChanged = 5000; // beyond, all videos are asked for
} // namespace

IndexEndpoint::IndexEndpoint(GDBusConnection *bus, const QString &owner, const QString &path, int patienceMs,
                             QObject *parent)
    : QObject(parent),
      m_bus(shareGRef(bus)),
      m_owner(owner.toUtf8()),
      m_path(path.toUtf8()),
      m_cancellable(g_cancellable_new()),
      m_patienceMs(patienceMs),
      m_patienceForAllMs(patienceMs)
{
    m_changeTimer.setSingleShot(true);
    m_changeTimer.setInterval(s_changeMs);
    connect(&m_changeTimer, &QTimer::timeout, this, &IndexEndpoint::askAboutChanges);
    m_dropTimer.setSingleShot(true);
    m_dropTimer.setInterval(s_dropMs);
    connect(&m_dropTimer, &QTimer::timeout, this,
            [this] { Q_EMIT dropped(QStringList(std::exchange(m_dropped, {}).values())); });
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, [this] { fail(u"no answer in time"_s); });
}

IndexEndpoint::~IndexEndpoint()
{
    if (m_notifier)
        g_signal_handlers_disconnect_by_data(m_notifier.get(), this);
    g_cancellable_cancel(m_cancellable.get());
}

template <void (IndexEndpoint::*Method)(GAsyncResult *)>
void IndexEndpoint::back(GObject *, GAsyncResult *result, gpointer data)
{
    const std::unique_ptr<QPointer<IndexEndpoint>> endpoint(static_cast<QPointer<IndexEndpoint> *>(data));
    if (*endpoint)
        ((*endpoint)->*Method)(result);
}

gpointer IndexEndpoint::backData()
{
    return new QPointer<IndexEndpoint>(this);
}

void IndexEndpoint::open()
{
    m_owesAll = true;
    m_patience.start(m_patienceMs);
    // The library's own asynchronous call reads an answer of the owner in the thread that waits for it.
    struct Address
    {
        QByteArray owner;
        QByteArray path;
        GRef<GDBusConnection> bus;
    };
    const auto connectThere = [](GTask *task, gpointer, gpointer data, GCancellable *) {
        const auto *address = static_cast<Address *>(data);
        GError *error = nullptr;
        auto *connection = tracker_sparql_connection_bus_new(
            address->owner.constData(), address->path.constData(), address->bus.get(), &error);
        if (error)
            g_task_return_error(task, error);
        else
            g_task_return_pointer(task, connection, g_object_unref);
    };
    const GRef<GTask> task(
        g_task_new(nullptr, m_cancellable.get(), &IndexEndpoint::back<&IndexEndpoint::opened>, backData()));
    g_task_set_return_on_cancel(task.get(), TRUE);
    g_task_set_task_data(task.get(), new Address{m_owner, m_path, shareGRef(m_bus.get())},
                         [](gpointer data) { delete static_cast<Address *>(data); });
    g_task_run_in_thread(task.get(), connectThere);
}

void IndexEndpoint::opened(GAsyncResult *result)
{
    GError *error = nullptr;
    m_connection.reset(
        static_cast<TrackerSparqlConnection *>(g_task_propagate_pointer(G_TASK(result), &error)));
    if (error) {
        fail(QString::fromUtf8(GErrorRef(error)->message));
        return;
    }
    m_patience.stop();
    if (m_failed)
        return;
    follow(); // before the videos are asked for: nothing falls in between
    askAll();
}

void IndexEndpoint::follow()
{
    m_notifier.reset(tracker_sparql_connection_create_notifier(m_connection.get()));
    if (m_notifier)
        g_signal_connect(m_notifier.get(), "events", G_CALLBACK(&IndexEndpoint::noticed), this);
}

void IndexEndpoint::askAll()
{
    m_owesAll = true;
    // An answer about all of them begins the later the more there are.
    ask({fileCountQuery(),
         [this](const QStringList &cells) { m_patienceForAllMs = patienceFor(cells.value(0).toLongLong()); },
         {}});
    askVideos(allVideosQuestions(), false, [this] {
        m_owesAll = false;
        Q_EMIT toldAll();
    });
}

int IndexEndpoint::patienceFor(qint64 files) const
{
    return int(qBound<qint64>(m_patienceMs, m_patienceMs + files * s_patiencePerFileMs, s_longestPatienceMs));
}

void IndexEndpoint::noticed(TrackerNotifier *, const char *, const char *, GPtrArray *events, gpointer self)
{
    auto *endpoint = static_cast<IndexEndpoint *>(self);
    for (guint i = 0; i < events->len; ++i)
        endpoint->noteEvent(static_cast<TrackerNotifierEvent *>(g_ptr_array_index(events, i)));
}

void IndexEndpoint::noteEvent(TrackerNotifierEvent *event)
{
    const QString urn = QString::fromUtf8(tracker_notifier_event_get_urn(event));
    if (urn.isEmpty())
        return;
    if (m_changed.size() < s_mostChanged)
        m_changed.insert(urn);
    if (tracker_notifier_event_get_event_type(event) == TRACKER_NOTIFIER_EVENT_DELETE) {
        const QString path = localPathOf(canonicalFileUri(urn));
        if (!path.isEmpty()) {
            m_dropped.insert(path);
            m_dropTimer.start();
        }
    }
    if (!m_changeTimer.isActive())
        m_changeTimer.start();
}

void IndexEndpoint::askAboutChanges()
{
    const bool areMany = m_changed.size() >= s_mostChanged;
    if (areMany && m_owesAll) {
        // What is being told may have been read before these changes: all is asked for once more after it.
        m_changeTimer.start();
        return;
    }
    QStringList urns(std::exchange(m_changed, {}).values());
    if (areMany) {
        askAll();
        return;
    }
    while (!urns.isEmpty()) {
        const QStringList some = urns.mid(0, s_mostNamed);
        urns = urns.mid(s_mostNamed);
        askVideos(videosQuestions(some), true, {});
        // A file system that was mounted or unmounted shows in its folder alone.
        ask({indexedFoldersQuery(some),
             [this](const QStringList &) {
                 if (!m_owesAll)
                     askAll();
             },
             {}});
    }
}

void IndexEndpoint::askVideos(const QList<IndexQuestion> &questions, bool fresh,
                              const std::function<void()> &done)
{
    const auto details = std::make_shared<QHash<QString, QStringList>>();
    for (qsizetype i = 0; i < questions.size(); ++i) {
        const IndexQuestion &question = questions[i];
        const auto row = [this, fresh, question, details](const QStringList &cells) {
            if (!question.isLast()) {
                takeDetails(question, cells, details.get());
            } else if (auto file = toldFileOf(cells, *details)) {
                file->fresh = fresh;
                m_files.append(*file);
            }
        };
        ask({question.text, row, i + 1 == questions.size() ? done : std::function<void()>(), !fresh});
    }
}

void IndexEndpoint::ask(Question question)
{
    if (m_failed || question.text.isEmpty())
        return;
    m_questions.push_back(std::move(question));
    if (m_questions.size() == 1)
        askNext();
}

void IndexEndpoint::askNext()
{
    if (m_questions.empty())
        return;
    m_patience.start(m_questions.front().isAboutAll ? m_patienceForAllMs : m_patienceMs);
    tracker_sparql_connection_query_async(m_connection.get(), m_questions.front().text.toUtf8().constData(),
                                          m_cancellable.get(), &IndexEndpoint::back<&IndexEndpoint::answered>,
                                          backData());
}

void IndexEndpoint::answered(GAsyncResult *result)
{
    GError *error = nullptr;
    GRef<TrackerSparqlCursor> cursor(
        tracker_sparql_connection_query_finish(m_connection.get(), result, &error));
    if (error) {
        fail(QString::fromUtf8(GErrorRef(error)->message));
        return;
    }
    if (m_failed)
        return;
    m_stream = new CursorStream(std::move(cursor), this);
    connect(m_stream, &CursorStream::rows, this, &IndexEndpoint::takeRows);
    connect(m_stream, &CursorStream::finished, this, &IndexEndpoint::end);
}

void IndexEndpoint::takeRows(const QList<QStringList> &rows)
{
    m_patience.start();
    const auto take = m_questions.front().row;
    for (const QStringList &cells : rows)
        take(cells);
    if (!m_files.isEmpty())
        Q_EMIT told(std::exchange(m_files, {}));
}

void IndexEndpoint::end(const QString &error)
{
    m_patience.stop();
    m_stream->deleteLater();
    m_stream = nullptr;
    if (!error.isEmpty()) {
        fail(error);
        return;
    }
    const Question question = std::move(m_questions.front());
    m_questions.pop_front();
    askNext();
    if (question.done)
        question.done();
}

void IndexEndpoint::fail(const QString &error)
{
    if (std::exchange(m_failed, true))
        return;
    qCWarning(lcStore, "the file index at %s: %s", m_path.constData(), qUtf8Printable(error));
    m_patience.stop();
    m_changeTimer.stop();
    g_cancellable_cancel(m_cancellable.get());
    m_questions.clear();
    if (m_stream) {
        m_stream->disconnect(this);
        m_stream->deleteLater();
    }
    m_stream = nullptr;
    m_owesAll = false;
    if (m_notifier)
        g_signal_handlers_disconnect_by_data(m_notifier.get(), this);
    Q_EMIT failed(error);
}
