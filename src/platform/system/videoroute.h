// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QRect>
#include <QString>

// Where the picture goes, by the outputs that are connected.

// A screen as the window system lists it; the name is that of its connector.
struct ScreenArea
{
    QString name;
    QRect geometry;
};

// A connector of a graphics card as the kernel lists it.
struct DrmConnector
{
    QString name; // without the card: "eDP-1"
    bool connected = false;
    bool enabled = false; // a picture is sent to it

    friend bool operator==(const DrmConnector &, const DrmConnector &) = default;
};

enum class OutputKind {
    BuiltIn, // the device's own panel
    External, // what is plugged in
    Other, // virtual ones, and names that say nothing
};
// By the connector's name as kernel, X server or compositor write it: "eDP-1", "card0-HDMI-A-1", "DP-1-2".
[[nodiscard]] OutputKind outputKind(const QString &connector);

// "tvout": an external output alone has the picture of a device that has a panel of its own.
// "builtinandtvout": the panel and an external output show the same. Empty: anything else; a machine without
// a panel has a monitor, not a TV.
[[nodiscard]] QString videoRoute(const QList<ScreenArea> &screens, const QList<DrmConnector> &connectors);

// The connectors below `sysRoot` (normally "/sys"). The kernel answers from what it knows, without asking the
// hardware.
[[nodiscard]] QList<DrmConnector> readDrmConnectors(const QString &sysRoot);
