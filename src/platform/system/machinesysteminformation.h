// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "devicenames.h"
#include "systeminformation.h"

#include <QDBusConnection>
#include <QObject>

class QDBusPendingCallWatcher;

// Asks org.freedesktop.hostname1 once, asynchronously, when it is made. Until (and unless) that answers with
// both names, the firmware's own stand; both names always come from one source. A machine without any of them
// is "Unknown".
class MachineSystemInformation : public QObject, public SystemInformation
{
    Q_OBJECT

public:
    MachineSystemInformation(const QDBusConnection &systemBus, const QString &sysRoot,
                             const QString &procRoot);

    [[nodiscard]] QString manufacturer() const override;
    [[nodiscard]] QString model() const override;
    [[nodiscard]] QString value(const QString &key) const override;

Q_SIGNALS:
    // hostname1 has answered, or is known not to.
    void settled();

private:
    void hostnameAnswered(QDBusPendingCallWatcher *watcher);

    DeviceNames m_names;
};
