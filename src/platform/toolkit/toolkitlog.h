// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

namespace toolkit {

Q_DECLARE_LOGGING_CATEGORY(lcToolkit)
Q_DECLARE_LOGGING_CATEGORY(lcWidgets)

} // namespace toolkit
