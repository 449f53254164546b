// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

class QObject;

namespace toolkit {

// Calls `translate`, which asks the catalogs for texts and shows them: at once, and while `context` lives
// again whenever the texts are of another language. That is in a turn of the event loop of its own, and once,
// however many catalogs were exchanged.
void keepTranslated(QObject *context, const std::function<void()> &translate);

} // namespace toolkit
