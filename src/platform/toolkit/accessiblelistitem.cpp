// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessiblelistitem.h"

#include "accessibility.h"
#include "list.h"
#include "locale.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QKeySequence>

namespace toolkit {

AccessibleListItem::AccessibleListItem(List *list, const QPersistentModelIndex &index)
    : m_list(list),
      m_index(index)
{
}

bool AccessibleListItem::isValid() const
{
    return m_list != nullptr && m_index.isValid() && m_index.model() == m_list->itemModel();
}

QWindow *AccessibleListItem::window() const
{
    return m_list != nullptr ? accessibility::nativeWindow(m_list) : nullptr;
}

QAccessibleInterface *AccessibleListItem::parent() const
{
    return QAccessible::queryAccessibleInterface(m_list);
}

QString AccessibleListItem::text(QAccessible::Text kind) const
{
    const CellCreator *creator = isValid() ? m_list->cellCreator() : nullptr;
    if (creator == nullptr)
        return {};
    if (kind == QAccessible::Name)
        return accessibility::spoken(creator->accessibleName(m_index));
    if (kind != QAccessible::Description)
        return {};
    const QLocale locale = Locale::current();
    const QString place
        = qtTrId("qtn_comm_item_of_list")
              .arg(locale.toString(m_index.row() + 1), locale.toString(m_index.model()->rowCount()));
    const QString more = accessibility::spoken(creator->accessibleDescription(m_index));
    return more.isEmpty() ? place : more + QStringLiteral(", ") + place;
}

QRect AccessibleListItem::rect() const
{
    return isValid() ? accessibility::screenRect(m_list, m_list->rowRect(m_index)) : QRect();
}

QAccessible::State AccessibleListItem::state() const
{
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    state.invisible = !m_list->isVisible();
    state.offscreen = !m_list->isOnDisplay() || !m_list->isInSight(m_index);
    state.disabled = !m_list->isEnabled();
    state.focusable = true;
    state.selectable = true;
    state.focused = m_list->hasFocus() && isSelected();
    state.selected = isSelected();
    return state;
}

void *AccessibleListItem::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableCellInterface)
        return static_cast<QAccessibleTableCellInterface *>(this);
    if (type == QAccessible::ActionInterface)
        return static_cast<QAccessibleActionInterface *>(this);
    return nullptr;
}

bool AccessibleListItem::isSelected() const
{
    return isValid() && m_list->currentIndex() == m_index;
}

QStringList AccessibleListItem::actionNames() const
{
    return {pressAction(), showMenuAction(), setFocusAction()};
}

void AccessibleListItem::doAction(const QString &action)
{
    if (!isValid() || !accessibility::isReachable(m_list))
        return;
    if (action == pressAction()) {
        m_list->tap(m_index);
    } else if (action == showMenuAction()) {
        m_list->longTap(m_index);
    } else if (action == setFocusAction()) {
        m_list->setFocus(Qt::OtherFocusReason);
        m_list->goTo(m_index);
    }
}

QStringList AccessibleListItem::keyBindingsForAction(const QString &action) const
{
    if (action == pressAction())
        return {QKeySequence(Qt::Key_Return).toString(QKeySequence::PortableText)};
    if (action == showMenuAction())
        return {QKeySequence(Qt::SHIFT | Qt::Key_F10).toString(QKeySequence::PortableText)};
    return {};
}

} // namespace toolkit
