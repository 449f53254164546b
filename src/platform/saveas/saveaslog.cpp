// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveaslog.h"

Q_LOGGING_CATEGORY(saveAsLog, "kestrel.saveas")
