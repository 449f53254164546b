// SPDX-License-Identifier: GPL-3.0-or-later
#include "nullusernotice.h"

#include "systemlog.h"

void NullNotificationService::publishDeviceError(const QString &message)
{
    qCWarning(systemLog, "no notification service; unseen message: %ls", qUtf16Printable(message));
}

void NullShareService::share(const QStringList &addresses)
{
    qCWarning(systemLog, "no share service; %lld address(es) not shared",
              static_cast<long long>(addresses.size()));
}
