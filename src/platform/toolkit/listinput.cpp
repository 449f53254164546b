// SPDX-License-Identifier: GPL-3.0-or-later
// The pointer and keyboard side of the list.
#include "list_p.h"

#include "pannableviewport.h"

#include <QFocusEvent>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

void List::setPressedRow(int row)
{
    const auto tell = [this](bool pressed) {
        if (!d->pressed.isValid())
            return;
        update(d->layouter.cellRect(d->pressed.row()));
        if (Widget *cell = d->cells.cell(d->pressed.row()))
            cell->setProperty("pressed", pressed);
    };
    tell(false);
    d->pressed = row >= 0 ? QPersistentModelIndex(d->model->index(row, 0)) : QPersistentModelIndex();
    tell(true);
}

void List::setHeldIndex(const QModelIndex &index)
{
    d->held = index.model() == d->model ? index : QModelIndex();
    update();
}

QModelIndex List::heldIndex() const
{
    return d->held;
}

void List::cancelPress()
{
    d->tap.cancel();
    // A cell that holds the pointer itself lets go of it.
    QGraphicsItem *grabber = scene() != nullptr ? scene()->mouseGrabberItem() : nullptr;
    if (grabber != nullptr && grabber != this && isAncestorOf(grabber))
        grabber->ungrabMouse();
}

void List::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    ensureSynced();
    const int row = d->layouter.rowAt(event->pos());
    if (row < 0) {
        event->ignore();
        return;
    }
    event->accept();
    if (event->button() == Qt::RightButton) {
        d->tap.cancel();
        pointAt(row);
        Q_EMIT itemLongTapped(d->model->index(row, 0), event->scenePos());
        return;
    }
    d->keyboardUsed = false;
    updateFocusMark();
    setPressedRow(row);
    d->tap.press(event->scenePos());
}

void List::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    d->tap.move(event->scenePos());
}

void List::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        d->tap.release(event->scenePos());
}

bool List::event(QEvent *event)
{
    if (event->type() == QEvent::UngrabMouse || event->type() == QEvent::Hide)
        d->tap.cancel();
    return Widget::event(event);
}

// Cells that handle the pointer themselves take the press; that it is a pointer's, the list sees here.
bool List::sceneEventFilter(QGraphicsItem *watched, QEvent *event)
{
    if (event->type() == QEvent::GraphicsSceneMousePress && d->keyboardUsed) {
        d->keyboardUsed = false;
        updateFocusMark();
    }
    return Widget::sceneEventFilter(watched, event);
}

// The row that a key goes to from `row`; -1 when it is none of those that move.
int List::rowForKey(int key, int row) const
{
    const int last = d->layouter.rowCount() - 1;
    const int columns = d->layouter.columns();
    const int page = std::max<int>(1, int(visibleIndexes().size()) - 2);
    const int forward = layoutDirection() == Qt::RightToLeft ? -1 : 1;
    switch (key) {
    case Qt::Key_Up:
        return std::clamp(row - columns, 0, last);
    case Qt::Key_Down:
        return std::clamp(row + columns, 0, last);
    case Qt::Key_PageUp:
        return std::clamp(row - page, 0, last);
    case Qt::Key_PageDown:
        return std::clamp(row + page, 0, last);
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return last;
    case Qt::Key_Left:
        return columns > 1 ? std::clamp(row - forward, 0, last) : -1;
    case Qt::Key_Right:
        return columns > 1 ? std::clamp(row + forward, 0, last) : -1;
    default:
        return -1;
    }
}

void List::moveByKey(int key)
{
    const bool jump = key == Qt::Key_Home || key == Qt::Key_End;
    // The first key shows where the keyboard is.
    makeCurrent(isCurrentShown() || jump ? rowForKey(key, startingRow()) : startingRow());
}

// What is done to the row that the keyboard is on, and nothing before a person can see which that is.
bool List::actByKey(const QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const int key = event->key();
    const bool plays = key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Select;
    const bool menu = key == Qt::Key_Menu || (key == Qt::Key_F10 && modifiers == Qt::ShiftModifier);
    const bool edits = key == Qt::Key_F2 || key == Qt::Key_Delete;
    if (!(plays || menu || edits) || (!menu && modifiers != Qt::NoModifier))
        return false;
    if (event->isAutoRepeat())
        return true;
    const bool wasShown = isCurrentShown();
    if (!wasShown)
        makeCurrent(startingRow());
    if (menu)
        longTap(d->current);
    else if (wasShown && plays)
        tap(d->current);
    else if (wasShown && key == Qt::Key_F2)
        Q_EMIT editRequested(d->current);
    else if (wasShown)
        Q_EMIT removeRequested(d->current);
    return true;
}

void List::keyPressEvent(QKeyEvent *event)
{
    ensureSynced();
    event->accept();
    if (d->layouter.rowCount() == 0)
        event->ignore();
    else if (actByKey(event))
        return;
    else if (rowForKey(event->key(), 0) >= 0)
        moveByKey(event->key());
    else
        event->ignore();
}

void List::focusInEvent(QFocusEvent *event)
{
    Widget::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason) {
        d->keyboardUsed = true;
        const int row = startingRow();
        if (row >= 0)
            setCurrentIndex(d->model->index(row, 0));
    } else if (event->reason() == Qt::MouseFocusReason) {
        d->keyboardUsed = false;
    }
    updateFocusMark();
}

void List::focusOutEvent(QFocusEvent *event)
{
    Widget::focusOutEvent(event);
    updateFocusMark();
}

void List::updateFocusMark()
{
    if (hasFocus() && d->keyboardUsed && d->current.isValid())
        d->focusMark->show(d->layouter.cellRect(d->current.row()), style());
    else
        d->focusMark->setVisible(false);
}

} // namespace toolkit
