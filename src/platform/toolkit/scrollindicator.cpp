// SPDX-License-Identifier: GPL-3.0-or-later
#include "scrollindicator.h"

#include "theme.h"

#include <QPainter>

namespace toolkit {

namespace {

constexpr int restMilliseconds = 1200;
constexpr int fadeMilliseconds = 240;
constexpr qreal inset = 8; // from the viewport's ends
constexpr qreal shortest = 40;

} // namespace

ScrollIndicator::ScrollIndicator(QGraphicsItem *parent) : QGraphicsObject(parent), m_fade(this, "opacity")
{
    setAcceptedMouseButtons(Qt::NoButton);
    setZValue(1);
    setOpacity(0);
    m_rest.setSingleShot(true);
    m_fade.setEndValue(0.0);
    connect(&m_rest, &QTimer::timeout, this, [this] {
        m_fade.setDuration(Theme::instance()->motion(fadeMilliseconds));
        m_fade.start();
    });
}

void ScrollIndicator::setBar(const QRectF &bar, const QColor &color)
{
    if (bar == m_bar && color == m_color)
        return;
    prepareGeometryChange();
    m_bar = bar;
    m_color = color;
    update();
}

void ScrollIndicator::wake()
{
    if (m_bar.isEmpty())
        return;
    m_fade.stop();
    setOpacity(1);
    m_rest.start(restMilliseconds);
}

void ScrollIndicator::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->setPen(Qt::NoPen);
    painter->setBrush(m_color);
    const qreal radius = m_bar.width() / 2;
    painter->drawRoundedRect(m_bar, radius, radius);
}

QRectF ScrollIndicator::barFor(const QSizeF &viewport, qreal contentHeight, qreal position, qreal width,
                               qreal margin, bool mirrored)
{
    const qreal height = viewport.height();
    const qreal track = height - 2 * inset;
    if (contentHeight <= height || track <= 0)
        return {};
    const qreal length = qBound(qMin(shortest, track), track * height / contentHeight, track);
    const qreal maximum = contentHeight - height;
    // Beyond an end the bar is pressed together.
    const qreal beyond = position < 0 ? -position : qMax(0.0, position - maximum);
    const qreal squeezed = qMax(2 * width, length - beyond);
    const qreal progress = qBound(0.0, position / maximum, 1.0);
    return {mirrored ? margin : viewport.width() - margin - width, inset + (track - squeezed) * progress,
            width, squeezed};
}

} // namespace toolkit
