// SPDX-License-Identifier: GPL-3.0-or-later
#include "applog.h"

Q_LOGGING_CATEGORY(appLog, "kestrel.app")
