// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedlog.h"

Q_LOGGING_CATEGORY(relatedLog, "kestrel.related", QtInfoMsg)
