// SPDX-License-Identifier: GPL-3.0-or-later
#include "listcells.h"

#include <QAbstractItemModel>

namespace toolkit {

CellRecycler::~CellRecycler()
{
    qDeleteAll(m_cells);
}

Widget *CellRecycler::take()
{
    return m_cells.isEmpty() ? nullptr : m_cells.takeLast();
}

void CellRecycler::recycle(Widget *cell)
{
    m_cells.append(cell);
}

ListCells::ListCells(QGraphicsItem *parent, std::function<void(Widget *)> prepare)
    : m_parent(parent),
      m_prepare(std::move(prepare))
{
}

void ListCells::setCreator(CellCreator *creator)
{
    clear();
    while (Widget *cell = m_recycler.take())
        delete cell;
    m_known.clear();
    m_creator = creator;
}

void ListCells::recycle(Widget *cell)
{
    cell->setVisible(false);
    m_recycler.recycle(cell);
}

void ListCells::clear()
{
    const QList<Entry> cells = std::exchange(m_cells, {});
    for (const Entry &entry : cells)
        recycle(entry.cell);
}

Widget *ListCells::make(const QModelIndex &index)
{
    Widget *cell = m_creator->createCell(index, m_recycler);
    if (cell == nullptr)
        return nullptr;
    if (!m_known.contains(cell)) {
        m_known.insert(cell);
        const Qt::LayoutDirection before = cell->layoutDirection();
        cell->setParentItem(m_parent);
        // It was filled before it knew which way round the page is.
        if (cell->layoutDirection() != before)
            m_creator->updateCell(index, cell);
        m_prepare(cell);
    }
    return cell;
}

void ListCells::sync(const QAbstractItemModel *model, const ListLayouter &layouter, const RowRange &wanted)
{
    QSet<int> present;
    for (qsizetype i = m_cells.size() - 1; i >= 0; --i) {
        const int row = m_cells.at(i).index.isValid() ? m_cells.at(i).index.row() : -1;
        if (wanted.contains(row)) {
            present.insert(row);
            continue;
        }
        Widget *cell = m_cells.at(i).cell;
        m_cells.removeAt(i);
        recycle(cell);
    }
    if (model == nullptr || m_creator == nullptr)
        return;
    for (int row = wanted.first; row <= wanted.last; ++row) {
        if (present.contains(row))
            continue;
        const QModelIndex index = model->index(row, 0);
        if (Widget *cell = make(index))
            m_cells.append({index, cell});
    }
    for (const Entry &entry : std::as_const(m_cells)) {
        entry.cell->setGeometry(layouter.cellRect(entry.index.row()));
        entry.cell->setVisible(true);
    }
}

void ListCells::update(int firstRow, int lastRow)
{
    if (m_creator == nullptr)
        return;
    for (qsizetype i = 0; i < m_cells.size(); ++i) {
        const Entry entry = m_cells.at(i);
        if (entry.index.isValid() && entry.index.row() >= firstRow && entry.index.row() <= lastRow)
            m_creator->updateCell(entry.index, entry.cell);
    }
}

Widget *ListCells::cell(int row) const
{
    for (const Entry &entry : m_cells) {
        if (entry.index.isValid() && entry.index.row() == row)
            return entry.cell;
    }
    return nullptr;
}

int ListCells::rowOf(const Widget *cell) const
{
    for (const Entry &entry : m_cells) {
        if (entry.cell == cell)
            return entry.index.isValid() ? entry.index.row() : -1;
    }
    return -1;
}

} // namespace toolkit
