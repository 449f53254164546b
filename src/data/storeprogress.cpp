// SPDX-License-Identifier: GPL-3.0-or-later
#include "storeprogress.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString storeService = QStringLiteral("com.harrow.Kestrel.Store");
const QString storePath = QStringLiteral("/com/harrow/Kestrel/Store");

} // namespace

StoreProgress::StoreProgress(QObject *parent) : QObject(parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(storeService, storePath, storeService, QStringLiteral("ProgressChanged"), this,
                SLOT(progressChanged(bool, uint, uint)));
    // The bus itself tells who owns the store's name: a store that starts late is asked then, one that died
    // is idle.
    bus.connect(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"), {storeService},
                QString(), this, SLOT(ownerChanged(QString, QString, QString)));
    ask();
}

StoreProgress::~StoreProgress() = default;

void StoreProgress::ask()
{
    m_heard = false;
    QDBusMessage question
        = QDBusMessage::createMethodCall(storeService, storePath, storeService, QStringLiteral("Progress"));
    question.setAutoStartService(false); // showing progress is no reason to start the store
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &StoreProgress::progressRead);
}

void StoreProgress::progressRead(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    const QDBusPendingReply<bool, uint, uint> reply = *call;
    if (reply.isError() || m_heard)
        return;
    progressChanged(reply.argumentAt<0>(), reply.argumentAt<1>(), reply.argumentAt<2>());
}

void StoreProgress::progressChanged(bool scanning, uint seen, uint done)
{
    m_heard = true;
    if (scanning == m_scanning && seen == m_seen && done == m_done)
        return;
    m_scanning = scanning;
    m_seen = seen;
    m_done = done;
    Q_EMIT changed(scanning, seen, done);
}

void StoreProgress::ownerChanged(const QString &name, const QString &oldOwner, const QString &newOwner)
{
    if (newOwner.isEmpty())
        progressChanged(false, m_seen, m_done);
    else
        ask();
}
