// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessiblewindow.h"

#include "accessibility.h"
#include "applicationwindow.h"
#include "scenemanager.h"
#include "widget.h"

#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QGuiApplication>

namespace toolkit {

AccessibleWindow::AccessibleWindow(ApplicationWindow *window) : QAccessibleWidget(window, QAccessible::Window)
{
}

ApplicationWindow *AccessibleWindow::view() const
{
    return static_cast<ApplicationWindow *>(widget());
}

QGraphicsItem *AccessibleWindow::root() const
{
    return view()->scene() != nullptr && view()->sceneManager() != nullptr ? view()->sceneManager()->root()
                                                                           : nullptr;
}

QAccessibleInterface *AccessibleWindow::child(int index) const
{
    const QGraphicsItem *top = root();
    return top != nullptr
        ? QAccessible::queryAccessibleInterface(accessibility::toldWidgets(top).value(index))
        : nullptr;
}

int AccessibleWindow::childCount() const
{
    const QGraphicsItem *top = root();
    return top != nullptr ? int(accessibility::toldWidgets(top).size()) : 0;
}

int AccessibleWindow::indexOfChild(const QAccessibleInterface *child) const
{
    for (int index = childCount() - 1; index >= 0; --index) {
        if (this->child(index) == child)
            return index;
    }
    return -1;
}

QAccessibleInterface *AccessibleWindow::childAt(int x, int y) const
{
    return accessibility::partAt(this, x, y);
}

QAccessibleInterface *AccessibleWindow::focusChild() const
{
    QGraphicsItem *item = view()->scene() != nullptr ? view()->scene()->focusItem() : nullptr;
    if (item == nullptr)
        return nullptr;
    auto *focused = item->isWidget() ? static_cast<QGraphicsWidget *>(item) : nullptr;
    if (focused == nullptr || !accessibility::isTold(focused))
        focused = accessibility::toldAncestor(item);
    QAccessibleInterface *part = QAccessible::queryAccessibleInterface(focused);
    QAccessibleInterface *deeper = part != nullptr ? part->focusChild() : nullptr;
    return deeper != nullptr ? deeper : part;
}

QString AccessibleWindow::text(QAccessible::Text kind) const
{
    if (kind != QAccessible::Name)
        return QAccessibleWidget::text(kind);
    const QString title = accessibility::spoken(view()->windowTitle());
    return title.isEmpty() ? QGuiApplication::applicationDisplayName() : title;
}

} // namespace toolkit
