// SPDX-License-Identifier: GPL-3.0-or-later
#include "datalog.h"

Q_LOGGING_CATEGORY(lcData, "kestrel.data")
