// SPDX-License-Identifier: GPL-3.0-or-later
#include "remotelog.h"

Q_LOGGING_CATEGORY(remoteLog, "kestrel.remote", QtInfoMsg)
