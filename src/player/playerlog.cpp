// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerlog.h"

Q_LOGGING_CATEGORY(lcPlayer, "kestrel.player")
