// SPDX-License-Identifier: GPL-3.0-or-later
#include "objectmenu.h"

#include "action.h"
#include "applicationwindow.h"
#include "scenepress.h"

namespace toolkit {

void ObjectMenu::appear(ApplicationWindow *window)
{
    if (window == nullptr || isActive())
        return;
    QList<QAction *> offered;
    for (QAction *action : actions()) {
        if (Action::isOfferedAt(action, Action::ObjectMenuLocation))
            offered.append(action);
    }
    if (offered.isEmpty())
        return;
    setEntries(offered);
    // The finger that still rests on the page pans and taps nothing there any more.
    cancelScenePress(window->scene());
    Menu::appear(window);
}

ObjectMenu::State ObjectMenu::state() const
{
    if (!isDisplayed())
        return State::Hidden;
    if (isOpen())
        return State::Shown;
    return isActive() ? State::Appearing : State::Disappearing;
}

} // namespace toolkit
