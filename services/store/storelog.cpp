// SPDX-License-Identifier: GPL-3.0-or-later
#include "storelog.h"

Q_LOGGING_CATEGORY(lcStore, "kestrel.store")
