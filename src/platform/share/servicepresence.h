// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

class QDBusMessage;

// Whether a service is there, followed without starting it: its name has an owner, or the bus could start
// one. A service that is missing or goes away is told of in one line of the log.
class ServicePresence : public QObject
{
    Q_OBJECT

public:
    ServicePresence(const QDBusConnection &bus, const QString &name, QObject *parent);

    [[nodiscard]] QString name() const { return m_name; }
    [[nodiscard]] bool isOwned() const { return m_owned; }
    [[nodiscard]] bool isAvailable() const { return m_owned || m_activatable; }

Q_SIGNALS:
    void changed(); // of either; also when another process took the name over

private Q_SLOTS:
    void listActivatable();

private:
    using Answered = void (ServicePresence::*)(const QDBusMessage &reply);
    void ask(const QDBusMessage &question, Answered answered);
    void ownerTold(const QDBusMessage &reply);
    void activatableTold(const QDBusMessage &reply);
    void become(bool owned, bool activatable);
    void log();

    QDBusConnection m_bus;
    QString m_name;
    QDBusServiceWatcher m_watcher;
    bool m_owned = false;
    bool m_activatable = false;
    bool m_loggedAvailable = true; // only its absence is worth a line at first
    int m_pending = 0; // questions
};
