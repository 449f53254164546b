// SPDX-License-Identifier: GPL-3.0-or-later
#include "serverslog.h"

Q_LOGGING_CATEGORY(serversLog, "kestrel.servers", QtInfoMsg)
