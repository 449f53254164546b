// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessiblelist.h"

#include "accessibility.h"
#include "accessiblelistitem.h"
#include "list.h"

#include <QAbstractItemModel>
#include <QGraphicsScene>
#include <QGraphicsView>

#include <algorithm>

namespace toolkit {

using Change = QAccessibleTableModelChangeEvent;

AccessibleList::AccessibleList(List *list) : AccessibleWidget(list)
{
    QObject::connect(list, &List::modelChanged, context(), [this] {
        follow(this->list()->itemModel());
        note({Change::ModelReset});
    });
    QObject::connect(list, &List::currentChanged, context(), [this] {
        m_currentName = currentName();
        accessibility::focusMoved(this->list());
    });
    follow(list->itemModel());
    m_currentName = currentName();
}

AccessibleList::~AccessibleList()
{
    for (const QAccessible::Id id : std::as_const(m_items))
        QAccessible::deleteAccessibleInterface(id);
}

List *AccessibleList::list() const
{
    return static_cast<List *>(object());
}

void AccessibleList::follow(QAbstractItemModel *model)
{
    if (m_model != nullptr)
        m_model->disconnect(context());
    m_model = model;
    if (model == nullptr)
        return;
    QObject::connect(model, &QAbstractItemModel::rowsInserted, context(),
                     [this](const QModelIndex &, int first, int last) {
                         note({Change::RowsInserted, first, last});
                     });
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, context(),
                     [this](const QModelIndex &, int first, int last) {
                         note({Change::RowsRemoved, first, last});
                     });
    QObject::connect(model, &QAbstractItemModel::dataChanged, context(),
                     [this](const QModelIndex &from, const QModelIndex &to) {
                         note({Change::DataChanged, from.row(), to.row()});
                     });
    const auto replaced = [this] { note({Change::ModelReset}); };
    QObject::connect(model, &QAbstractItemModel::modelReset, context(), replaced);
    QObject::connect(model, &QAbstractItemModel::layoutChanged, context(), replaced);
    QObject::connect(model, &QAbstractItemModel::rowsMoved, context(), replaced);
}

// What two changes in a row are as one: of one kind and side by side, or else anything.
AccessibleList::Rows AccessibleList::together(const Rows &earlier, const Rows &later)
{
    const int count = later.last - later.first + 1;
    if (earlier.change != later.change || earlier.change == Change::ModelReset)
        return {Change::ModelReset};
    if (later.change == Change::DataChanged)
        return {Change::DataChanged, std::min(earlier.first, later.first),
                std::max(earlier.last, later.last)};
    if (later.change == Change::RowsInserted && later.first >= earlier.first
        && later.first <= earlier.last + 1)
        return {Change::RowsInserted, earlier.first, earlier.last + count};
    if (later.change == Change::RowsRemoved && later.first <= earlier.first
        && later.last + 1 >= earlier.first)
        return {Change::RowsRemoved, later.first, later.first + (earlier.last - earlier.first) + count};
    return {Change::ModelReset};
}

void AccessibleList::note(const Rows &rows)
{
    if (m_untold) {
        m_untold = together(*m_untold, rows);
        return;
    }
    m_untold = rows;
    QMetaObject::invokeMethod(
        context(), [this] { tell(); }, Qt::QueuedConnection);
}

void AccessibleList::tell()
{
    const Rows rows = *std::exchange(m_untold, std::nullopt);
    dropGone();
    QAccessibleTableModelChangeEvent event(list(), rows.change);
    event.setFirstRow(rows.first);
    event.setLastRow(rows.last);
    event.setFirstColumn(0);
    event.setLastColumn(0);
    QAccessible::updateAccessibility(&event);
    tellName();
}

QString AccessibleList::currentName() const
{
    const QModelIndex current = list()->currentIndex();
    const CellCreator *creator = list()->cellCreator();
    return current.isValid() && creator != nullptr ? accessibility::spoken(creator->accessibleName(current))
                                                   : QString();
}

// Of the row that the person is on, when it has another one by now.
void AccessibleList::tellName()
{
    const QString before = std::exchange(m_currentName, currentName());
    if (m_currentName == before)
        return;
    QAccessibleInterface *current = child(list()->currentIndex().row());
    if (current == nullptr)
        return;
    QAccessibleEvent event(current, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void AccessibleList::dropGone()
{
    m_items.removeIf([](const auto &item) {
        if (item.key().isValid())
            return false;
        QAccessible::deleteAccessibleInterface(item.value());
        return true;
    });
}

QAccessibleInterface *AccessibleList::child(int index) const
{
    const QAbstractItemModel *model = list()->itemModel();
    if (model == nullptr || index < 0 || index >= model->rowCount())
        return nullptr;
    const QPersistentModelIndex row(model->index(index, 0));
    QAccessible::Id &id = m_items[row];
    if (id == 0)
        id = QAccessible::registerAccessibleInterface(new AccessibleListItem(list(), row));
    return QAccessible::accessibleInterface(id);
}

int AccessibleList::childCount() const
{
    return list()->itemModel() != nullptr ? list()->itemModel()->rowCount() : 0;
}

int AccessibleList::indexOfChild(const QAccessibleInterface *child) const
{
    const auto *item = dynamic_cast<const AccessibleListItem *>(child);
    return item != nullptr && item->list() == list() && item->isValid() ? item->rowIndex() : -1;
}

QAccessibleInterface *AccessibleList::childAt(int x, int y) const
{
    if (list()->scene() == nullptr || list()->scene()->views().isEmpty())
        return nullptr;
    const QGraphicsView *view = list()->scene()->views().first();
    const QPointF point = view->mapToScene(view->viewport()->mapFromGlobal(QPoint(x, y)));
    const QModelIndex index = list()->indexAt(list()->mapFromScene(point));
    return index.isValid() ? child(index.row()) : nullptr;
}

QAccessibleInterface *AccessibleList::focusChild() const
{
    if (!list()->hasFocus())
        return nullptr;
    QAccessibleInterface *current = child(list()->currentIndex().row());
    return current != nullptr ? current : AccessibleWidget::focusChild();
}

void *AccessibleList::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TableInterface)
        return static_cast<QAccessibleTableInterface *>(this);
    return AccessibleWidget::interface_cast(type);
}

QAccessibleInterface *AccessibleList::cellAt(int row, int column) const
{
    return column == 0 ? child(row) : nullptr;
}

// The row that the keyboard is on counts as selected.
QList<int> AccessibleList::selectedRows() const
{
    const int row = list()->currentIndex().row();
    return row >= 0 ? QList<int>{row} : QList<int>();
}

bool AccessibleList::isRowSelected(int row) const
{
    return selectedRows().contains(row);
}

int AccessibleList::selectedCellCount() const
{
    return int(selectedRows().size());
}

QList<QAccessibleInterface *> AccessibleList::selectedCells() const
{
    QList<QAccessibleInterface *> cells;
    for (const int row : selectedRows())
        cells.append(child(row));
    return cells;
}

bool AccessibleList::selectRow(int row)
{
    QAccessibleInterface *item = child(row);
    if (item == nullptr || !accessibility::isReachable(list()))
        return false;
    item->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    return true;
}

QString AccessibleList::columnDescription(int column) const
{
    return column == 0 ? text(QAccessible::Name) : QString();
}

QString AccessibleList::rowDescription(int row) const
{
    const QAccessibleInterface *item = child(row);
    return item != nullptr ? item->text(QAccessible::Name) : QString();
}

// The items follow the model by themselves.
void AccessibleList::modelChange(QAccessibleTableModelChangeEvent *event)
{
    Q_UNUSED(event)
}

} // namespace toolkit
