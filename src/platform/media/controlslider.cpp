// SPDX-License-Identifier: GPL-3.0-or-later
#include "controlslider.h"

#include <platform/toolkit/painthelpers.h>
#include <platform/toolkit/scenepress.h>

#include <QFocusEvent>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr qreal HeldKnob = 1.15; // of its size
constexpr qreal MarkWidth = 3;
constexpr qreal SectionHeight = 18;
constexpr qreal SectionEndWidth = 4;
constexpr qreal RingGap = 5;

// How much of a finger's way the knob goes, by the finger's distance from the line.
qreal refinement(qreal distance)
{
    constexpr qreal Near = 64;
    constexpr qreal Step = 72;
    return distance < Near ? 1 : distance < Near + Step ? 0.5 : distance < Near + 2 * Step ? 0.25 : 0.1;
}

} // namespace

ControlSlider::ControlSlider(QGraphicsItem *parent) : Widget(parent)
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setFocusPolicy(Qt::TabFocus);
}

ControlSlider::~ControlSlider() = default;

void ControlSlider::setValue(qreal value)
{
    if (!m_held)
        moveTo(value);
}

void ControlSlider::setMetrics(qreal lineHeight, qreal knobSize)
{
    m_lineHeight = lineHeight;
    m_knobSize = knobSize;
    update();
}

void ControlSlider::setColors(const QColor &track, const QColor &filled)
{
    m_track = track;
    m_filled = filled;
    update();
}

void ControlSlider::setScale(qreal whole, qreal step)
{
    m_whole = whole;
    m_step = step;
}

QString ControlSlider::valueText() const
{
    return m_words ? m_words() : QString();
}

void ControlSlider::tellValue()
{
    toolkit::AccessibleValue::valueChanged(this, currentValue());
}

QAccessibleInterface *ControlSlider::createAccessible()
{
    return new toolkit::AccessibleValue(this, this);
}

// As if a finger took the knob there and let it go.
void ControlSlider::changeValue(qreal value)
{
    if (m_held || m_whole <= 0)
        return;
    Q_EMIT pressed();
    moveTo(value / m_whole);
    Q_EMIT dragged(m_value);
    Q_EMIT released(m_value);
}

void ControlSlider::moveTo(qreal value)
{
    value = qBound(0.0, value, 1.0);
    // Less than a quarter of a pixel is not to be seen; a finger that drags adds it up.
    const bool seen = m_held || qAbs(value - m_value) * size().width() >= 0.25;
    if (value == m_value || (!seen && value != 0 && value != 1))
        return;
    m_value = value;
    update();
}

qreal ControlSlider::onLine(qreal x) const
{
    return qBound(m_knobSize / 2, x, qMax(m_knobSize / 2, size().width() - m_knobSize / 2));
}

qreal ControlSlider::valueAt(qreal x) const
{
    const qreal way = size().width() - m_knobSize;
    const qreal part = way > 0 ? (onLine(x) - m_knobSize / 2) / way : 0;
    return isMirrored() ? 1 - part : part;
}

// Where the knob's middle stands for a value.
qreal ControlSlider::placeOf(qreal value) const
{
    const qreal way = size().width() - m_knobSize;
    return m_knobSize / 2 + way * (isMirrored() ? 1 - value : value);
}

qreal ControlSlider::knobPosition() const
{
    return placeOf(m_value);
}

void ControlSlider::setMarks(const QList<qreal> &marks)
{
    if (m_marks == marks)
        return;
    m_marks = marks;
    update();
}

void ControlSlider::setSection(const std::optional<LinePart> &section)
{
    if (m_section == section)
        return;
    m_section = section;
    update();
}

void ControlSlider::setSectionColors(const QColor &band, const QColor &ends)
{
    m_sectionBand = band;
    m_sectionEnds = ends;
    update();
}

