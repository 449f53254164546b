// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionslog.h"

Q_LOGGING_CATEGORY(extensionsLog, "kestrel.extensions", QtInfoMsg)
