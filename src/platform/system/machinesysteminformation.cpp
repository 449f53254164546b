// SPDX-License-Identifier: GPL-3.0-or-later
#include "machinesysteminformation.h"

#include "systemlog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int HostnameTimeoutMs = 5000;

QString nameOrUnknown(const QString &name)
{
    return name.isEmpty() ? u"Unknown"_s : iriEncodedName(name);
}
} // namespace

MachineSystemInformation::MachineSystemInformation(const QDBusConnection &systemBus, const QString &sysRoot,
                                                   const QString &procRoot)
    : m_names(readDeviceNames(sysRoot, procRoot))
{
    QDBusMessage call
        = QDBusMessage::createMethodCall(u"org.freedesktop.hostname1"_s, u"/org/freedesktop/hostname1"_s,
                                         u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
    call << u"org.freedesktop.hostname1"_s;
    auto *watcher = new QDBusPendingCallWatcher(systemBus.asyncCall(call, HostnameTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, &MachineSystemInformation::hostnameAnswered);
}

void MachineSystemInformation::hostnameAnswered(QDBusPendingCallWatcher *watcher)
{
    watcher->deleteLater();
    const QDBusPendingReply<QVariantMap> reply = *watcher;
    if (reply.isError()) {
        qCInfo(systemLog, "no host name service (%ls): device names are the firmware's",
               qUtf16Printable(reply.error().message()));
    } else {
        const QVariantMap properties = reply.value();
        DeviceNames names = m_names;
        names.manufacturer = properties.value(u"HardwareVendor"_s).toString().simplified();
        names.model = properties.value(u"HardwareModel"_s).toString().simplified();
        if (names.isComplete())
            m_names = names;
    }
    Q_EMIT settled();
}

QString MachineSystemInformation::manufacturer() const
{
    return nameOrUnknown(m_names.manufacturer);
}

QString MachineSystemInformation::model() const
{
    return nameOrUnknown(m_names.model);
}

QString MachineSystemInformation::value(const QString &key) const
{
    return key == u"/component/hw-build"_s ? m_names.hardwareBuild : QString();
}
