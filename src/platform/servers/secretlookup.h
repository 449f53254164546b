// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "credentials.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>

// One search in the secret service of the session: for the item with the attributes "application" (this
// program's name), "server" and "user". The service is started if the bus can. When only locked items fit,
// the person is asked to unlock them. Ends in one of the signals, once, never from within start(), and
// deletes itself then.
class SecretLookup : public QObject
{
    Q_OBJECT

public:
    SecretLookup(const QDBusConnection &session, const QString &server, const QString &user,
                 const SecretPatience &patience, QObject *parent);
    ~SecretLookup() override;

    // `mayAsk`: the person may be asked.
    void start(bool mayAsk);

Q_SIGNALS:
    void found(Login login);
    void nothing(); // no such item, or no such service
    void failed(QString why); // the service is there, and is of no use
    void withheld(QString why); // an item is there and stays locked

private Q_SLOTS:
    void prompted(const QDBusMessage &message);

private:
    using Reply = void (SecretLookup::*)(const QDBusMessage &reply);
    // An answer of another signature counts as a failure.
    void call(const QString &path, const QString &interface, const QString &method,
              const QVariantList &arguments, const QString &signature, Reply answered);
    void opened(const QDBusMessage &reply);
    void searched(const QDBusMessage &reply);
    void unlocked(const QDBusMessage &reply);
    void promptShown(const QDBusMessage &reply);
    void named(const QDBusMessage &reply);
    void told(const QDBusMessage &reply);
    void take(const QDBusObjectPath &item);
    void watchPrompt(const QString &path);
    void forgetPrompt();
    void dismissPrompt();
    void askSecret();
    [[nodiscard]] bool end(); // whether it had not ended before
    void fail(const QString &why);

    QDBusConnection m_bus;
    QString m_server;
    QString m_user;
    SecretPatience m_patience;
    QDBusServiceWatcher m_watcher;
    QTimer m_promptTime;
    QString m_service; // who is talked to: the name, its owner once that has answered
    QDBusObjectPath m_session;
    QList<QDBusObjectPath> m_locked;
    QString m_prompt; // under way
    QDBusObjectPath m_item;
    bool m_mayAsk = true;
    bool m_ended = false;
};
