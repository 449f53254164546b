// SPDX-License-Identifier: GPL-3.0-or-later
#include "storepeer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QPointer>

#include <libtracker-sparql/tracker-sparql.h>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char peerName[] = "com.harrow.Kestrel.Store";
constexpr char changesPath[] = "/com/harrow/Kestrel/Store/Changes";
constexpr char changesInterface[] = "com.harrow.Kestrel.Store.Changes";
const QString serviceName = u"com.harrow.Kestrel.Store"_s;
constexpr int socketTimeoutMs = 30'000;
constexpr int recordedTimeoutMs = 2000;
constexpr int firstRetryMs = 200;
constexpr int lastRetryMs = 10'000;

// What is asked may be answered after the one who asked is gone.
using Asker = QPointer<StorePeer>;

Asker takeAsker(gpointer data)
{
    const std::unique_ptr<Asker> asker(static_cast<Asker *>(data));
    return *asker;
}

QString takeMessage(GError *error)
{
    const QString message = error ? QString::fromUtf8(error->message).simplified() : u"no reason was given"_s;
    g_clear_error(&error);
    return message;
}

} // namespace

struct StorePeer::Question
{
    Asker asker;
    Answer answer;
    GObjectRef<GCancellable> cancellable;
    QList<QStringList> rows;
    QString error;

    // The last that is done with it.
    void finish()
    {
        if (asker && !g_cancellable_is_cancelled(cancellable.get()))
            answer(rows, error);
    }
};

StorePeer::StorePeer(QObject *parent) : QObject(parent), m_asking(g_cancellable_new())
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &StorePeer::findSocket);
    auto *watcher = new QDBusServiceWatcher(serviceName, QDBusConnection::sessionBus(),
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] {
        if (m_retry.isActive())
            start();
    });
}

StorePeer::~StorePeer()
{
    forget();
    close();
}

void StorePeer::start()
{
    m_retry.stop();
    if (!m_isConnecting && !m_endpoint)
        findSocket();
}

void StorePeer::findSocket()
{
    m_isConnecting = true;
    const QDBusMessage call = QDBusMessage::createMethodCall(serviceName, u"/com/harrow/Kestrel/Store"_s,
                                                             serviceName, u"Socket"_s);
    auto *reply
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, socketTimeoutMs), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        const QDBusPendingReply<QString> address = *done;
        if (address.isError())
            retryLater(address.error().message());
        else
            connectTo(address.value());
    });
}

void StorePeer::connectTo(const QString &address)
{
    m_opening.reset(g_cancellable_new());
    g_dbus_connection_new_for_address(address.toUtf8().constData(),
                                      G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT, nullptr, m_opening.get(),
                                      onBusOpened, new Asker(this));
}

void StorePeer::onBusOpened(GObject *, GAsyncResult *result, gpointer data)
{
    GError *error = nullptr;
    const GObjectRef<GDBusConnection> bus(g_dbus_connection_new_for_address_finish(result, &error));
    const Asker self = takeAsker(data);
    if (self && bus)
        self->busOpened(bus.get());
    else if (self)
        self->retryLater(takeMessage(std::exchange(error, nullptr)));
    g_clear_error(&error);
}

void StorePeer::busOpened(GDBusConnection *bus)
{
    m_bus = sharedRef(bus);
    g_dbus_connection_set_exit_on_close(bus, FALSE);
    m_closedHandler = g_signal_connect(bus, "closed", G_CALLBACK(onClosed), this);
    m_subscription
        = g_dbus_connection_signal_subscribe(bus, nullptr, changesInterface, nullptr, changesPath, nullptr,
                                             G_DBUS_SIGNAL_FLAGS_NONE, onSignal, this, nullptr);
    tracker_sparql_connection_bus_new_async(peerName, nullptr, bus, m_opening.get(), onEndpointOpened,
                                            new Asker(this));
}

void StorePeer::onEndpointOpened(GObject *, GAsyncResult *result, gpointer data)
{
    GError *error = nullptr;
    GObjectRef<TrackerSparqlConnection> endpoint(tracker_sparql_connection_bus_new_finish(result, &error));
    const Asker self = takeAsker(data);
    if (self && endpoint) {
        self->m_endpoint = std::move(endpoint);
        self->m_isConnecting = false;
        self->m_failures = 0;
        Q_EMIT self->opened();
    } else if (self) {
        self->retryLater(takeMessage(std::exchange(error, nullptr)));
    }
    g_clear_error(&error);
}

void StorePeer::onClosed(GDBusConnection *, gboolean, GError *, gpointer data)
{
    static_cast<StorePeer *>(data)->retryLater(u"the connection was closed"_s);
}

void StorePeer::onSignal(GDBusConnection *, const gchar *, const gchar *, const gchar *, const gchar *,
                         GVariant *, gpointer data)
{
    Q_EMIT static_cast<StorePeer *>(data)->changed();
}

