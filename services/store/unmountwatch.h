// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "gref.h"

#include <gio/gio.h>

#include <QObject>
#include <QString>

// Tells when a file system is about to be unmounted, so that nothing here keeps it busy.
class UnmountWatch : public QObject
{
    Q_OBJECT

public:
    explicit UnmountWatch(QObject *parent = nullptr);
    ~UnmountWatch() override;

Q_SIGNALS:
    void aboutToUnmount(const QString &folder);

private:
    static void preUnmount(GVolumeMonitor *, GMount *mount, gpointer self);

    GRef<GVolumeMonitor> m_monitor;
};
