// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGuiApplication>
#include <QString>

// What services are told of who asks: the name of the desktop entry, by which the desktops show its name and
// icon; that of the program where it has none.
[[nodiscard]] inline QString programId()
{
    const QString entry = QGuiApplication::desktopFileName();
    return entry.isEmpty() ? QCoreApplication::applicationName() : entry;
}
