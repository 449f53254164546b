// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbslog.h"

Q_LOGGING_CATEGORY(thumbsLog, "kestrel.thumbs", QtInfoMsg)
