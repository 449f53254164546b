// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Messages outside the program's window: a notification of the device-error kind.
class NotificationService
{
public:
    virtual ~NotificationService() = default;
    virtual void publishDeviceError(const QString &message) = 0;
    [[nodiscard]] static NotificationService *instance();
    static void setInstance(NotificationService *service);
};

// The platform's share sheet.
class ShareService
{
public:
    virtual ~ShareService() = default;
    virtual void share(const QStringList &addresses) = 0;
    [[nodiscard]] static ShareService *create();
    static void setFactory(ShareService *(*factory)());
};
