// SPDX-License-Identifier: GPL-3.0-or-later
// GLib names a parameter "signals": before Qt's headers can get in the way.
#include <gio/gio.h>

#include "mmcmonitor.h"

#include "videoconstants.h"

#include <platform/system/devicestate.h>

#include <QDBusConnection>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString usbService = QStringLiteral("com.sorel.usb_moded");
const QString usbPath = QStringLiteral("/com/sorel/usb_moded");
constexpr auto remoteMonitorsSwitch = "GVFS_REMOTE_VOLUME_MONITOR_IGNORE";
const QString usbSignal = QStringLiteral("sig_usb_state_ind");

} // namespace

MmcMonitor *MmcMonitor::instance()
{
    static auto *const instance = new MmcMonitor;
    return instance;
}

bool MmcMonitor::isAvailable()
{
    return !UsbMode::instance()->isMassStorage();
}

MmcMonitor::MmcMonitor()
{
    QDBusConnection::systemBus().connect(usbService, usbPath, usbService, usbSignal, this,
                                         SLOT(usbState(QString)));
    // Who starts while the partition is exported reads "available" until the daemon has answered.
    UsbMode::instance()->onChange(this, [this](UsbMode::Source source) {
        if (source == UsbMode::Source::Reading && !isAvailable())
            Q_EMIT mmcStateChanged(false);
    });
    // The kernel's table of mounts tells what matters here. The remote monitors that GIO would add ask their
    // daemons without an end to the waiting: one that hangs would hold the window for 25 s.
    if (!qEnvironmentVariableIsSet(remoteMonitorsSwitch))
        qputenv(remoteMonitorsSwitch, "1");
    m_volumeMonitor = g_volume_monitor_get();
    g_signal_connect(m_volumeMonitor, "mount-added", G_CALLBACK(&MmcMonitor::mountEvent), this);
}

MmcMonitor::~MmcMonitor()
{
    g_signal_handlers_disconnect_by_data(m_volumeMonitor, this);
    g_object_unref(m_volumeMonitor);
    QDBusConnection::systemBus().disconnect(usbService, usbPath, usbService, usbSignal, this,
                                            SLOT(usbState(QString)));
}

void MmcMonitor::usbState(const QString &state)
{
    if (state == "pre-unmount"_L1)
        Q_EMIT preUnmount();
    else if (state == "mass_storage"_L1)
        Q_EMIT mmcStateChanged(false);
}

void MmcMonitor::mountEvent(GVolumeMonitor *mon, GMount *event, gpointer userData)
{
    auto *monitor = static_cast<MmcMonitor *>(userData);
    if (monitor->isMyDocsMounted(event))
        Q_EMIT monitor->mmcStateChanged(true);
}

bool MmcMonitor::isMyDocsMounted(GMount *mount)
{
    GFile *root = g_mount_get_root(mount);
    if (!root)
        return false;
    char *uri = g_file_get_uri(root);
    const bool isMyDocs = QString::fromUtf8(uri) == MYDOCS_URL;
    g_free(uri);
    g_object_unref(root);
    return isMyDocs;
}
