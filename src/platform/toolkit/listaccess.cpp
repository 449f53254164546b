// SPDX-License-Identifier: GPL-3.0-or-later
// The row that the keyboard is on, and rows for whoever does not see them.
#include "accessiblelist.h"
#include "list_p.h"

#include <algorithm>

namespace toolkit {

QString CellCreator::accessibleName(const QModelIndex &index) const
{
    return index.data(Qt::DisplayRole).toString();
}

QString CellCreator::accessibleDescription(const QModelIndex &index) const
{
    Q_UNUSED(index)
    return {};
}

CellCreator *List::cellCreator() const
{
    return d->creator;
}

QAccessibleInterface *List::createAccessible()
{
    return new AccessibleList(this);
}

QModelIndex List::currentIndex() const
{
    return d->current;
}

void List::setCurrentIndex(const QModelIndex &index)
{
    const bool changed = d->current != index;
    d->current = index.model() == d->model ? index : QModelIndex();
    d->currentRow = d->current.row();
    updateFocusMark();
    if (changed)
        Q_EMIT currentChanged(d->current);
}

// After a change of the model.
void List::followCurrent()
{
    if (d->current.isValid()) {
        d->currentRow = d->current.row();
    } else if (d->currentRow >= 0 && d->layouter.rowCount() > 0) {
        setCurrentIndex(d->model->index(std::min(d->currentRow, d->layouter.rowCount() - 1), 0));
    }
}

// The pointer was at the row: the keyboard goes on from there, and its mark is not wanted.
void List::pointAt(int row)
{
    d->keyboardUsed = false;
    if (row >= 0)
        setCurrentIndex(d->model->index(row, 0));
    updateFocusMark();
}

void List::makeCurrent(int row)
{
    if (row < 0)
        return;
    d->keyboardUsed = true;
    setCurrentIndex(d->model->index(row, 0));
    scrollTo(d->current);
}

void List::goTo(const QModelIndex &index)
{
    ensureSynced();
    if (index.isValid() && index.model() == d->model)
        makeCurrent(index.row());
}

bool List::isCurrentShown() const
{
    return hasFocus() && d->keyboardUsed && d->current.isValid();
}

bool List::isMarkInSight() const
{
    return hasFocus() && d->keyboardUsed && d->currentRow >= 0 && d->currentRow < d->layouter.rowCount()
        && d->layouter.cellRect(d->currentRow).intersects(seenRect());
}

// Where the keyboard begins: where it was, or on the first row that is seen. Of rows that are cut off at an
// edge it is none, if it can be helped: the first key shows where one is, and moves nothing.
int List::startingRow() const
{
    const QRectF seen = seenRect();
    if (d->current.isValid() && (d->keyboardUsed || seen.contains(rowRect(d->current))))
        return d->current.row();
    const QList<QModelIndex> rows = visibleIndexes();
    for (const QModelIndex &row : rows) {
        if (seen.contains(rowRect(row)))
            return row.row();
    }
    if (!rows.isEmpty())
        return rows.first().row();
    return d->layouter.rowCount() > 0 ? 0 : -1;
}

void List::tap(const QModelIndex &index)
{
    if (index.isValid())
        Q_EMIT itemClicked(index);
}

void List::longTap(const QModelIndex &index)
{
    if (!index.isValid())
        return;
    scrollTo(index);
    const QRectF row = rowRect(index);
    const QRectF seen = row.intersected(seenRect());
    Q_EMIT itemLongTapped(index, mapToScene((seen.isEmpty() ? row : seen).center()));
}

QRectF List::rowRect(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != d->model)
        return {};
    const_cast<List *>(this)->ensureSynced();
    return d->layouter.cellRect(index.row());
}

QModelIndex List::indexAt(const QPointF &point) const
{
    const_cast<List *>(this)->ensureSynced();
    const int row = d->layouter.rowAt(point);
    return row >= 0 ? d->model->index(row, 0) : QModelIndex();
}

bool List::isInSight(const QModelIndex &index) const
{
    return rowRect(index).intersects(seenRect());
}

} // namespace toolkit
