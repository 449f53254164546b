// SPDX-License-Identifier: GPL-3.0-or-later
#include "unmountwatch.h"

#include <QFile>

UnmountWatch::UnmountWatch(QObject *parent) : QObject(parent), m_monitor(g_volume_monitor_get())
{
    g_signal_connect(m_monitor.get(), "mount-pre-unmount", G_CALLBACK(&UnmountWatch::preUnmount), this);
}

UnmountWatch::~UnmountWatch()
{
    g_signal_handlers_disconnect_by_data(m_monitor.get(), this);
}

void UnmountWatch::preUnmount(GVolumeMonitor *, GMount *mount, gpointer self)
{
    const GRef<GFile> root(g_mount_get_root(mount));
    char *path = g_file_get_path(root.get());
    if (path)
        Q_EMIT static_cast<UnmountWatch *>(self)->aboutToUnmount(QFile::decodeName(path));
    g_free(path);
}
