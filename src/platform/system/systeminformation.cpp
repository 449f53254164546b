// SPDX-License-Identifier: GPL-3.0-or-later
#include "systeminformation.h"

#include "machinesysteminformation.h"

using namespace Qt::Literals::StringLiterals;

namespace {
SystemInformation *s_replacement = nullptr;
}

SystemInformation *SystemInformation::instance()
{
    if (s_replacement)
        return s_replacement;
    static auto *const machine
        = new MachineSystemInformation(QDBusConnection::systemBus(), u"/sys"_s, u"/proc"_s);
    return machine;
}

void SystemInformation::setInstance(SystemInformation *information)
{
    s_replacement = information;
}
