// SPDX-License-Identifier: GPL-3.0-or-later
#include "menu.h"

#include "accessibility.h"
#include "action.h"
#include "applicationwindow.h"
#include "painthelpers.h"

#include <QFontMetricsF>
#include <QGraphicsSceneHoverEvent>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QtMath>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal edgeMargin = 8; // to the edges of the screen
constexpr qreal textMargin = 28;
constexpr qreal lineMargin = 20;
constexpr qreal leastScale = 0.85; // that it grows from

} // namespace

Menu::Menu(QGraphicsItem *parent) : Popup(parent)
{
    setAcceptHoverEvents(true);
    setStyleName(u"ObjectMenu"_s);
    // The style's size is that of the rows, not of what is dimmed around them.
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
}

void Menu::setPoint(const QPointF &point)
{
    m_point = point;
    update();
}

void Menu::setEntries(const QList<QAction *> &entries)
{
    for (const QPointer<QAction> &old : std::as_const(m_entries)) {
        if (old != nullptr)
            disconnect(old, nullptr, this, nullptr);
    }
    m_entries.clear();
    for (QAction *action : entries) {
        m_entries.append(action);
        connect(action, &QAction::changed, this, [this] { update(); });
    }
    m_current = -1;
    m_pressed = false;
}

void Menu::disappear(Appearance appearance)
{
    close([this] { Q_EMIT closed(); }, Free::Now, appearance);
}

void Menu::escape()
{
    disappear();
}

QAction *Menu::entry(int index) const
{
    return m_entries.value(index);
}

void Menu::setCurrentEntry(int index)
{
    if (m_current == index)
        return;
    m_current = index;
    update();
    accessibility::focusMoved(this);
    Q_EMIT currentEntryChanged(index);
}

QAccessibleInterface *Menu::createAccessible()
{
    return new AccessibleParted(this, this);
}

AccessiblePart Menu::accessiblePart(int index) const
{
    const QAction *action = entry(index);
    if (action == nullptr)
        return {QAccessible::MenuItem, QString(), entryRect(index), false};
    return {QAccessible::MenuItem, action->text(), entryRect(index), action->isEnabled()};
}

void Menu::chooseEntry(int index)
{
    QAction *action = entry(index);
    if (action == nullptr || !action->isEnabled() || !isActive())
        return;
    close(
        [this, action] {
            // What the action opens finds the focus where the person left it.
            giveFocusBack();
            const QPointer<Menu> alive(this);
            action->trigger();
            if (alive != nullptr)
                Q_EMIT closed();
        },
        Free::Now);
}

int Menu::motionMilliseconds() const
{
    return int(style().number(u"fade"_s, 160));
}

qreal Menu::rowHeight() const
{
    const qreal room = (size().height() - 2 * edgeMargin) / std::max<qreal>(1, qreal(m_entries.size()));
    const qreal text = QFontMetricsF(style().font).height() + 28;
    return std::min(room, std::max(style().number(u"row"_s, 64), text));
}

// Wider than the style says when the words need it.
qreal Menu::panelWidth() const
{
    qreal width = style().preferredSize.width() > 0 ? style().preferredSize.width() : 290;
    const QFontMetricsF metrics(style().font);
    for (const QPointer<QAction> &action : m_entries) {
        if (action != nullptr)
            width = std::max(width, qCeil(metrics.horizontalAdvance(action->text())) + 2 * textMargin);
    }
    return std::min(width, size().width() - 2 * edgeMargin);
}

QRectF Menu::panelRect() const
{
    const QSizeF own(panelWidth(), rowHeight() * qreal(m_entries.size()));
    const qreal x = layoutDirection() == Qt::RightToLeft ? m_point.x() - own.width() : m_point.x();
    const auto within = [](qreal wish, qreal length, qreal room) {
        return std::clamp(wish, edgeMargin, std::max(edgeMargin, room - length - edgeMargin));
    };
    return {within(x, own.width(), size().width()), within(m_point.y(), own.height(), size().height()),
            own.width(), own.height()};
}

