// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The names that firmware and boot loader give the machine.
struct DeviceNames
{
    QString manufacturer;
    QString model;
    QString hardwareBuild;

    [[nodiscard]] bool isComplete() const { return !manufacturer.isEmpty() && !model.isEmpty(); }
};

// A name as it may stand inside an IRI: everything that an IRI does not hold ("<>\"{}|\\^`", blanks,
// controls) and "%" itself are percent-encoded as UTF-8; other text, also beyond ASCII, stays. The indexer
// writes camera names the same way.
[[nodiscard]] QString iriEncodedName(const QString &name);

// DMI below `sysRoot` (normally "/sys"), then the device tree below `procRoot` (normally "/proc"). Members
// that nobody knows, or that hold a firmware vendor's filler text, are empty.
[[nodiscard]] DeviceNames readDeviceNames(const QString &sysRoot, const QString &procRoot);
