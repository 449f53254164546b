// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationmenu.h"

#include "action.h"

#include <algorithm>

namespace toolkit {

namespace {

bool isOffered(const QAction *action)
{
    return Action::isOfferedAt(action, Action::ApplicationMenuLocation);
}

} // namespace

ApplicationMenu::ApplicationMenu(const QList<QAction *> &actions)
{
    QList<QAction *> offered;
    std::copy_if(actions.begin(), actions.end(), std::back_inserter(offered), isOffered);
    setEntries(offered);
    connect(this, &Popup::disappeared, this, &QObject::deleteLater);
}

bool ApplicationMenu::hasEntries(const QList<QAction *> &actions)
{
    return std::any_of(actions.begin(), actions.end(), isOffered);
}

void ApplicationMenu::open(ApplicationWindow *window, const QPointF &point)
{
    setPoint(point);
    appear(window);
    if (!isDisplayed())
        deleteLater();
}

} // namespace toolkit