QRectF Menu::entryRect(int index) const
{
    const QRectF area = panelRect();
    return {area.x(), area.y() + index * rowHeight(), area.width(), rowHeight()};
}

int Menu::rowAt(const QPointF &position) const
{
    for (int index = 0; index < m_entries.size(); ++index) {
        if (entryRect(index).contains(position))
            return index;
    }
    return -1;
}

void Menu::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Popup::paint(painter, option, widget);
    const QRectF area = panelRect();
    // It grows from the finger, also where it had to make room.
    const QPointF from(std::clamp(m_point.x(), area.left(), area.right()),
                       std::clamp(m_point.y(), area.top(), area.bottom()));
    const qreal scale = leastScale + (1 - leastScale) * progress();
    painter->setOpacity(painter->opacity() * progress());
    painter->translate(from);
    painter->scale(scale, scale);
    painter->translate(-from);
    const qreal radius = style().radius;
    const QColor line = style().color(u"line"_s, style().color(u"pressed"_s));
    fillRounded(painter, area, radius, line);
    fillRounded(painter, area.adjusted(1, 1, -1, -1), radius - 1, style().color(u"background"_s));
    for (int index = 0; index < m_entries.size(); ++index)
        paintRow(painter, index);
}

void Menu::paintRow(QPainter *painter, int index) const
{
    const QAction *action = entry(index);
    if (action == nullptr)
        return;
    const QRectF place = entryRect(index);
    const QColor pressed = style().color(u"pressed"_s);
    if (index > 0)
        painter->fillRect(QRectF(place.x() + lineMargin, place.y(), place.width() - 2 * lineMargin, 1),
                          style().color(u"line"_s, pressed));
    if (index == m_current)
        fillRounded(painter, place.adjusted(6, 5, -6, -4), style().radius - 6, pressed);
    QColor text = style().color(Action::isDestructive(action) ? u"danger"_s : u"text"_s);
    text.setAlphaF(action->isEnabled() ? 1.0F : 0.4F);
    painter->setPen(text);
    painter->setFont(style().font);
    painter->setLayoutDirection(action->text().isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const QRectF words = place.adjusted(textMargin, 0, -textMargin, 0);
    const Qt::Alignment side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    const QString shown
        = QFontMetricsF(style().font).elidedText(action->text(), Qt::ElideRight, words.width());
    painter->drawText(words, int(side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine), shown);
}

void Menu::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    Popup::mousePressEvent(event);
    m_pressed = true;
    setCurrentEntry(rowAt(event->pos()));
}

void Menu::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (m_pressed)
        setCurrentEntry(rowAt(event->pos()));
}

void Menu::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const int row = rowAt(event->pos());
    setCurrentEntry(-1);
    if (std::exchange(m_pressed, false) && row >= 0)
        chooseEntry(row);
    else
        Popup::mouseReleaseEvent(event);
}

void Menu::hoverMoveEvent(QGraphicsSceneHoverEvent *event)
{
    setCurrentEntry(rowAt(event->pos()));
}

void Menu::moveCurrent(int by)
{
    const int count = int(m_entries.size());
    if (count == 0)
        return;
    const int from = m_current < 0 ? (by > 0 ? -1 : count) : m_current;
    setCurrentEntry((from + by + count) % count);
}

bool Menu::focusNextPrevChild(bool next)
{
    moveCurrent(next ? 1 : -1);
    return true;
}

void Menu::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Home:
        setCurrentEntry(m_entries.isEmpty() ? -1 : 0);
        break;
    case Qt::Key_End:
        setCurrentEntry(int(m_entries.size()) - 1);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Select:
    case Qt::Key_Space:
        if (!event->isAutoRepeat())
            chooseEntry(m_current);
        break;
    case Qt::Key_Menu:
        if (!event->isAutoRepeat())
            escape();
        break;
    default:
        break; // the arrows and escape as in every popup
    }
    Popup::keyPressEvent(event);
}

} // namespace toolkit
