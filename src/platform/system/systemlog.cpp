// SPDX-License-Identifier: GPL-3.0-or-later
#include "systemlog.h"

Q_LOGGING_CATEGORY(systemLog, "kestrel.system", QtInfoMsg)
