// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessiblewidget.h"

#include <QHash>
#include <QPersistentModelIndex>
#include <QPointer>

#include <optional>

class QAbstractItemModel;

namespace toolkit {

class List;

// The list: as many items as its model has rows, whether they have a cell or not. An item comes into being
// when it is asked for and goes with its row. As a table it tells readers not to ask for all of them.
class AccessibleList : public AccessibleWidget, public QAccessibleTableInterface
{
public:
    explicit AccessibleList(List *list);

    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override;
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    [[nodiscard]] QAccessibleInterface *caption() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *summary() const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface *cellAt(int row, int column) const override;
    [[nodiscard]] int selectedCellCount() const override;
    [[nodiscard]] QList<QAccessibleInterface *> selectedCells() const override;
    [[nodiscard]] QString columnDescription(int column) const override;
    [[nodiscard]] QString rowDescription(int row) const override;
    [[nodiscard]] int selectedColumnCount() const override { return 0; }
    [[nodiscard]] int selectedRowCount() const override { return selectedCellCount(); }
    [[nodiscard]] int columnCount() const override { return 1; }
    [[nodiscard]] int rowCount() const override { return childCount(); }
    [[nodiscard]] QList<int> selectedColumns() const override { return {}; }
    [[nodiscard]] QList<int> selectedRows() const override;
    [[nodiscard]] bool isColumnSelected(int) const override { return false; }
    [[nodiscard]] bool isRowSelected(int row) const override;
    bool selectRow(int row) override;
    bool selectColumn(int) override { return false; }
    bool unselectRow(int) override { return false; }
    bool unselectColumn(int) override { return false; }
    void modelChange(QAccessibleTableModelChangeEvent *event) override;

protected:
    ~AccessibleList() override;

private:
    [[nodiscard]] List *list() const;
    void follow(QAbstractItemModel *model);
    // Rows that changed, the first and the last of them; -1 and -1 where it may be all.
    struct Rows
    {
        QAccessibleTableModelChangeEvent::ModelChangeType change;
        int first = -1;
        int last = -1;
    };
    [[nodiscard]] static Rows together(const Rows &earlier, const Rows &later);
    void note(const Rows &rows);
    void tell();
    void tellName();
    [[nodiscard]] QString currentName() const;
    void dropGone();

    QPointer<QAbstractItemModel> m_model; // that is followed
    // Changes of one turn of the event loop are told as one: a filter takes rows out in hundreds of pieces.
    std::optional<Rows> m_untold;
    QString m_currentName; // of the row that the keyboard is on, as it was told last
    mutable QHash<QPersistentModelIndex, QAccessible::Id> m_items;
};

} // namespace toolkit
