// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibleitem.h"

#include "accessibility.h"

#include <QGraphicsWidget>

namespace toolkit {

AccessibleItem::AccessibleItem(QGraphicsWidget *item) : QAccessibleObject(item) { }

AccessibleItem::~AccessibleItem() = default;

QGraphicsWidget *AccessibleItem::item() const
{
    return static_cast<QGraphicsWidget *>(object());
}

bool AccessibleItem::takesFocus() const
{
    return item()->focusPolicy() != Qt::NoFocus;
}

QWindow *AccessibleItem::window() const
{
    return accessibility::nativeWindow(item());
}

QAccessibleInterface *AccessibleItem::parent() const
{
    return accessibility::parentOf(item());
}

QAccessibleInterface *AccessibleItem::child(int index) const
{
    return QAccessible::queryAccessibleInterface(accessibility::toldWidgets(item()).value(index));
}

int AccessibleItem::childCount() const
{
    return int(accessibility::toldWidgets(item()).size());
}

int AccessibleItem::indexOfChild(const QAccessibleInterface *child) const
{
    const QObject *wanted = child != nullptr ? child->object() : nullptr;
    const QList<QGraphicsWidget *> told = accessibility::toldWidgets(item());
    for (int index = 0; index < told.size(); ++index) {
        if (told.at(index) == wanted)
            return index;
    }
    return -1;
}

QAccessibleInterface *AccessibleItem::childAt(int x, int y) const
{
    return accessibility::partAt(this, x, y);
}

QAccessibleInterface *AccessibleItem::focusChild() const
{
    return item()->hasFocus() ? const_cast<AccessibleItem *>(this) : nullptr;
}

QRect AccessibleItem::rect() const
{
    return accessibility::screenRect(item(), item()->rect());
}

QAccessible::Role AccessibleItem::role() const
{
    return accessibility::roleOf(item());
}

void *AccessibleItem::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ActionInterface)
        return static_cast<QAccessibleActionInterface *>(this);
    return QAccessibleObject::interface_cast(type);
}

QStringList AccessibleItem::keyBindingsForAction(const QString &action) const
{
    Q_UNUSED(action)
    return {};
}

} // namespace toolkit
