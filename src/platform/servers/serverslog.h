// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(serversLog)
