// SPDX-License-Identifier: GPL-3.0-or-later
#include "usernotice.h"

#include "desktopnotifications.h"
#include "nullusernotice.h"

#include <QDBusConnection>

namespace {
NotificationService *s_notification = nullptr;
ShareService *(*s_shareFactory)() = nullptr;
} // namespace

NotificationService *NotificationService::instance()
{
    if (s_notification)
        return s_notification;
    static NotificationService *const machine = []() -> NotificationService * {
        if (QDBusConnection::sessionBus().isConnected())
            return new DesktopNotifications(QDBusConnection::sessionBus());
        return new NullNotificationService;
    }();
    return machine;
}

void NotificationService::setInstance(NotificationService *service)
{
    s_notification = service;
}

ShareService *ShareService::create()
{
    return s_shareFactory ? s_shareFactory() : new NullShareService;
}

void ShareService::setFactory(ShareService *(*factory)())
{
    s_shareFactory = factory;
}
