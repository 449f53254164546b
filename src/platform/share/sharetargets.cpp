// SPDX-License-Identifier: GPL-3.0-or-later
#include "sharetargets.h"

#include "obexpush.h"
#include "shareportal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::Literals::StringLiterals;

ShareTargets::ShareTargets(const QDBusConnection &sessionBus, const QDBusConnection &systemBus,
                           QObject *parent)
    : QObject(parent),
      m_session(sessionBus),
      m_portal(sessionBus, SharePortal::busName(), this),
      m_obex(sessionBus, ObexPush::busName(), this),
      m_bluez(systemBus, this)
{
    connect(&m_portal, &ServicePresence::changed, this, &ShareTargets::portalChanged);
    connect(&m_obex, &ServicePresence::changed, this, &ShareTargets::changed);
    connect(&m_bluez, &BluezDirectory::changed, this, &ShareTargets::changed);
}

void ShareTargets::portalChanged()
{
    m_email = true;
    m_openUri = true;
    if (m_portal.isOwned()) {
        askVersion(SharePortal::emailInterface(), &m_email);
        askVersion(SharePortal::openUriInterface(), &m_openUri);
    }
    Q_EMIT changed();
}

// A portal has an interface only where something on the desktop implements it.
void ShareTargets::askVersion(const QString &interface, bool *has)
{
    QDBusMessage message = QDBusMessage::createMethodCall(SharePortal::busName(), SharePortal::objectPath(),
                                                          u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    message.setAutoStartService(false);
    message << interface << u"version"_s;
    auto *call = new QDBusPendingCallWatcher(m_session.asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call, has] {
        call->deleteLater();
        // One that does not answer is slow; only an answer says that there is none.
        const bool lacks = call->isError()
            && (call->error().type() == QDBusError::UnknownInterface
                || call->error().type() == QDBusError::InvalidArgs
                || call->error().type() == QDBusError::UnknownProperty
                || call->error().type() == QDBusError::UnknownMethod);
        if (lacks != *has)
            return;
        *has = !lacks;
        Q_EMIT changed();
    });
}
