// SPDX-License-Identifier: GPL-3.0-or-later
#include "action.h"

namespace toolkit {

bool Action::isOfferedAt(const QAction *action, Location location)
{
    if (action == nullptr || !action->isVisible() || action->isSeparator())
        return false;
    const auto *own = qobject_cast<const Action *>(action);
    return own == nullptr || own->location().testFlag(location);
}

bool Action::isDestructive(const QAction *action)
{
    const auto *own = qobject_cast<const Action *>(action);
    return own != nullptr && own->isDestructive();
}

} // namespace toolkit