void ControlSlider::paintSection(QPainter *painter) const
{
    const qreal ends[] = {placeOf(m_section->start), placeOf(m_section->end)};
    const auto [left, right] = std::minmax(ends[0], ends[1]);
    toolkit::fillRounded(painter,
                         {left - SectionEndWidth / 2, (size().height() - SectionHeight) / 2,
                          right - left + SectionEndWidth, SectionHeight},
                         SectionEndWidth / 2, m_sectionBand);
}

void ControlSlider::paintSectionEnds(QPainter *painter) const
{
    for (const qreal end : {m_section->start, m_section->end})
        toolkit::fillRounded(painter,
                             {placeOf(end) - SectionEndWidth / 2, (size().height() - SectionHeight) / 2,
                              SectionEndWidth, SectionHeight},
                             SectionEndWidth / 2, m_sectionEnds);
}

void ControlSlider::setKnobShown(bool shown)
{
    m_knobShown = shown;
    update();
}

void ControlSlider::paintLine(QPainter *painter, const QRectF &line) const
{
    QPainterPath parts;
    parts.addRoundedRect(line, m_lineHeight / 2, m_lineHeight / 2);
    for (const qreal mark : m_marks) {
        QPainterPath gap;
        gap.addRect(placeOf(mark) - MarkWidth / 2, line.top(), MarkWidth, line.height());
        parts -= gap;
    }
    painter->fillPath(parts, m_track);
    if (!m_knobShown && m_value <= 0)
        return;
    QRectF filled = line;
    if (isMirrored())
        filled.setLeft(knobPosition());
    else
        filled.setRight(knobPosition());
    painter->save();
    painter->setClipRect(filled, Qt::IntersectClip);
    painter->fillPath(parts, m_filled);
    painter->restore();
}

void ControlSlider::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    const qreal middle = size().height() / 2;
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    if (m_section)
        paintSection(painter);
    paintLine(painter, QRectF(0, middle - m_lineHeight / 2, size().width(), m_lineHeight));
    if (m_section)
        paintSectionEnds(painter);
    if (!m_knobShown)
        return;
    const QPointF knob(knobPosition(), middle);
    const qreal radius = m_knobSize / 2 * (m_held ? HeldKnob : 1);
    painter->setBrush(m_held ? m_filled.lighter(120) : m_filled);
    painter->drawEllipse(knob, radius, radius);
    if (m_keyboardFocus && hasFocus()) {
        const qreal ring = radius + RingGap;
        toolkit::drawFocus(painter, QRectF(knob.x() - ring, knob.y() - ring, 2 * ring, 2 * ring), ring,
                           m_focusColor);
    }
}

void ControlSlider::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    m_held = true;
    m_keyboardFocus = false;
    m_finger = event->pos();
    event->accept();
    Q_EMIT pressed();
    moveTo(valueAt(event->pos().x()));
    update();
    Q_EMIT dragged(m_value);
}

void ControlSlider::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (!m_held)
        return;
    const QPointF from = std::exchange(m_finger, event->pos());
    const qreal finer = m_refining ? refinement(qAbs(m_finger.y() - size().height() / 2)) : 1;
    const qreal before = m_value;
    moveTo(m_value + (valueAt(m_finger.x()) - valueAt(from.x())) * finer);
    if (m_value != before)
        Q_EMIT dragged(m_value);
}

void ControlSlider::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    Q_UNUSED(event)
    if (toolkit::isCancellingScenePress()) {
        cancel();
        return;
    }
    if (!std::exchange(m_held, false))
        return;
    update();
    Q_EMIT released(m_value);
}

// The finger was taken away by something else: a dialog, a gesture of the system.
void ControlSlider::ungrabMouseEvent(QEvent *event)
{
    Widget::ungrabMouseEvent(event);
    cancel();
}

void ControlSlider::cancel()
{
    if (!std::exchange(m_held, false))
        return;
    update();
    Q_EMIT cancelled();
}

void ControlSlider::focusInEvent(QFocusEvent *event)
{
    Widget::focusInEvent(event);
    m_keyboardFocus = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    update();
}

void ControlSlider::focusOutEvent(QFocusEvent *event)
{
    Widget::focusOutEvent(event);
    update();
}
