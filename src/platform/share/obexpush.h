// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bluetoothdevice.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>

class QDBusMessage;
class QDBusPendingCall;

// Sends files to one device by bluez's object exchange service, one after the other. Ends in finished() or
// failed(), once, never from within start(), or in nothing after stop(), and deletes itself then.
class ObexPush : public QObject
{
    Q_OBJECT

public:
    ObexPush(const QDBusConnection &session, const BluetoothDevice &device, const QStringList &paths,
             QObject *parent);

    [[nodiscard]] static QString busName();
    void start();
    // What is under way is broken off.
    void stop();
    [[nodiscard]] const BluetoothDevice &device() const { return m_device; }

Q_SIGNALS:
    void progress(int percent); // of all files, when it is another
    void finished();
    void failed(QString reason);

private Q_SLOTS:
    void propertiesChanged(const QDBusMessage &signal);

private:
    void call(const QString &path, const QString &interface, const QString &method,
              const QVariantList &arguments, void (ObexPush::*answered)(const QDBusMessage &reply));
    void sessionMade(const QDBusMessage &reply);
    void sendNext();
    void sending(const QDBusMessage &reply);
    void transferChanged(const QVariantMap &properties);
    void tell(quint64 transferred);
    void finish(const QString &reason); // empty: all is sent
    void end();
    void removeSession();

    QDBusConnection m_bus;
    BluetoothDevice m_device;
    QStringList m_paths;
    QDBusServiceWatcher m_watcher;
    QString m_session; // objects of the service
    QString m_transfer;
    QHash<QString, QVariantMap> m_early; // of transfers whose reply is still on its way
    quint64 m_size = 0;
    qsizetype m_sent = 0; // files
    int m_percent = -1;
    bool m_calling = false;
    bool m_ended = false;
};
