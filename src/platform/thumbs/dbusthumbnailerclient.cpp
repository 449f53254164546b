// SPDX-License-Identifier: GPL-3.0-or-later
#include "dbusthumbnailerclient.h"

#include "thumbnailname.h"
#include "thumbslog.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int DeadlineMs = 30000;

QString serviceName()
{
    return u"com.harrow.Kestrel.Thumbnailer"_s;
}

QString thumbnailerPath()
{
    return u"/org/freedesktop/thumbnails/Thumbnailer1"_s;
}

QString thumbnailerInterface()
{
    return u"org.freedesktop.thumbnails.Thumbnailer1"_s;
}

QDBusMessage thumbnailerCall(const QString &method)
{
    QDBusMessage call
        = QDBusMessage::createMethodCall(serviceName(), thumbnailerPath(), thumbnailerInterface(), method);
    // Starting it is the activator's part: it also knows the way for a service that is not installed.
    call.setAutoStartService(false);
    return call;
}

QString addressOf(const QUrl &url)
{
    return QString::fromLatin1(url.toEncoded());
}

} // namespace

DBusThumbnailerClient::DBusThumbnailerClient(const QDBusConnection &bus, QObject *parent)
    : ThumbnailerClient(parent),
      m_bus(bus),
      m_activator(serviceName(), u"kestrel-thumbnailer"_s)
{
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(DeadlineMs);
    connect(&m_deadline, &QTimer::timeout, this, [this] { failAll(u"the thumbnailer does not answer"_s); });
    connect(&m_activator, &ServiceActivator::ready, this, &DBusThumbnailerClient::flush);
    connect(&m_activator, &ServiceActivator::failed, this, &DBusThumbnailerClient::failAll);
    connect(&m_activator, &ServiceActivator::ownerChanged, this, &DBusThumbnailerClient::ownerChanged);
    const auto listen = [this](const QString &signal, const char *slot) {
        m_bus.connect(serviceName(), thumbnailerPath(), thumbnailerInterface(), signal, this, slot);
    };
    listen(u"Ready"_s, SLOT(serviceReady(uint, QStringList)));
    listen(u"Error"_s, SLOT(serviceError(uint, QStringList, int, QString)));
    listen(u"Finished"_s, SLOT(serviceFinished(uint)));
}

void DBusThumbnailerClient::setDeadline(int ms)
{
    m_deadline.setInterval(ms);
}

void DBusThumbnailerClient::request(const QList<QUrl> &urls, const QStringList &mimeTypes,
                                    const QString &flavor)
{
    if (urls.isEmpty())
        return;
    Batch batch;
    batch.flavor = flavor;
    for (qsizetype i = 0; i < urls.size(); ++i) {
        const QString uri = addressOf(urls.at(i));
        batch.order.append(uri);
        batch.outstanding.insert(uri, urls.at(i));
        batch.mimeTypes.insert(uri, mimeTypes.value(i));
    }
    m_batches.insert(++m_lastBatch, batch);
    // Asking is no sign of life: a deadline that runs goes on.
    if (!m_deadline.isActive())
        m_deadline.start();
    m_activator.ensure();
}

void DBusThumbnailerClient::remove(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls)
        m_removals.append(addressOf(url));
    if (!m_removals.isEmpty())
        m_activator.ensure();
}

// What the service has begun it still reports, so cancelled batches stay until it is through with them.
void DBusThumbnailerClient::cancel()
{
    m_batches.removeIf([](const std::pair<const int &, Batch &> &entry) { return !entry.second.sent; });
    for (Batch &batch : m_batches) {
        if (batch.handle != 0 && !batch.cancelled)
            dequeue(batch.handle);
        batch.cancelled = true;
    }
    watch();
}

void DBusThumbnailerClient::dequeue(uint handle)
{
    m_bus.asyncCall(thumbnailerCall(u"Dequeue"_s) << handle);
}

void DBusThumbnailerClient::flush()
{
    if (!m_removals.isEmpty()) {
        QDBusMessage call
            = QDBusMessage::createMethodCall(serviceName(), u"/org/freedesktop/thumbnails/Cache1"_s,
                                             u"org.freedesktop.thumbnails.Cache1"_s, u"Delete"_s);
        call.setAutoStartService(false);
        m_bus.asyncCall(call << std::exchange(m_removals, {}));
    }
    QList<int> unsent;
    for (auto batch = m_batches.cbegin(); batch != m_batches.cend(); ++batch) {
        if (!batch->sent)
            unsent.append(batch.key());
    }
    // The service does the newest first.
    std::sort(unsent.begin(), unsent.end());
    for (const int id : std::as_const(unsent))
        sendBatch(id);
}

