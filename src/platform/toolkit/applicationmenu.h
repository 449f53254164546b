// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "menu.h"

namespace toolkit {

// The menu of a page: of its actions that have the application menu among their locations.
class ApplicationMenu : public Menu
{
    Q_OBJECT

public:
    explicit ApplicationMenu(const QList<QAction *> &actions);

    // Stands at this point of the scene, and deletes itself when it is closed. Without an action to offer it
    // does not appear.
    void open(ApplicationWindow *window, const QPointF &point);
    [[nodiscard]] static bool hasEntries(const QList<QAction *> &actions);
};

} // namespace toolkit
