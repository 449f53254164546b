// SPDX-License-Identifier: GPL-3.0-or-later
#include "pageheader.h"

#include <QCoreApplication>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal pageMargin = 16;
constexpr qreal backWidth = 64;
constexpr qreal smallerTitle = 0.75; // beside the back mark

} // namespace

PageHeader::PageHeader(QGraphicsItem *parent) : Widget(parent)
{
    setStyleName(u"CommonApplicationPageHeader"_s);
}

void PageHeader::setTitle(const QString &title)
{
    m_title = title;
    update();
    Q_EMIT accessibleNameChanged();
}

QAccessibleInterface *PageHeader::createAccessible()
{
    return new AccessibleParted(this, this);
}

AccessiblePart PageHeader::accessiblePart(int index) const
{
    Q_UNUSED(index)
    return {QAccessible::Button, qtTrId("qtn_comm_back"), backRect()};
}

void PageHeader::activateAccessiblePart(int index)
{
    if (index == 0 && m_backVisible)
        Q_EMIT backClicked();
}

void PageHeader::setBackVisible(bool visible)
{
    m_backVisible = visible;
    update();
}

QRectF PageHeader::backRect() const
{
    const qreal x = layoutDirection() == Qt::RightToLeft ? size().width() - backWidth : 0;
    return {x, 0, backWidth, size().height()};
}

void PageHeader::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const QColor text = style().color(u"text"_s, QColor(0xF3, 0xF5, 0xF8));
    QFont font = style().font;
    // Above the column that the page keeps its content in.
    const qreal measure = style().number(u"maximumMeasure"_s, rect().width());
    const qreal side = pageMargin + std::max(0.0, std::floor((rect().width() - measure) / 2));
    QRectF area = rect().adjusted(side, 0, -side, 0);
    if (m_backVisible) {
        if (m_pressed)
            painter->fillRect(backRect(), style().color(u"pressed"_s, QColor(255, 255, 255, 32)));
        const QPointF tip = backRect().center() + QPointF(mirrored ? 6 : -6, 0);
        const qreal back = mirrored ? -12 : 12;
        painter->setPen(QPen(text, 3.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPolyline(QPolygonF({tip + QPointF(back, -12), tip, tip + QPointF(back, 12)}));
        const qreal behind = std::max(side, backWidth);
        area = mirrored ? rect().adjusted(side, 0, -behind, 0) : rect().adjusted(behind, 0, -side, 0);
        if (font.pixelSize() > 0)
            font.setPixelSize(qRound(font.pixelSize() * smallerTitle));
    }
    painter->setFont(font);
    // The words keep their own direction, and with it the end where they are elided.
    painter->setLayoutDirection(m_title.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    painter->setPen(text);
    const QString line = QFontMetricsF(font).elidedText(m_title, Qt::ElideRight, area.width());
    painter->drawText(
        area, Qt::AlignVCenter | (mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute, line);
}

void PageHeader::setPressed(bool pressed)
{
    if (m_pressed == pressed)
        return;
    m_pressed = pressed;
    update();
}

void PageHeader::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (!m_backVisible || !backRect().contains(event->pos())) {
        event->ignore();
        return;
    }
    setPressed(true);
}

void PageHeader::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const bool clicked = m_pressed && backRect().contains(event->pos());
    setPressed(false);
    if (clicked)
        Q_EMIT backClicked();
}

void PageHeader::ungrabMouseEvent(QEvent *)
{
    setPressed(false);
}

} // namespace toolkit
