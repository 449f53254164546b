// SPDX-License-Identifier: GPL-3.0-or-later
#include "logindsleepwatcher.h"

#include "programid.h"
#include "systemlog.h"

#include <QMetaMethod>

using namespace Qt::Literals::StringLiterals;

namespace {
const QString ManagerPath = u"/org/freedesktop/login1"_s;
const QString ManagerInterface = u"org.freedesktop.login1.Manager"_s;
const QString SleepSignal = u"PrepareForSleep"_s;
} // namespace

LogindSleepWatcher::LogindSleepWatcher(const QDBusConnection &systemBus, const QString &reason,
                                       QObject *parent)
    : SleepWatcher(parent),
      m_logind(systemBus, u"org.freedesktop.login1"_s),
      m_reason(reason)
{
    m_logind.listen(ManagerPath, ManagerInterface, SleepSignal);
    connect(&m_logind, &BusPeer::signalled, this, &LogindSleepWatcher::hear);
    connect(&m_logind, &BusPeer::appeared, this, &LogindSleepWatcher::take);
    connect(&m_logind, &BusPeer::vanished, this, [this] {
        qCInfo(systemLog, "no login service: nobody tells before the device sleeps");
        m_lock = QDBusUnixFileDescriptor();
        m_asked = m_sleeping = m_released = false;
    });
}

void LogindSleepWatcher::take()
{
    if (m_asked || m_lock.isValid())
        return;
    m_asked = true;
    m_logind.call(
        BusPeer::method(ManagerPath, ManagerInterface, u"Inhibit"_s,
                        {u"sleep"_s, programId(), m_reason, u"delay"_s}),
        this, [this](const QDBusMessage &reply) { taken(reply); }, BusPeer::NoTimeout);
}

// A lock that comes when its time is over is given back at once: it closes with the reply.
void LogindSleepWatcher::taken(const QDBusMessage &reply)
{
    m_asked = false;
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != u"h"_s) {
        qCInfo(systemLog, "sleep cannot be delayed: %ls",
               qUtf16Printable(reply.type() == QDBusMessage::ErrorMessage
                                   ? reply.errorMessage()
                                   : u"an answer of type \"%1\""_s.arg(reply.signature())));
        return;
    }
    if (!m_released)
        m_lock = reply.arguments().constFirst().value<QDBusUnixFileDescriptor>();
}

void LogindSleepWatcher::hear(const QDBusMessage &message)
{
    if (message.member() != SleepSignal || message.signature() != u"b"_s)
        return;
    if (message.arguments().constFirst().toBool())
        prepareForSleep();
    else
        wakeUp();
}

void LogindSleepWatcher::prepareForSleep()
{
    m_sleeping = true;
    m_released = false;
    if (!isSignalConnected(QMetaMethod::fromSignal(&SleepWatcher::aboutToSleep)))
        release();
    Q_EMIT aboutToSleep();
}

void LogindSleepWatcher::wakeUp()
{
    const bool slept = m_sleeping;
    m_sleeping = m_released = false;
    take();
    if (slept)
        Q_EMIT wokeUp();
}

void LogindSleepWatcher::release()
{
    if (!m_sleeping)
        return;
    m_released = true;
    m_lock = QDBusUnixFileDescriptor();
}
