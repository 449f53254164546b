// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "buspeer.h"
#include "usernotice.h"

#include <QDBusPendingCall>
#include <QList>
#include <QObject>
#include <QStringList>

#include <optional>

class QDBusPendingCallWatcher;

// The desktop's notification server (org.freedesktop.Notifications), which is started when it does not run
// yet. A message that nobody shows goes to the log.
class DesktopNotifications : public QObject, public NotificationService
{
    Q_OBJECT

public:
    explicit DesktopNotifications(const QDBusConnection &sessionBus);

    void publishDeviceError(const QString &message) override;

    // Whoever quits right after a message calls this: sends what waits, and waits itself (2 s at most) until
    // the server has what was sent. Done when the application is about to quit.
    void flush();

private:
    struct Sent
    {
        QDBusPendingCallWatcher *watcher;
        QString message;
    };
    void askCapabilities();
    void sendWaiting();
    void send(const QString &message);
    void answered(QDBusPendingCallWatcher *watcher);

    QDBusConnection m_bus;
    BusPeer m_server;
    std::optional<QStringList> m_capabilities; // of the present server, once it has told
    bool m_asking = false;
    QStringList m_waiting; // for the capabilities
    QList<Sent> m_sent; // not yet answered
};

// What a notification consists of. The first is plain text by contract; the second may be markup.
struct NotificationText
{
    QString summary;
    QString body;

    friend bool operator==(const NotificationText &, const NotificationText &) = default;
};
// The message under the application's name; a server that shows no body, or of which nothing is known, and an
// application without a name get it as the summary.
[[nodiscard]] NotificationText notificationText(const QString &message, const QString &applicationName,
                                                const QStringList &capabilities);
