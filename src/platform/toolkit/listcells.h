// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "list.h"
#include "listlayouter.h"

#include <QPersistentModelIndex>
#include <QSet>

#include <functional>

namespace toolkit {

// Which cells of a list exist: makes those that come near, recycles those that go.
class ListCells
{
public:
    // `prepare` is called once for each cell that was not there before.
    ListCells(QGraphicsItem *parent, std::function<void(Widget *)> prepare);

    void setCreator(CellCreator *creator); // drops all cells
    // Recycles every cell: what they show may be wrong.
    void clear();
    // Brings cells for `wanted` into being and recycles the rest. Cells follow their rows through model
    // changes.
    void sync(const QAbstractItemModel *model, const ListLayouter &layouter, const RowRange &wanted);
    void update(int firstRow, int lastRow);

    [[nodiscard]] Widget *cell(int row) const;
    [[nodiscard]] int rowOf(const Widget *cell) const; // -1: none of them
    [[nodiscard]] int count() const { return int(m_cells.size()); }

private:
    struct Entry
    {
        QPersistentModelIndex index;
        Widget *cell = nullptr;
    };
    void recycle(Widget *cell);
    Widget *make(const QModelIndex &index);

    QGraphicsItem *m_parent;
    std::function<void(Widget *)> m_prepare;
    CellCreator *m_creator = nullptr;
    CellRecycler m_recycler;
    QList<Entry> m_cells;
    QSet<const Widget *> m_known;
};

} // namespace toolkit
