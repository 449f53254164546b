// SPDX-License-Identifier: GPL-3.0-or-later
#include "sharelog.h"

Q_LOGGING_CATEGORY(shareLog, "kestrel.share", QtInfoMsg)
