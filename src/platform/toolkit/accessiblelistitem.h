// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QPersistentModelIndex>
#include <QPointer>

namespace toolkit {

class List;

// A row of a list, with or without a cell.
class AccessibleListItem : public QAccessibleInterface,
                           public QAccessibleTableCellInterface,
                           public QAccessibleActionInterface
{
public:
    AccessibleListItem(List *list, const QPersistentModelIndex &index);

    [[nodiscard]] List *list() const { return m_list; }

    [[nodiscard]] bool isValid() const override;
    [[nodiscard]] QObject *object() const override { return nullptr; }
    [[nodiscard]] QWindow *window() const override;
    [[nodiscard]] QAccessibleInterface *parent() const override;
    [[nodiscard]] QAccessibleInterface *child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *) const override { return -1; }
    // Name: what it shows; description: what it shows beside, and "n of m".
    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text, const QString &) override { }
    [[nodiscard]] QRect rect() const override;
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::ListItem; }
    [[nodiscard]] QAccessible::State state() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] bool isSelected() const override;
    [[nodiscard]] QList<QAccessibleInterface *> columnHeaderCells() const override { return {}; }
    [[nodiscard]] QList<QAccessibleInterface *> rowHeaderCells() const override { return {}; }
    [[nodiscard]] int columnIndex() const override { return 0; }
    [[nodiscard]] int rowIndex() const override { return m_index.row(); }
    [[nodiscard]] int columnExtent() const override { return 1; }
    [[nodiscard]] int rowExtent() const override { return 1; }
    [[nodiscard]] QAccessibleInterface *table() const override { return parent(); }

    // Press: a tap. Show menu: a long tap. Set focus: the keyboard goes to the row, which comes into sight.
    [[nodiscard]] QStringList actionNames() const override;
    void doAction(const QString &action) override;
    [[nodiscard]] QStringList keyBindingsForAction(const QString &action) const override;

private:
    QPointer<List> m_list;
    QPersistentModelIndex m_index;
};

} // namespace toolkit
