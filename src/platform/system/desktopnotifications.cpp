// SPDX-License-Identifier: GPL-3.0-or-later
#include "desktopnotifications.h"

#include "systemlog.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QGuiApplication>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
constexpr int TimeoutMs = 2000;

QDBusMessage serverCall(const QString &method)
{
    return QDBusMessage::createMethodCall(service, path, service, method);
}

// The identifier that stands in for a missing display name is nothing for a person's eyes.
QString applicationName()
{
    const QString name = QGuiApplication::applicationDisplayName();
    return name == QCoreApplication::applicationName() ? QString() : name;
}

} // namespace

NotificationText notificationText(const QString &message, const QString &applicationName,
                                  const QStringList &capabilities)
{
    if (applicationName.isEmpty() || !capabilities.contains(u"body"_s))
        return {message, QString()};
    const bool markup = capabilities.contains(u"body-markup"_s);
    return {applicationName, markup ? message.toHtmlEscaped() : message};
}

DesktopNotifications::DesktopNotifications(const QDBusConnection &sessionBus)
    : m_bus(sessionBus),
      m_server(sessionBus, service)
{
    // Another server, other capabilities.
    connect(&m_server, &BusPeer::vanished, this, [this] { m_capabilities.reset(); });
    connect(&m_server, &BusPeer::appeared, this, [this] { m_capabilities.reset(); });
    if (QCoreApplication::instance())
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
                &DesktopNotifications::flush);
}

void DesktopNotifications::publishDeviceError(const QString &message)
{
    m_waiting.append(message);
    if (m_capabilities)
        sendWaiting();
    else
        askCapabilities();
}

void DesktopNotifications::askCapabilities()
{
    if (m_asking)
        return;
    m_asking = true;
    auto *watcher
        = new QDBusPendingCallWatcher(m_bus.asyncCall(serverCall(u"GetCapabilities"_s), TimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        m_asking = false;
        const QDBusPendingReply<QStringList> capabilities = *done;
        if (!capabilities.isError())
            m_capabilities = capabilities.value();
        sendWaiting();
    });
}

void DesktopNotifications::sendWaiting()
{
    const QStringList messages = std::exchange(m_waiting, {});
    for (const QString &message : messages)
        send(message);
}

void DesktopNotifications::send(const QString &message)
{
    const NotificationText text
        = notificationText(message, applicationName(), m_capabilities.value_or(QStringList()));
    const QString desktopFile = QGuiApplication::desktopFileName();
    QVariantMap hints{{u"category"_s, u"device.error"_s}};
    if (!desktopFile.isEmpty())
        hints.insert(u"desktop-entry"_s, desktopFile);
    QDBusMessage notify = serverCall(u"Notify"_s);
    notify.setArguments({QGuiApplication::applicationDisplayName(), 0U, desktopFile, text.summary, text.body,
                         QStringList(), hints, -1});
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(notify, TimeoutMs), this);
    m_sent.append({watcher, message});
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &DesktopNotifications::answered);
}

void DesktopNotifications::answered(QDBusPendingCallWatcher *watcher)
{
    watcher->deleteLater();
    const auto sent = std::find_if(m_sent.cbegin(), m_sent.cend(),
                                   [watcher](const Sent &s) { return s.watcher == watcher; });
    if (sent == m_sent.cend())
        return;
    const QString message = sent->message;
    m_sent.erase(sent);
    if (watcher->isError())
        qCWarning(systemLog, "no notification service (%ls); unseen message: %ls",
                  qUtf16Printable(watcher->error().message()), qUtf16Printable(message));
}

void DesktopNotifications::flush()
{
    sendWaiting();
    while (!m_sent.isEmpty()) {
        QDBusPendingCallWatcher *watcher = m_sent.first().watcher;
        // Ends with the call's own time-out. The bus drops what it keeps for a server that is still starting
        // when the sender leaves, so it does not do to have written it.
        watcher->waitForFinished();
        answered(watcher);
    }
}
