// SPDX-License-Identifier: GPL-3.0-or-later
#include "spinner.h"

#include "theme.h"

#include <QPainter>
#include <QTimerEvent>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int frameInterval = 16;
constexpr int sixteenths = 16; // of a degree, as the painter counts
constexpr int arc = 270;

} // namespace

Spinner::Spinner(QGraphicsItem *parent) : Widget(parent)
{
    setStyleName(u"CommonSmallSpinner"_s);
    connect(this, &Widget::displayEntered, this, &Spinner::updateTimer);
    connect(this, &Widget::displayExited, this, &Spinner::updateTimer);
}

Spinner::~Spinner() = default;

void Spinner::setUnknownDuration(bool unknown)
{
    m_unknownDuration = unknown;
    updateTimer();
    update();
}

void Spinner::reset()
{
    m_angle = 0;
    setUnknownDuration(false);
}

void Spinner::updateTimer()
{
    const bool turns
        = m_unknownDuration && isOnDisplay() && isVisible() && !Theme::instance()->reducedMotion();
    if (turns == (m_timer != 0))
        return;
    if (turns) {
        m_clock.start();
        m_timer = startTimer(frameInterval);
    } else {
        killTimer(m_timer);
        m_timer = 0;
    }
}

// Motion may be reduced, or wanted again, while it turns.
void Spinner::applyStyle()
{
    Widget::applyStyle();
    updateTimer();
}

QVariant Spinner::itemChange(GraphicsItemChange change, const QVariant &value)
{
    const QVariant result = Widget::itemChange(change, value);
    if (change == ItemVisibleHasChanged)
        updateTimer();
    return result;
}

void Spinner::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer) {
        Widget::timerEvent(event);
        return;
    }
    m_angle = std::fmod(m_angle + 360.0 * double(m_clock.restart()) / style().number(u"turn"_s, 1000), 360.0);
    update();
}

void Spinner::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const qreal stroke = style().number(u"stroke"_s, 4);
    const QRectF content = contentsRect();
    const qreal side = std::min(content.width(), content.height()) - stroke;
    const QRectF ring(content.center() - QPointF(side, side) / 2, QSizeF(side, side));
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(style().color(u"track"_s), stroke));
    painter->drawEllipse(ring);
    if (!m_unknownDuration)
        return;
    painter->setPen(QPen(style().color(u"accent"_s), stroke, Qt::SolidLine, Qt::RoundCap));
    painter->drawArc(ring, qRound((90 - m_angle) * sixteenths), -(360 - arc) * sixteenths);
}

} // namespace toolkit
