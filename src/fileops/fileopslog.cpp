// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileopslog.h"

Q_LOGGING_CATEGORY(fileOpsLog, "kestrel.fileops")
