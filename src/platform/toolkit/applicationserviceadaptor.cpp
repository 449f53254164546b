// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationserviceadaptor.h"

#include "applicationservice.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

// A path of the greatest length, each byte of it escaped, is 12 kB.
constexpr qsizetype longestAddress = 65536;

} // namespace

ApplicationServiceAdaptor::ApplicationServiceAdaptor(ApplicationService *service)
    : QDBusAbstractAdaptor(service),
      m_service(service)
{
}

void ApplicationServiceAdaptor::Activate(const QVariantMap &platform_data)
{
    m_service->take({}, ActivationToken::ofPlatformData(platform_data));
}

void ApplicationServiceAdaptor::Open(const QStringList &uris, const QVariantMap &platform_data,
                                     const QDBusMessage &message)
{
    for (const QString &uri : uris) {
        if (uri.size() > longestAddress) {
            message.setDelayedReply(true);
            QDBusConnection::sessionBus().send(
                message.createErrorReply(QDBusError::InvalidArgs, u"An address is too long"_s));
            return;
        }
    }
    m_service->take(uris, ActivationToken::ofPlatformData(platform_data));
}

void ApplicationServiceAdaptor::ActivateAction(const QString &, const QVariantList &,
                                               const QVariantMap &platform_data)
{
    Activate(platform_data);
}

} // namespace toolkit
