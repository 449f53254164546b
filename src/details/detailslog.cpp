// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailslog.h"

Q_LOGGING_CATEGORY(detailsLog, "kestrel.details")
