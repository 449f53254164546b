// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "thumbnailerclient.h"

#include "platform/system/serviceactivator.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QHash>
#include <QTimer>

// The thumbnailer of the session bus, started when it is missing. Every request ends: a service that dies is
// started once more for what it left, and one that gives no sign of life for the deadline has what it was
// asked for reported as errors. Answers are told apart by their address, since a signal may come before the
// answer with the request's handle.
class DBusThumbnailerClient : public ThumbnailerClient
{
    Q_OBJECT

public:
    explicit DBusThumbnailerClient(const QDBusConnection &bus, QObject *parent = nullptr);

    void request(const QList<QUrl> &urls, const QStringList &mimeTypes, const QString &flavor) override;
    void cancel() override;
    void remove(const QList<QUrl> &urls) override;

    // 30 s unless set; a file may take the service 10 s.
    void setDeadline(int ms);

private Q_SLOTS:
    void serviceReady(uint handle, const QStringList &uris);
    void serviceError(uint handle, const QStringList &uris, int code, const QString &message);
    void serviceFinished(uint handle);

private:
    // The files of one call of request(), as long as the service may still say something about them.
    struct Batch
    {
        QHash<QString, QUrl> outstanding; // by the address that the service is given
        QStringList order;
        QHash<QString, QString> mimeTypes;
        QString flavor;
        uint handle = 0; // 0: not yet queued by the service
        bool sent = false;
        bool cancelled = false;
        int attempts = 0;
    };

    void flush();
    void sendBatch(int id);
    void queued(int id, uint handle);
    void notQueued(int id, const QDBusError &error);
    void retryBatch(int id);
    void failBatch(int id, const QString &message);
    void failAll(const QString &message);
    void ownerChanged(bool owned);
    // Takes the address out of the first batch that waits for it.
    [[nodiscard]] bool take(const QString &uri, QUrl &url, QString &flavor);
    void dequeue(uint handle);
    void watch();
    [[nodiscard]] bool isWaiting() const;

    QDBusConnection m_bus;
    ServiceActivator m_activator;
    QTimer m_deadline;
    QHash<int, Batch> m_batches;
    QStringList m_removals; // not yet sent
    int m_lastBatch = 0;
};
