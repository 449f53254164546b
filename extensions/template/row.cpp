// SPDX-License-Identifier: MIT
#include "row.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace {

constexpr qreal Margin = 20; // as the text of the page
constexpr qreal Padding = 16;
constexpr qreal LowestRow = 64; // what a finger hits

} // namespace

Row::Row()
{
    // As high as the text and no higher, also on a page with nothing else on it.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setFocusPolicy(Qt::TabFocus);
}

void Row::setText(const QString &text)
{
    m_text = text;
    update();
    Q_EMIT textChanged();
}

void Row::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (m_isPressed)
        painter->fillRect(rect(), palette().color(QPalette::Button));
    painter->setPen(palette().color(QPalette::Mid));
    painter->drawLine(rect().topLeft(), rect().topRight());
    const QRectF line = rect().adjusted(Margin, 0, -Margin, 0);
    painter->setFont(font());
    painter->setPen(palette().color(QPalette::WindowText));
    painter->setLayoutDirection(layoutDirection());
    painter->drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      QFontMetricsF(font()).elidedText(m_text, Qt::ElideRight, line.width()));
    if (m_isMarked) {
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(palette().color(QPalette::Highlight), 3));
        painter->drawRoundedRect(rect().adjusted(4, 4, -4, -4), 10, 10);
    }
}

QSizeF Row::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which == Qt::MaximumSize)
        return QGraphicsWidget::sizeHint(which, constraint);
    const qreal height = std::max(LowestRow, QFontMetricsF(font()).height() + 2 * Padding);
    return {which == Qt::MinimumSize ? 0 : constraint.width(), height};
}

void Row::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    QGraphicsWidget::changeEvent(event);
    update();
}

void Row::setPressed(bool pressed)
{
    m_isPressed = pressed;
    update();
}

void Row::mousePressEvent(QGraphicsSceneMouseEvent *)
{
    setPressed(true);
}

void Row::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const bool isTap = m_isPressed && rect().contains(event->pos());
    setPressed(false);
    if (isTap)
        Q_EMIT tapped();
}

// The page scrolls with the finger: this is no tap any more.
void Row::ungrabMouseEvent(QEvent *)
{
    setPressed(false);
}

// Also how a screen reader taps.
void Row::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Space)
        Q_EMIT tapped();
    else
        event->ignore(); // the page goes to the next, or scrolls
}

void Row::focusInEvent(QFocusEvent *event)
{
    m_isMarked = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QGraphicsWidget::focusInEvent(event);
    update();
}

void Row::focusOutEvent(QFocusEvent *event)
{
    m_isMarked = false;
    QGraphicsWidget::focusOutEvent(event);
    update();
}
