// SPDX-License-Identifier: GPL-3.0-or-later
#include "librarylog.h"

Q_LOGGING_CATEGORY(libraryLog, "kestrel.library")