void DBusThumbnailerClient::sendBatch(int id)
{
    Batch &batch = m_batches[id];
    batch.sent = true;
    QStringList uris;
    QStringList mimeTypes;
    for (const QString &uri : std::as_const(batch.order)) {
        if (!batch.outstanding.contains(uri))
            continue;
        uris.append(uri);
        mimeTypes.append(batch.mimeTypes.value(uri));
    }
    QDBusMessage call = thumbnailerCall(u"Queue"_s);
    call << uris << mimeTypes << batch.flavor << u"default"_s << uint(0);
    auto *const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call, m_deadline.interval()), this);
    const int attempt = ++batch.attempts;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, id, attempt, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<uint> reply = *watcher;
        if (!reply.isError())
            queued(id, reply.value());
        else if (m_batches.value(id).attempts == attempt && m_batches.value(id).sent)
            notQueued(id, reply.error());
    });
}

void DBusThumbnailerClient::notQueued(int id, const QDBusError &error)
{
    // A service that hangs is given up when the deadline passes, one that went away is started again.
    if (error.type() == QDBusError::NoReply || error.type() == QDBusError::TimedOut)
        return;
    if (error.type() == QDBusError::ServiceUnknown)
        retryBatch(id);
    else
        failBatch(id, error.message());
}

void DBusThumbnailerClient::retryBatch(int id)
{
    Batch &batch = m_batches[id];
    if (batch.attempts > 1) {
        failBatch(id, u"the thumbnailer ended twice"_s);
        return;
    }
    batch.sent = false;
    batch.handle = 0;
    m_activator.ensure();
}

void DBusThumbnailerClient::queued(int id, uint handle)
{
    const auto batch = m_batches.find(id);
    if (batch == m_batches.end())
        return;
    batch->handle = handle;
    if (batch->cancelled)
        dequeue(handle);
    if (batch->outstanding.isEmpty())
        m_batches.erase(batch);
}

bool DBusThumbnailerClient::take(const QString &uri, QUrl &url, QString &flavor)
{
    for (Batch &batch : m_batches) {
        const auto found = batch.outstanding.find(uri);
        if (found == batch.outstanding.end())
            continue;
        url = *found;
        flavor = batch.flavor;
        batch.outstanding.erase(found);
        return true;
    }
    return false;
}

void DBusThumbnailerClient::serviceReady(uint, const QStringList &uris)
{
    for (const QString &uri : uris) {
        QUrl url;
        QString flavor;
        if (take(uri, url, flavor))
            Q_EMIT thumbnail(url, QUrl::fromLocalFile(thumbnailPath(uri, flavor)));
    }
    watch();
}

void DBusThumbnailerClient::serviceError(uint, const QStringList &uris, int, const QString &message)
{
    for (const QString &uri : uris) {
        QUrl url;
        QString flavor;
        if (take(uri, url, flavor))
            Q_EMIT error(message, url);
    }
    watch();
}

void DBusThumbnailerClient::serviceFinished(uint handle)
{
    m_batches.removeIf(
        [handle](const std::pair<const int &, Batch &> &entry) { return entry.second.handle == handle; });
    watch();
}

void DBusThumbnailerClient::ownerChanged(bool owned)
{
    if (owned)
        return;
    // Handles of the service that went mean nothing to the next one.
    m_batches.removeIf([](const std::pair<const int &, Batch &> &entry) {
        return entry.second.sent && (entry.second.cancelled || entry.second.outstanding.isEmpty());
    });
    const QList<int> ids = m_batches.keys();
    for (const int id : ids) {
        if (!m_batches.value(id).sent)
            continue;
        qCInfo(thumbsLog, "the thumbnailer ended; it is started again for what it left");
        retryBatch(id);
    }
    watch();
}

void DBusThumbnailerClient::failBatch(int id, const QString &message)
{
    const Batch batch = m_batches.take(id);
    if (batch.cancelled)
        return;
    for (const QString &uri : batch.order) {
        if (batch.outstanding.contains(uri))
            Q_EMIT error(message, batch.outstanding.value(uri));
    }
}

void DBusThumbnailerClient::failAll(const QString &message)
{
    qCWarning(thumbsLog, "%ls", qUtf16Printable(message));
    m_removals.clear();
    const QList<int> ids = m_batches.keys();
    for (const int id : ids)
        failBatch(id, message);
    watch();
}

bool DBusThumbnailerClient::isWaiting() const
{
    return std::any_of(m_batches.begin(), m_batches.end(),
                       [](const Batch &batch) { return !batch.outstanding.isEmpty(); });
}

// Called at every sign of life.
void DBusThumbnailerClient::watch()
{
    if (isWaiting())
        m_deadline.start();
    else
        m_deadline.stop();
}
