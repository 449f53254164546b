// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

class QDBusPendingCallWatcher;

// One request to the desktop portal. The portal answers a call with a request object, and says on that,
// perhaps minutes later, what became of it; the object's path is known beforehand, so that its answer is
// listened for before the call is made. Ends in one of the three signals, once, never from within start(),
// and deletes itself then.
class PortalRequest : public QObject
{
    Q_OBJECT

public:
    // `arguments` are the method's, all but its options, which come last.
    PortalRequest(const QDBusConnection &session, const QString &interface, const QString &method,
                  const QVariantList &arguments, const QVariantMap &options, QObject *parent);

    void start();
    // The object on which the portal will answer.
    [[nodiscard]] QString handle() const { return m_handle; }

Q_SIGNALS:
    void done();
    void cancelled(); // by the person
    void failed(QString reason);

private Q_SLOTS:
    void response(uint code, const QVariantMap &results);

private:
    void listen(const QString &handle);
    void called(QDBusPendingCallWatcher *call);
    [[nodiscard]] bool end();

    QDBusConnection m_bus;
    QString m_interface;
    QString m_method;
    QVariantList m_arguments;
    QVariantMap m_options;
    QString m_handle;
    QDBusServiceWatcher m_watcher;
    bool m_ended = false;
};
