// SPDX-License-Identifier: GPL-3.0-or-later
#include "textmenu.h"

#include "painthelpers.h"
#include "theme.h"

#include <QAction>
#include <QFontMetricsF>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int fadeMilliseconds = 160;
constexpr qreal edge = 8; // to the edges of the screen
constexpr qreal lineMargin = 14; // of the lines between the words
constexpr qreal pressedMargin = 5;

} // namespace

TextMenu::TextMenu(const QList<QAction *> &actions) : m_actions(actions), m_fade(this, "opacity")
{
    for (QAction *action : m_actions)
        action->setParent(this);
    setFlag(ItemStopsFocusHandling);
    setStyleName(u"TextMenu"_s);
    m_fade.setStartValue(0.05); // what cannot be seen at all cannot be tapped either
    m_fade.setEndValue(1.0);
    m_fade.setDuration(Theme::instance()->motion(fadeMilliseconds));
    m_fade.start();
}

TextMenu::~TextMenu() = default;

qreal TextMenu::cellWidth(int index) const
{
    const QMarginsF margins = style().margins;
    return std::max(style().number(u"cell"_s, 72),
                    std::ceil(QFontMetricsF(style().font).horizontalAdvance(m_actions.at(index)->text()))
                        + margins.left() + margins.right());
}

QSizeF TextMenu::wanted(bool upright) const
{
    const qreal row = style().number(u"row"_s, 64);
    QSizeF size(0, upright ? row * qreal(m_actions.size()) : row);
    for (int index = 0; index < m_actions.size(); ++index)
        size.setWidth(upright ? std::max(size.width(), cellWidth(index)) : size.width() + cellWidth(index));
    return size;
}

void TextMenu::place(const QRectF &anchor, const QRectF &room)
{
    const QRectF area = room.adjusted(edge, edge, -edge, -edge);
    m_upright = wanted(false).width() > area.width();
    const QSizeF size = wanted(m_upright).boundedTo(area.size());
    const auto within = [](qreal wish, qreal from, qreal to) { return std::max(from, std::min(wish, to)); };
    const qreal x = within(anchor.center().x() - size.width() / 2, area.left(), area.right() - size.width());
    qreal y = anchor.top() - edge - size.height();
    if (y < area.top())
        y = anchor.bottom() + edge;
    y = within(y, area.top(), area.bottom() - size.height());
    setGeometry(QRectF(QPointF(x, y).toPoint(), size));
}

QRectF TextMenu::cell(int index) const
{
    const qreal row = style().number(u"row"_s, 64);
    if (m_upright)
        return {0, row * index, size().width(), row};
    qreal x = 0;
    for (int before = 0; before < index; ++before)
        x += cellWidth(before);
    const qreal width = cellWidth(index);
    if (layoutDirection() == Qt::RightToLeft)
        x = size().width() - x - width;
    return {x, 0, width, row};
}

int TextMenu::cellAt(const QPointF &position) const
{
    for (int index = 0; index < m_actions.size(); ++index) {
        if (cell(index).contains(position))
            return index;
    }
    return -1;
}

QSizeF TextMenu::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    return which == Qt::PreferredSize ? wanted(m_upright) : Widget::sizeHint(which, constraint);
}

void TextMenu::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const QColor line = style().color(u"pressed"_s);
    fillRounded(painter, rect(), style().radius, line);
    fillRounded(painter, rect().adjusted(1, 1, -1, -1), style().radius - 1, style().color(u"background"_s));
    painter->setFont(style().font);
    const QFontMetricsF metrics(style().font);
    for (int index = 0; index < m_actions.size(); ++index) {
        const QRectF place = cell(index);
        if (index == m_current)
            fillRounded(painter, place.adjusted(pressedMargin, pressedMargin, -pressedMargin, -pressedMargin),
                        style().radius - pressedMargin, line);
        if (index > 0 && m_upright)
            painter->fillRect(QRectF(place.x() + lineMargin, place.y(), place.width() - 2 * lineMargin, 1),
                              line);
        else if (index > 0)
            painter->fillRect(QRectF(layoutDirection() == Qt::RightToLeft ? place.right() : place.left(),
                                     place.y() + lineMargin, 1, place.height() - 2 * lineMargin),
                              line);
        painter->setPen(style().color(u"text"_s));
        painter->drawText(place, Qt::AlignCenter,
                          metrics.elidedText(m_actions.at(index)->text(), Qt::ElideRight, place.width()));
    }
}

void TextMenu::setCurrent(int index)
{
    if (m_current == index)
        return;
    m_current = index;
    update();
    Q_EMIT currentChanged(index);
}

QAccessibleInterface *TextMenu::createAccessible()
{
    return new AccessibleParted(this, this);
}

AccessiblePart TextMenu::accessiblePart(int index) const
{
    const QAction *action = m_actions.value(index);
    if (action == nullptr)
        return {};
    return {QAccessible::MenuItem, action->text(), cell(index), action->isEnabled()};
}

void TextMenu::activateAccessiblePart(int index)
{
    if (isVisible() && m_actions.value(index) != nullptr)
        trigger(index);
}

void TextMenu::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    setCurrent(cellAt(event->pos()));
}

void TextMenu::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    setCurrent(cellAt(event->pos()));
}

void TextMenu::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const int index = cellAt(event->pos());
    setCurrent(-1);
    if (index >= 0)
        trigger(index);
}

void TextMenu::trigger(int index)
{
    const QPointer<TextMenu> alive(this);
    m_actions.at(index)->trigger();
    if (alive != nullptr)
        Q_EMIT finished();
}

void TextMenu::step(int direction)
{
    const int count = int(m_actions.size());
    if (m_current < 0)
        setCurrent(direction > 0 ? 0 : count - 1);
    else
        setCurrent((m_current + direction + count) % count);
}

bool TextMenu::handleKey(const QKeyEvent *event)
{
    // The arrows move as the eye sees it.
    const int right = layoutDirection() == Qt::RightToLeft && !m_upright ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Down:
        step(event->key() == Qt::Key_Right ? right : 1);
        return true;
    case Qt::Key_Left:
    case Qt::Key_Up:
        step(event->key() == Qt::Key_Left ? -right : -1);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (m_current < 0)
            return false;
        trigger(m_current);
        return true;
    case Qt::Key_Escape:
    case Qt::Key_Back:
        Q_EMIT finished();
        return true;
    default:
        return false;
    }
}

} // namespace toolkit
