// SPDX-License-Identifier: GPL-3.0-or-later
#include "button.h"

#include "painthelpers.h"

#include <QFocusEvent>
#include <QFontMetricsF>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QtMath>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

class Button::Private
{
public:
    QString text;
    QString iconId;
    bool down = false;
    bool pressed = false; // the pointer or a key holds it, inside or not
    bool keyboardFocus = false; // shows the focus mark

    static bool activates(const QKeyEvent *event)
    {
        return event->key() == Qt::Key_Space || event->key() == Qt::Key_Return
            || event->key() == Qt::Key_Enter || event->key() == Qt::Key_Select;
    }
};

Button::Button(QGraphicsItem *parent) : Button(QString(), parent) { }

Button::Button(const QString &text, QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>())
{
    d->text = text;
    setFocusPolicy(Qt::TabFocus);
    setAcceptedMouseButtons(Qt::LeftButton);
    setStyleName(u"CommonButton"_s);
}

Button::~Button() = default;

void Button::setText(const QString &text)
{
    d->text = text;
    updateGeometry();
    update();
    Q_EMIT accessibleNameChanged();
}

QString Button::text() const
{
    return d->text;
}

void Button::setIconId(const QString &iconId)
{
    d->iconId = iconId;
    updateGeometry();
    update();
}

QString Button::iconId() const
{
    return d->iconId;
}

void Button::setAccessibleName(const QString &name)
{
    setToolTip(name);
    Widget::setAccessibleName(name);
}

QString Button::accessibleName() const
{
    const QString name = Widget::accessibleName();
    return name.isEmpty() ? d->text : name;
}

bool Button::isDown() const
{
    return d->down;
}

void Button::click()
{
    if (isEnabled())
        Q_EMIT clicked();
}

void Button::setDown(bool down)
{
    if (d->down == down)
        return;
    d->down = down;
    update();
    if (down)
        Q_EMIT pressed();
    else
        Q_EMIT released();
}

void Button::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const Style &look = style();
    QRectF plate = rect();
    const qreal plateSize = look.number(u"plate"_s);
    if (plateSize > 0) // a touch target larger than what is seen of it
        plate = QRectF(plate.center() - QPointF(plateSize, plateSize) / 2, QSizeF(plateSize, plateSize));
    fillRounded(painter, plate, look.radius, look.color(u"background"_s));
    if (d->down)
        fillRounded(painter, plate, look.radius, look.color(u"pressed"_s));
    drawOutline(painter, plate, look.radius, look.number(u"outlineWidth"_s), look.color(u"outline"_s));
    if (d->keyboardFocus && hasFocus())
        drawFocus(painter, plate, look.radius, look.color(u"focus"_s));

    const QColor disabled = look.color(u"disabled"_s, look.color(u"text"_s));
    const QColor iconColor = isEnabled() ? look.color(u"icon"_s) : disabled;
    const qreal iconSize = d->iconId.isEmpty() ? 0 : look.number(u"iconSize"_s, 32);
    if (d->text.isEmpty()) {
        const QPointF corner = rect().center() - QPointF(iconSize, iconSize) / 2;
        drawIcon(painter, d->iconId, QRectF(corner, QSizeF(iconSize, iconSize)), iconColor,
                 layoutDirection());
        return;
    }
    const QFontMetricsF metrics(look.font);
    QRectF content = contentsRect();
    const qreal gap = iconSize > 0 ? look.spacing : 0;
    const QString text = metrics.elidedText(d->text, Qt::ElideRight, content.width() - iconSize - gap);
    const qreal width = metrics.horizontalAdvance(text);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const qreal room = content.width() - width - iconSize - gap;
    qreal before = room / 2;
    if (!(look.alignment
          & Qt::AlignHCenter)) // at one side, as a row of a menu; the sides are those of left-to-right
        before = bool(look.alignment & Qt::AlignRight) != mirrored ? room : 0;
    const qreal left = content.left() + before;
    if (iconSize > 0) {
        const qreal x = mirrored ? left + width + gap : left;
        drawIcon(painter, d->iconId, QRectF(x, content.center().y() - iconSize / 2, iconSize, iconSize),
                 iconColor, layoutDirection());
    }
    painter->setFont(look.font);
    painter->setPen(isEnabled() ? look.color(u"text"_s) : disabled);
    // The words keep their own direction, and with it the end where they are elided.
    painter->setLayoutDirection(d->text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    const QRectF place(mirrored ? left : left + iconSize + gap, content.top(), width + 1, content.height());
    painter->drawText(place, Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine, text);
}

QSizeF Button::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which != Qt::PreferredSize)
        return Widget::sizeHint(which, constraint);
    const QFontMetricsF metrics(style().font);
    const QMarginsF around = style().margins;
    const qreal icon = d->iconId.isEmpty() ? 0 : style().number(u"iconSize"_s, 32);
    const qreal text = d->text.isEmpty() ? 0 : qCeil(metrics.horizontalAdvance(d->text)) + 1;
    const qreal gap = icon > 0 && text > 0 ? style().spacing : 0;
    return {icon + gap + text + around.left() + around.right(),
            std::max(icon, text > 0 ? metrics.height() : 0) + around.top() + around.bottom()};
}

void Button::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    d->pressed = true;
    d->keyboardFocus = false;
    setDown(true);
}

void Button::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (d->pressed)
        setDown(rect().contains(event->pos()));
}

void Button::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    const bool hit = d->pressed && rect().contains(event->pos());
    d->pressed = false;
    setDown(false);
    if (hit)
        click();
}

void Button::keyPressEvent(QKeyEvent *event)
{
    if (!Private::activates(event)) {
        Widget::keyPressEvent(event);
        return;
    }
    if (!event->isAutoRepeat())
        setDown(true);
}

void Button::keyReleaseEvent(QKeyEvent *event)
{
    if (!Private::activates(event)) {
        Widget::keyReleaseEvent(event);
        return;
    }
    if (event->isAutoRepeat() || !d->down)
        return;
    setDown(false);
    click();
}

void Button::focusInEvent(QFocusEvent *event)
{
    Widget::focusInEvent(event);
    d->keyboardFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
}

void Button::focusOutEvent(QFocusEvent *event)
{
    Widget::focusOutEvent(event);
    setDown(false);
    update();
}

bool Button::event(QEvent *event)
{
    // The press became something else (a pan), or the button can no longer be used.
    if (event->type() == QEvent::UngrabMouse || event->type() == QEvent::EnabledChange) {
        d->pressed = false;
        setDown(false);
        update();
    }
    return Widget::event(event);
}

IconButton::IconButton(const QString &iconId, QGraphicsItem *parent) : Button(parent)
{
    setViewType(u"icon"_s);
    setIconId(iconId);
}

} // namespace toolkit
