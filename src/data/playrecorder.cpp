// SPDX-License-Identifier: GPL-3.0-or-later
#include "playrecorder.h"

#include "datalog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString &storeService()
{
    static const QString name = u"com.harrow.Kestrel.Store"_s;
    return name;
}

// There was nobody, or the bus could not start it.
bool neverArrived(const QDBusError &error)
{
    return error.type() == QDBusError::ServiceUnknown
        || error.name().startsWith(u"org.freedesktop.DBus.Error.Spawn."_s);
}

} // namespace

PlayRecorder::PlayRecorder(QObject *parent)
    : QObject(parent),
      m_watcher(storeService(), QDBusConnection::sessionBus(), QDBusServiceWatcher::WatchForRegistration)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &PlayRecorder::storeCame);
}

void PlayRecorder::record(const QString &urn)
{
    if (!urn.isEmpty() && QDBusConnection::sessionBus().isConnected())
        tell(urn);
}

void PlayRecorder::tell(const QString &urn)
{
    QDBusMessage message = QDBusMessage::createMethodCall(storeService(), u"/com/harrow/Kestrel/Store"_s,
                                                          storeService(), u"RecordPlay"_s);
    message << urn;
    auto *call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, urn](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        const QDBusPendingReply<> reply = *done;
        if (!reply.isError())
            return;
        qCDebug(lcData) << "a play was not recorded:" << reply.error().message();
        if (neverArrived(reply.error()))
            m_untold.append(urn);
    });
}

void PlayRecorder::storeCame()
{
    const QStringList untold = std::exchange(m_untold, {});
    for (const QString &urn : untold)
        tell(urn);
}
