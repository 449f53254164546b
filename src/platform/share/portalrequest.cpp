// SPDX-License-Identifier: GPL-3.0-or-later
#include "portalrequest.h"

#include "sharelog.h"
#include "shareportal.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QRandomGenerator>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int callMilliseconds = 60000; // the portal may have to be started, and its back ends with it

enum ResponseCode : uint { Success = 0, Cancelled = 1 };

QString requestInterface()
{
    return u"org.freedesktop.portal.Request"_s;
}

QString newToken()
{
    return u"share%1"_s.arg(QRandomGenerator::global()->generate64(), 0, 36);
}

QString handleFor(const QDBusConnection &bus, const QString &token)
{
    const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
    return u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(sender, token);
}

} // namespace

PortalRequest::PortalRequest(const QDBusConnection &session, const QString &interface, const QString &method,
                             const QVariantList &arguments, const QVariantMap &options, QObject *parent)
    : QObject(parent),
      m_bus(session),
      m_interface(interface),
      m_method(method),
      m_arguments(arguments),
      m_options(options),
      m_watcher(SharePortal::busName(), session, QDBusServiceWatcher::WatchForUnregistration)
{
}

void PortalRequest::start()
{
    const QString token = newToken();
    m_options.insert(u"handle_token"_s, token);
    listen(handleFor(m_bus, token));
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        if (end())
            Q_EMIT failed(u"the portal is gone"_s);
    });
    QDBusMessage message = QDBusMessage::createMethodCall(SharePortal::busName(), SharePortal::objectPath(),
                                                          m_interface, m_method);
    QVariantList arguments = m_arguments;
    arguments.append(m_options);
    message.setArguments(arguments);
    // The message holds the descriptors from here on.
    m_arguments.clear();
    m_options.clear();
    auto *call = new QDBusPendingCallWatcher(m_bus.asyncCall(message, callMilliseconds), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, &PortalRequest::called);
}

void PortalRequest::listen(const QString &handle)
{
    const auto slot = SLOT(response(uint, QVariantMap));
    if (!m_handle.isEmpty())
        m_bus.disconnect(SharePortal::busName(), m_handle, requestInterface(), u"Response"_s, this, slot);
    m_handle = handle;
    m_bus.connect(SharePortal::busName(), m_handle, requestInterface(), u"Response"_s, this, slot);
}

void PortalRequest::called(QDBusPendingCallWatcher *call)
{
    const QDBusPendingReply<QDBusObjectPath> reply = *call;
    call->deleteLater();
    if (reply.isError()) {
        if (end())
            Q_EMIT failed(reply.error().name() + u": "_s + reply.error().message());
        return;
    }
    // Portals older than 0.9 name the object as they like.
    if (!m_ended && reply.value().path() != m_handle)
        listen(reply.value().path());
}

void PortalRequest::response(uint code, const QVariantMap &results)
{
    Q_UNUSED(results)
    if (!end())
        return;
    if (code == Success)
        Q_EMIT done();
    else if (code == Cancelled)
        Q_EMIT cancelled();
    else
        Q_EMIT failed(u"the portal answers %1"_s.arg(code));
}

bool PortalRequest::end()
{
    if (std::exchange(m_ended, true))
        return false;
    deleteLater();
    return true;
}
