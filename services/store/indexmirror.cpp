// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexmirror.h"

#include "indexendpoint.h"
#include "storelog.h"

#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int s_retryMs = 60000;
constexpr int s_mostFailures = 3; // one after the other; each may leave a thread that waits for an answer
constexpr int s_longestWaitMs = 20000; // for an index that tells all, but slowly
} // namespace

IndexMirror::IndexMirror(const QDBusConnection &bus, int patienceMs, QObject *parent)
    : QObject(parent),
      m_index(bus),
      m_patienceMs(patienceMs),
      m_cancellable(g_cancellable_new())
{
    connect(&m_index, &DesktopIndex::stateChanged, this, &IndexMirror::update);
    connect(&m_index, &DesktopIndex::endpointsChanged, this, &IndexMirror::update);
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(s_retryMs);
    connect(&m_retryTimer, &QTimer::timeout, this, &IndexMirror::update);
    m_waitTimer.setSingleShot(true);
    m_waitTimer.setInterval(s_longestWaitMs);
    connect(&m_waitTimer, &QTimer::timeout, this, &IndexMirror::settle);
}

IndexMirror::~IndexMirror()
{
    g_cancellable_cancel(m_cancellable.get());
    qDeleteAll(m_endpoints);
}

void IndexMirror::tellAll()
{
    m_settled = false;
    m_hasToldAll = false;
    m_waitTimer.start();
    if (std::exchange(m_started, true)) {
        for (IndexEndpoint *endpoint : std::as_const(m_endpoints)) {
            if (!endpoint->owesAll())
                endpoint->askAll();
        }
        if (!isOwed())
            settle();
        return;
    }
    const auto back = [](GObject *, GAsyncResult *result, gpointer data) {
        const std::unique_ptr<QPointer<IndexMirror>> mirror(static_cast<QPointer<IndexMirror> *>(data));
        if (*mirror)
            (*mirror)->busReady(result);
    };
    g_bus_get(G_BUS_TYPE_SESSION, m_cancellable.get(), back, new QPointer<IndexMirror>(this));
}

void IndexMirror::busReady(GAsyncResult *result)
{
    GError *error = nullptr;
    m_bus.reset(g_bus_get_finish(result, &error));
    if (error) {
        qCWarning(lcStore, "no session bus for the file index: %s", GErrorRef(error)->message);
        settle();
        return;
    }
    g_dbus_connection_set_exit_on_close(m_bus.get(), FALSE);
    m_index.start();
}

void IndexMirror::onMountsChanged()
{
    m_index.lookAgain();
}

// Opens what has come and lets go of what has gone. An index that is still reading folders is waited for; one
// that is known already is followed also while it reads.
void IndexMirror::update()
{
    const QStringList paths = m_index.endpoints();
    const QStringList known = m_endpoints.keys();
    for (const QString &path : known) {
        if (!paths.contains(path))
            drop(path);
    }
    if (std::exchange(m_owner, m_index.owner()) != m_index.owner())
        m_failures = 0;
    const bool isReady = m_index.state() == DesktopIndex::State::Ready;
    if (isReady && m_failures < s_mostFailures) {
        for (const QString &path : paths) {
            if (!m_endpoints.contains(path))
                open(path);
        }
    }
    if (m_index.state() != DesktopIndex::State::Looking && !isReady)
        settle();
    if (m_index.state() == DesktopIndex::State::Absent && std::exchange(m_hasToldAll, false))
        Q_EMIT silent();
}

void IndexMirror::open(const QString &path)
{
    auto *endpoint = new IndexEndpoint(m_bus.get(), m_index.owner(), path, m_patienceMs, this);
    m_endpoints.insert(path, endpoint);
    connect(endpoint, &IndexEndpoint::told, this, [this, endpoint](const QList<ToldFile> &files) {
        for (const ToldFile &file : files) {
            if (endpoint->owesAll())
                m_told.insert(file.path);
        }
        Q_EMIT told(files);
    });
    connect(endpoint, &IndexEndpoint::dropped, this, &IndexMirror::dropped);
    connect(endpoint, &IndexEndpoint::toldAll, this, &IndexMirror::endpointDone);
    connect(endpoint, &IndexEndpoint::failed, this, [this, path] {
        const bool isGivenUp = ++m_failures >= s_mostFailures;
        if (!isGivenUp)
            m_retryTimer.start();
        drop(path);
        // What it told before is followed by nobody from here on.
        if (isGivenUp && std::exchange(m_hasToldAll, false))
            Q_EMIT silent();
    });
    endpoint->open();
}

bool IndexMirror::isOwed() const
{
    return std::any_of(m_endpoints.cbegin(), m_endpoints.cend(),
                       [](const IndexEndpoint *endpoint) { return endpoint->owesAll(); });
}

void IndexMirror::endpointDone()
{
    if (isOwed())
        return;
    const QSet<QString> all = std::exchange(m_told, {});
    if (std::exchange(m_isWhole, true)) {
        m_hasToldAll = true;
        m_failures = 0;
        Q_EMIT toldAll(all);
    }
    settle();
}

// Of an endpoint that went before it had told all, nothing is known.
void IndexMirror::drop(const QString &path)
{
    IndexEndpoint *endpoint = m_endpoints.take(path);
    endpoint->disconnect(this);
    endpoint->deleteLater();
    m_isWhole = false;
    endpointDone();
}

void IndexMirror::settle()
{
    m_waitTimer.stop();
    if (std::exchange(m_settled, true))
        return;
    if (!m_hasToldAll)
        Q_EMIT silent();
    Q_EMIT settled();
}
