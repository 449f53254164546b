// SPDX-License-Identifier: GPL-3.0-or-later
#include "workerlog.h"

Q_LOGGING_CATEGORY(workerLog, "kestrel.media.worker", QtInfoMsg)
