// SPDX-License-Identifier: GPL-3.0-or-later
#include "touchrow.h"

#include <QEvent>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QPainter>

namespace {

bool isByKeys(const QFocusEvent *event)
{
    return event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
}

} // namespace

TouchRow::TouchRow(bool canBeTapped, QGraphicsItem *parent)
    : QGraphicsWidget(parent),
      m_canBeTapped(canBeTapped)
{
    if (canBeTapped)
        setFocusPolicy(Qt::TabFocus);
    else
        setAcceptedMouseButtons(Qt::NoButton); // a finger on it scrolls
}

QRectF TouchRow::mirrored(const QRectF &part) const
{
    if (layoutDirection() != Qt::RightToLeft)
        return part;
    return {size().width() - part.right(), part.top(), part.width(), part.height()};
}

void TouchRow::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_isPressed)
        paintPlate(painter);
    painter->setLayoutDirection(layoutDirection());
    paintContent(painter, rect().adjusted(Margin, 0, -Margin, 0));
    painter->restore();
    if (m_isMarked) {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(palette().color(QPalette::Highlight), 3));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(rect().adjusted(4, 4, -4, -4), 10, 10);
    }
}

// As wide as the page it ends with that; on a wider one it has corners.
void TouchRow::paintPlate(QPainter *painter) const
{
    const QGraphicsWidget *page = parentWidget();
    const qreal radius = page && page->size().width() > size().width() ? 12 : 0;
    painter->setPen(Qt::NoPen);
    painter->setBrush(palette().color(QPalette::Button));
    painter->drawRoundedRect(rect(), radius, radius);
}

void TouchRow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    QGraphicsWidget::changeEvent(event);
    update();
}

void TouchRow::setPressed(bool pressed)
{
    m_isPressed = pressed;
    update();
}

void TouchRow::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setPressed(true);
    else
        event->ignore();
}

void TouchRow::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const bool isTap = m_isPressed && rect().contains(event->pos());
    setPressed(false);
    if (isTap)
        Q_EMIT tapped();
}

// The page scrolls with the finger: this is no tap any more.
void TouchRow::ungrabMouseEvent(QEvent *)
{
    setPressed(false);
}

void TouchRow::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Select:
        if (!event->isAutoRepeat())
            Q_EMIT tapped();
        event->accept();
        break;
    default:
        event->ignore(); // the page goes to the next, or scrolls
    }
}

void TouchRow::mark()
{
    setFocus(Qt::OtherFocusReason);
    setMarked(hasFocus());
}

void TouchRow::setMarked(bool marked)
{
    m_isMarked = marked;
    update();
}

void TouchRow::focusInEvent(QFocusEvent *event)
{
    setMarked(isByKeys(event) || m_markComesBack);
    QGraphicsWidget::focusInEvent(event);
}

void TouchRow::focusOutEvent(QFocusEvent *event)
{
    // With the page that is covered it goes, and comes back with it.
    m_markComesBack = m_isMarked && !isByKeys(event);
    setMarked(false);
    QGraphicsWidget::focusOutEvent(event);
}

QAccessible::Role TouchRow::accessibleRole() const
{
    return m_canBeTapped ? QAccessible::Button : QAccessible::StaticText;
}