void StorePeer::close()
{
    if (m_opening)
        g_cancellable_cancel(m_opening.get());
    m_endpoint.reset();
    if (!m_bus)
        return;
    g_dbus_connection_signal_unsubscribe(m_bus.get(), m_subscription);
    g_signal_handler_disconnect(m_bus.get(), m_closedHandler);
    g_dbus_connection_close(m_bus.get(), nullptr, nullptr, nullptr);
    m_bus.reset();
}

void StorePeer::retryLater(const QString &reason)
{
    forget();
    close();
    m_isConnecting = false;
    m_retry.start(std::min(firstRetryMs << std::min(m_failures++, 10), lastRetryMs));
    Q_EMIT lost(reason);
}

void StorePeer::forget()
{
    g_cancellable_cancel(m_asking.get());
    m_asking.reset(g_cancellable_new());
}

void StorePeer::ask(const QString &sparql, Answer answer)
{
    auto question = std::make_unique<Question>();
    question->asker = this;
    question->answer = std::move(answer);
    question->cancellable = sharedRef(m_asking.get());
    if (!m_endpoint) {
        question->error = u"there is no connection to the store"_s;
        QTimer::singleShot(0, this,
                           [held = std::shared_ptr<Question>(std::move(question))] { held->finish(); });
        return;
    }
    tracker_sparql_connection_query_async(m_endpoint.get(), sparql.toUtf8().constData(), m_asking.get(),
                                          onCursor, question.release());
}

void StorePeer::askRecorded(const QDateTime &from, const QDateTime &until, const QDateTime &around, int most,
                            const Recorded &answer)
{
    QDBusMessage call = QDBusMessage::createMethodCall(serviceName, u"/com/harrow/Kestrel/Store"_s,
                                                       serviceName, u"RecordedBetween"_s);
    call << from.toSecsSinceEpoch() << until.toSecsSinceEpoch() << around.toSecsSinceEpoch() << uint(most);
    auto *reply
        = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call, recordedTimeoutMs), this);
    // Shared, since a std::function is copied.
    const auto asking = std::make_shared<GObjectRef<GCancellable>>(sharedRef(m_asking.get()));
    connect(reply, &QDBusPendingCallWatcher::finished, this,
            [asking, answer](QDBusPendingCallWatcher *finished) {
                finished->deleteLater();
                const QDBusPendingReply<QList<int>> ids = *finished;
                if (!g_cancellable_is_cancelled(asking->get()))
                    answer(ids.isError() ? QList<int>() : ids.value());
            });
}

void StorePeer::onCursor(GObject *source, GAsyncResult *result, gpointer data)
{
    std::unique_ptr<Question> question(static_cast<Question *>(data));
    GError *error = nullptr;
    const GObjectRef<TrackerSparqlCursor> cursor(
        tracker_sparql_connection_query_finish(TRACKER_SPARQL_CONNECTION(source), result, &error));
    if (!cursor) {
        question->error = takeMessage(error);
        question->finish();
        return;
    }
    // A row may have to be waited for, which is not done in the thread of the scene.
    const GObjectRef<GTask> task(
        g_task_new(cursor.get(), question->cancellable.get(), onRows, question.get()));
    g_task_set_check_cancellable(task.get(), FALSE);
    g_task_set_task_data(task.get(), question.release(), nullptr);
    g_task_run_in_thread(task.get(), readRows);
}

// In a thread of GIO's: touches nothing but the cursor, the rows and the error.
void StorePeer::readRows(GTask *task, gpointer source, gpointer data, GCancellable *cancellable)
{
    auto *cursor = static_cast<TrackerSparqlCursor *>(source);
    auto *question = static_cast<Question *>(data);
    const int columns = tracker_sparql_cursor_get_n_columns(cursor);
    GError *error = nullptr;
    while (tracker_sparql_cursor_next(cursor, cancellable, &error)) {
        QStringList row;
        for (int column = 0; column < columns; ++column)
            row.append(QString::fromUtf8(tracker_sparql_cursor_get_string(cursor, column, nullptr)));
        question->rows.append(row);
    }
    if (error)
        question->error = takeMessage(error);
    tracker_sparql_cursor_close(cursor);
    g_task_return_boolean(task, TRUE);
}

void StorePeer::onRows(GObject *, GAsyncResult *, gpointer data)
{
    const std::unique_ptr<Question> question(static_cast<Question *>(data));
    question->finish();
}

QString StorePeer::literal(const QString &text)
{
    QString escaped;
    for (const QChar character : text) {
        if (character == u'"' || character == u'\\')
            escaped += u'\\';
        if (character.unicode() >= 0x20)
            escaped += character;
        else if (character.unicode() != 0)
            escaped += u"\\u%1"_s.arg(character.unicode(), 4, 16, QChar(u'0'));
    }
    return u'"' + escaped + u'"';
}
