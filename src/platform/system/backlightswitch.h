// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The file by which a panel's content-adaptive brightness is set, and what it takes.
struct BacklightSwitch
{
    QString path;
    QByteArray userInterface; // empty: what was there before
    QByteArray movingImage;

    friend bool operator==(const BacklightSwitch &, const BacklightSwitch &) = default;
};

// The first known switch below `sysRoot` (normally "/sys") that is there and may be written.
[[nodiscard]] std::optional<BacklightSwitch> findBacklightSwitch(const QString &sysRoot);
