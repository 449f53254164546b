// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailerlog.h"

Q_LOGGING_CATEGORY(thumbnailerLog, "kestrel.thumbnailer", QtInfoMsg)
