// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

using GMount = struct _GMount;
using GVolumeMonitor = struct _GVolumeMonitor;
using gpointer = void *;
Q_DECLARE_OPAQUE_POINTER(GMount *)
Q_DECLARE_OPAQUE_POINTER(GVolumeMonitor *)

// Whether the partition with the user's videos is there, or handed to a computer over USB. A repeated state
// is reported again.
class MmcMonitor : public QObject
{
    Q_OBJECT

public:
    // Created on the first call, never deleted.
    [[nodiscard]] static MmcMonitor *instance();
    // The state right now, as far as the USB mode tells.
    [[nodiscard]] static bool isAvailable();

Q_SIGNALS:
    // True: available.
    void mmcStateChanged(bool state);
    // The partition is about to be unmounted.
    void preUnmount();

public Q_SLOTS:
    void usbState(const QString &state);
    // Called by the volume monitor; `userData` is the MmcMonitor.
    static void mountEvent(GVolumeMonitor *mon, GMount *event, gpointer userData);
    bool isMyDocsMounted(GMount *mount);

protected:
    MmcMonitor();
    ~MmcMonitor() override;

private:
    GVolumeMonitor *m_volumeMonitor = nullptr;
};
