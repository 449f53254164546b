// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "usernotice.h"

// No notification server: the message goes to the log, so that it is not lost without a trace.
class NullNotificationService : public NotificationService
{
public:
    void publishDeviceError(const QString &message) override;
};

// No share service: the request is dropped, and the log says so.
class NullShareService : public ShareService
{
public:
    void share(const QStringList &addresses) override;
};
