// SPDX-License-Identifier: GPL-3.0-or-later
#include "medialog.h"

Q_LOGGING_CATEGORY(lcMedia, "kestrel.media")
