// SPDX-License-Identifier: GPL-3.0-or-later
#include "obexpush.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

// The other device is asked, and its owner may have to look for it first.
constexpr int callMilliseconds = 120000;

QString clientPath()
{
    return u"/org/bluez/obex"_s;
}

QString clientInterface()
{
    return u"org.bluez.obex.Client1"_s;
}

QString transferInterface()
{
    return u"org.bluez.obex.Transfer1"_s;
}

} // namespace

ObexPush::ObexPush(const QDBusConnection &session, const BluetoothDevice &device, const QStringList &paths,
                   QObject *parent)
    : QObject(parent),
      m_bus(session),
      m_device(device),
      m_paths(paths),
      m_watcher(busName(), session, QDBusServiceWatcher::WatchForUnregistration)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        m_session.clear(); // gone with its service
        m_calling = false; // nobody is left to answer
        if (m_ended)
            deleteLater();
        finish(u"the object exchange service is gone"_s);
    });
}

QString ObexPush::busName()
{
    return u"org.bluez.obex"_s;
}

void ObexPush::start()
{
    // Before anything is sent: a small file is through before the reply that names its transfer is read.
    m_bus.connect(busName(), QString(), u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s, this,
                  SLOT(propertiesChanged(QDBusMessage)));
    QVariantMap options{{u"Target"_s, u"opp"_s}};
    if (!m_device.adapterAddress.isEmpty())
        options.insert(u"Source"_s, m_device.adapterAddress);
    call(clientPath(), clientInterface(), u"CreateSession"_s, {m_device.address, options},
         &ObexPush::sessionMade);
}

void ObexPush::call(const QString &path, const QString &interface, const QString &method,
                    const QVariantList &arguments, void (ObexPush::*answered)(const QDBusMessage &))
{
    QDBusMessage message = QDBusMessage::createMethodCall(busName(), path, interface, method);
    message.setArguments(arguments);
    m_calling = true;
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message, callMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, answered] {
        watcher->deleteLater();
        m_calling = false;
        if (m_ended) // it waited for the answer, which may be a session that nobody wants any more
            deleteLater();
        if (watcher->isError())
            finish(watcher->error().name() + u": "_s + watcher->error().message());
        else
            (this->*answered)(watcher->reply());
    });
}

void ObexPush::sessionMade(const QDBusMessage &reply)
{
    m_session = qdbus_cast<QDBusObjectPath>(reply.arguments().value(0)).path();
    if (m_session.isEmpty()) {
        finish(u"the service makes no session"_s);
        return;
    }
    if (m_ended)
        removeSession();
    else
        sendNext();
}

void ObexPush::sendNext()
{
    m_transfer.clear();
    m_size = 0;
    call(m_session, u"org.bluez.obex.ObjectPush1"_s, u"SendFile"_s, {m_paths.at(m_sent)}, &ObexPush::sending);
}

void ObexPush::sending(const QDBusMessage &reply)
{
    m_transfer = qdbus_cast<QDBusObjectPath>(reply.arguments().value(0)).path();
    QVariantMap properties = qdbus_cast<QVariantMap>(reply.arguments().value(1));
    properties.insert(m_early.take(m_transfer)); // what was told since is newer
    m_early.clear();
    transferChanged(properties);
}

void ObexPush::propertiesChanged(const QDBusMessage &signal)
{
    if (signal.arguments().value(0).toString() != transferInterface())
        return;
    const QVariantMap properties = qdbus_cast<QVariantMap>(signal.arguments().value(1));
    if (signal.path() == m_transfer)
        transferChanged(properties);
    else if (m_transfer.isEmpty() && !m_session.isEmpty() && signal.path().startsWith(m_session))
        m_early[signal.path()].insert(properties);
}

void ObexPush::transferChanged(const QVariantMap &properties)
{
    if (m_ended)
        return;
    if (properties.contains(u"Size"_s))
        m_size = properties.value(u"Size"_s).toULongLong();
    tell(properties.value(u"Transferred"_s).toULongLong());
    const QString status = properties.value(u"Status"_s).toString();
    if (status == "error"_L1) {
        finish(u"the transfer failed"_s);
    } else if (status == "complete"_L1) {
        if (++m_sent < m_paths.size())
            sendNext();
        else
            finish({});
    }
}

void ObexPush::tell(quint64 transferred)
{
    if (m_size == 0 || transferred == 0)
        return;
    const double part = std::min(1.0, double(transferred) / double(m_size));
    const int percent = int(100 * (double(m_sent) + part) / double(m_paths.size()));
    if (percent <= m_percent)
        return;
    m_percent = percent;
    Q_EMIT progress(percent);
}

void ObexPush::finish(const QString &reason)
{
    if (m_ended)
        return;
    end();
    if (reason.isEmpty())
        Q_EMIT finished();
    else
        Q_EMIT failed(reason);
}

void ObexPush::stop()
{
    if (!m_ended)
        end();
}

void ObexPush::end()
{
    m_ended = true;
    removeSession(); // and with it the transfer
    if (!m_calling)
        deleteLater();
}

void ObexPush::removeSession()
{
    if (m_session.isEmpty())
        return;
    QDBusMessage message
        = QDBusMessage::createMethodCall(busName(), clientPath(), clientInterface(), u"RemoveSession"_s);
    message.setAutoStartService(false);
    message << QVariant::fromValue(QDBusObjectPath(std::exchange(m_session, {})));
    m_bus.asyncCall(message);
}
