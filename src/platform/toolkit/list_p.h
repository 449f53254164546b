// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "list.h"
#include "listcells.h"
#include "listlayouter.h"
#include "taptracker.h"

#include <QAbstractItemModel>
#include <QPointer>
#include <QTimer>

namespace toolkit {

class PannableViewport;

// The mark around the cell that the keyboard is on, over the cells.
class FocusMark : public QGraphicsItem
{
public:
    explicit FocusMark(QGraphicsItem *parent) : QGraphicsItem(parent)
    {
        setZValue(1);
        setVisible(false);
        setAcceptedMouseButtons(Qt::NoButton);
    }
    void show(const QRectF &rect, const Style &style);
    [[nodiscard]] QRectF boundingRect() const override { return m_rect; }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    QRectF m_rect;
    qreal m_radius = 0;
    QColor m_color;
};

class List::Private
{
public:
    Private(List *list, std::function<void(Widget *)> prepare) : cells(list, std::move(prepare)) { }

    CellCreator *creator = nullptr;
    QAbstractItemModel *model = nullptr;
    ListLayouter layouter;
    ListCells cells;
    QPointer<PannableViewport> viewport;
    QTimer syncTimer;
    bool dirty = false;
    TapTracker tap;
    QPersistentModelIndex pressed;
    QPersistentModelIndex held;
    QPersistentModelIndex current; // of the keyboard
    int currentRow = -1; // where it was seen last
    bool keyboardUsed = false; // last, rather than the pointer: the focus mark is shown
    FocusMark *focusMark = nullptr;
    bool showGroups = false;
    bool indexVisible = false;
    SelectionMode selectionMode = SelectionMode::None;
};

} // namespace toolkit
