// SPDX-License-Identifier: GPL-3.0-or-later
#include "screensaveridlehold.h"

#include "programid.h"

#include <QDBusError>
#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace {
const QString ScreenSaver = u"org.freedesktop.ScreenSaver"_s; // name and interface
const QStringList Paths{u"/org/freedesktop/ScreenSaver"_s, u"/ScreenSaver"_s};

// The service has no such object, which is no refusal. A service that refuses is not asked twice.
bool isElsewhere(const QDBusMessage &reply)
{
    const QDBusError::ErrorType type = QDBusError(reply).type();
    return type == QDBusError::UnknownObject || type == QDBusError::UnknownInterface
        || type == QDBusError::UnknownMethod;
}
} // namespace

ScreenSaverIdleHold::ScreenSaverIdleHold(const QDBusConnection &sessionBus, QObject *parent)
    : IdleHold(sessionBus, ScreenSaver, parent)
{
}

void ScreenSaverIdleHold::ask(const QString &reason)
{
    askAt(0, reason);
}

void ScreenSaverIdleHold::askAt(qsizetype path, const QString &reason)
{
    const QDBusMessage request
        = BusPeer::method(Paths.at(path), ScreenSaver, u"Inhibit"_s, {programId(), reason});
    service().call(
        request, this,
        [this, path, reason](const QDBusMessage &reply) {
            if (reply.type() == QDBusMessage::ReplyMessage && reply.signature() == u"u"_s) {
                m_path = Paths.at(path);
                m_cookie = reply.arguments().constFirst().toUInt();
                held();
            } else if (isElsewhere(reply) && path + 1 < Paths.size()) {
                askAt(path + 1, reason);
            } else if (reply.type() == QDBusMessage::ErrorMessage) {
                refused(reply.errorMessage());
            } else {
                refused(u"an answer of type \"%1\""_s.arg(reply.signature()));
            }
        },
        BusPeer::NoTimeout);
}

void ScreenSaverIdleHold::giveBack()
{
    service().send(BusPeer::method(m_path, ScreenSaver, u"UnInhibit"_s, {m_cookie}));
}
