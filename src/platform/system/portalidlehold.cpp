// SPDX-License-Identifier: GPL-3.0-or-later
#include "portalidlehold.h"

#include <QDBusObjectPath>

using namespace Qt::Literals::StringLiterals;

namespace {
const QString PortalPath = u"/org/freedesktop/portal/desktop"_s;
const QString RequestInterface = u"org.freedesktop.portal.Request"_s;
constexpr uint Idle = 8; // of what can be inhibited
constexpr uint Granted = 0; // of a response

QString responseText(uint response)
{
    return u"response %1"_s.arg(response);
}
} // namespace

PortalIdleHold::PortalIdleHold(const QDBusConnection &sessionBus, QObject *parent)
    : IdleHold(sessionBus, u"org.freedesktop.portal.Desktop"_s, parent)
{
    connect(&service(), &BusPeer::signalled, this, &PortalIdleHold::hear);
}

// The path of the request is known before it is made, so that no response can be missed.
void PortalIdleHold::ask(const QString &reason)
{
    m_response = Granted;
    const QString token = u"idle%1"_s.arg(++m_number);
    const QString sender = service().ownName().mid(1).replace(u'.', u'_');
    follow(PortalPath + u"/request/"_s + sender + u'/' + token);
    const QVariantMap options{{u"handle_token"_s, token}, {u"reason"_s, reason}};
    service().call(
        BusPeer::method(PortalPath, u"org.freedesktop.portal.Inhibit"_s, u"Inhibit"_s,
                        {QString(), Idle, options}),
        this, [this](const QDBusMessage &reply) { answered(reply); }, BusPeer::NoTimeout);
}

void PortalIdleHold::follow(const QString &request)
{
    if (request == m_request)
        return;
    if (!m_request.isEmpty())
        service().ignore(m_request, RequestInterface, u"Response"_s);
    m_request = request;
    if (!m_request.isEmpty())
        service().listen(m_request, RequestInterface, u"Response"_s);
}

void PortalIdleHold::answered(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage) {
        refused(reply.errorMessage());
        return;
    }
    if (reply.signature() != u"o"_s) {
        // Something may be held all the same.
        giveBack();
        refused(u"an answer of type \"%1\""_s.arg(reply.signature()));
        return;
    }
    // Portals before version 0.9 choose the path themselves.
    follow(reply.arguments().constFirst().value<QDBusObjectPath>().path());
    if (m_response == Granted)
        held();
    else
        refused(responseText(m_response));
}

void PortalIdleHold::hear(const QDBusMessage &message)
{
    if (message.path() != m_request || message.signature() != u"ua{sv}"_s)
        return;
    m_response = message.arguments().constFirst().toUInt(); // before or after the answer
    if (m_response != Granted)
        revoked(responseText(m_response));
}

void PortalIdleHold::giveBack()
{
    service().send(BusPeer::method(m_request, RequestInterface, u"Close"_s));
    follow(QString());
}
