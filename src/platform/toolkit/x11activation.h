// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QtGui/qwindowdefs.h>

namespace toolkit {

// Asks the window manager for the focus, as of `time` on the X server's clock. False without an X display or
// where no window manager takes such requests.
bool x11Activate(WId window, quint32 time);

// Tells the launcher that the start it announced under `startupId` is over. Does nothing without an X
// display.
void x11EndStartup(const QByteArray &startupId);

} // namespace toolkit
