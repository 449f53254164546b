// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "backlightswitch.h"
#include "devicestate.h"

#include <QThreadPool>

#include <atomic>

// Sets a panel's switch. A write waits for the panel (a frame, or a change of modes under way), so it is done
// beside the caller; of several modes asked for meanwhile only the last is written. What the switch was set
// to at first is put back at the end.
class SysfsBacklightControl : public BacklightControl
{
public:
    explicit SysfsBacklightControl(BacklightSwitch backlightSwitch);
    ~SysfsBacklightControl() override;
    SysfsBacklightControl(const SysfsBacklightControl &) = delete;
    SysfsBacklightControl &operator=(const SysfsBacklightControl &) = delete;

    // Other modes than 1 and 3 change nothing.
    void set(int mode) override;

private:
    void apply();
    void write(const QByteArray &value);

    const BacklightSwitch m_switch;
    int m_asked = 0; // the last mode of set()
    std::atomic<int> m_wanted = 0;
    // Of the one thread that writes.
    QByteArray m_original;
    QByteArray m_written;
    bool m_failed = false;
    QThreadPool m_writer;
};
