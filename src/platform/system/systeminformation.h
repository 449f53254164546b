// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// Manufacturer and model of the device and values by key, read without blocking the caller (hostname1's
// cached answer, then DMI or the device tree). Names are percent-encoded where an IRI would not hold them
// (blanks, quotes, <, >).
class SystemInformation
{
public:
    virtual ~SystemInformation() = default;
    [[nodiscard]] virtual QString manufacturer() const = 0;
    [[nodiscard]] virtual QString model() const = 0;
    // Empty when the key is unknown. "/component/hw-build": the hardware build number.
    [[nodiscard]] virtual QString value(const QString &key) const = 0;

    [[nodiscard]] static SystemInformation *instance();
    // Tests: replaces the instance; null restores the machine's own. Not owned.
    static void setInstance(SystemInformation *information);
};
