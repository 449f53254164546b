// SPDX-License-Identifier: GPL-3.0-or-later
#include "panscroller.h"

#include "theme.h"

#include <QEasingCurve>
#include <QGraphicsObject>
#include <QScopedValueRollback>
#include <QScrollEvent>
#include <QScrollPrepareEvent>

namespace toolkit {

namespace {

// Logical pixels and logical pixels a second; QScroller wants metres.
constexpr qreal dragStart = 10;
constexpr qreal fastestFlick = 6000;
constexpr qreal slowestFlick = 120;

constexpr int scrollMilliseconds = 200;
constexpr int pullMilliseconds = 220;
constexpr qreal pullDepth = 24;

} // namespace

PanScroller::PanScroller(QGraphicsObject *target) : m_scroller(QScroller::scroller(target))
{
    connect(m_scroller, &QScroller::stateChanged, this, &PanScroller::stateChanged);
    m_pull.setStartValue(0.0);
    m_pull.setKeyValueAt(0.4, -pullDepth);
    m_pull.setEndValue(0.0);
    connect(&m_pull, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        if (m_pull.state() == QAbstractAnimation::Running)
            move(value.toReal());
    });
    connect(&m_pull, &QVariantAnimation::finished, this, [this] { move(0); });
}

void PanScroller::setMetrics(qreal viewWidth, qreal viewHeight, qreal contentHeight)
{
    m_viewWidth = viewWidth;
    m_viewHeight = viewHeight;
    m_contentHeight = contentHeight;
    if (m_scroller->state() != QScroller::Inactive)
        m_scroller->resendPrepareEvent();
    else if (m_position > maximum())
        setPosition(maximum());
}

void PanScroller::setPosition(qreal position)
{
    stop();
    m_startedScrolled = false;
    move(qBound(0.0, position, maximum()));
}

void PanScroller::scrollTo(qreal position, bool byUser)
{
    const qreal to = qBound(0.0, position, maximum());
    const int milliseconds = Theme::instance()->motion(scrollMilliseconds);
    m_pull.stop();
    if (milliseconds == 0) {
        setPosition(to);
        return;
    }
    m_byUser = byUser;
    updateProperties();
    m_startedScrolled = true; // no animated scrolling is a pull
    m_scroller->scrollTo(QPointF(0, to), milliseconds);
}

qreal PanScroller::target() const
{
    return m_scroller->state() == QScroller::Scrolling
        ? qBound(0.0, m_scroller->finalPosition().y(), maximum())
        : m_position;
}

void PanScroller::pull()
{
    if (m_pull.state() == QAbstractAnimation::Running || m_scroller->state() == QScroller::Dragging)
        return;
    const int milliseconds = Theme::instance()->motion(pullMilliseconds);
    if (milliseconds > 0) {
        m_pull.setDuration(milliseconds);
        m_pull.start();
        return;
    }
    // Nothing is seen to move, but those who wait for a pull learn of it.
    m_startedScrolled = false;
    move(-pullDepth);
    move(0);
}

bool PanScroller::isMoving() const
{
    return m_scroller->state() == QScroller::Scrolling;
}

bool PanScroller::input(QScroller::Input input, const QPointF &position, qint64 milliseconds)
{
    if (input == QScroller::InputPress) {
        m_pull.stop();
        updateProperties();
        m_byUser = true;
        m_startedScrolled = m_position > 0;
    }
    return m_scroller->handleInput(input, position, milliseconds);
}

void PanScroller::stop()
{
    m_pull.stop();
    m_scroller->stop();
}

bool PanScroller::scrollEvent(QEvent *event)
{
    if (event->type() == QEvent::ScrollPrepare) {
        auto *prepare = static_cast<QScrollPrepareEvent *>(event);
        prepare->setViewportSize(QSizeF(m_viewWidth, m_viewHeight));
        prepare->setContentPosRange(QRectF(0, 0, 0, maximum()));
        prepare->setContentPos(QPointF(0, qBound(0.0, m_position, maximum())));
        prepare->accept();
        return true;
    }
    if (event->type() == QEvent::Scroll) {
        auto *scroll = static_cast<QScrollEvent *>(event);
        move(scroll->contentPos().y() + scroll->overshootDistance().y());
        return true;
    }
    return false;
}

// In logical pixels on any screen; at the first press only is the screen known.
void PanScroller::updateProperties()
{
    const qreal perMeter
        = m_scroller->pixelPerMeter().y() > 0 ? m_scroller->pixelPerMeter().y() : 96 / 0.0254;
    const bool still = Theme::instance()->reducedMotion();
    QScrollerProperties properties = m_scroller->scrollerProperties();
    const auto set = [&properties](QScrollerProperties::ScrollMetric metric, const QVariant &value) {
        properties.setScrollMetric(metric, value);
    };
    const auto off = QVariant::fromValue(QScrollerProperties::OvershootAlwaysOff);
    set(QScrollerProperties::HorizontalOvershootPolicy, off);
    set(QScrollerProperties::VerticalOvershootPolicy,
        still ? off : QVariant::fromValue(QScrollerProperties::OvershootAlwaysOn));
    set(QScrollerProperties::DragStartDistance, dragStart / perMeter);
    set(QScrollerProperties::MaximumVelocity, fastestFlick / perMeter);
    set(QScrollerProperties::MinimumVelocity, slowestFlick / perMeter);
    // A press on a moving content always stops it.
    set(QScrollerProperties::MaximumClickThroughVelocity, 0.0);
    set(QScrollerProperties::DragVelocitySmoothingFactor, 0.6);
    set(QScrollerProperties::DecelerationFactor, 0.25);
    set(QScrollerProperties::OvershootDragResistanceFactor, 0.35);
    set(QScrollerProperties::OvershootScrollDistanceFactor, 0.15);
    set(QScrollerProperties::OvershootDragDistanceFactor, 0.4);
    set(QScrollerProperties::OvershootScrollTime, 0.45);
    set(QScrollerProperties::AxisLockThreshold, 0.6);
    set(QScrollerProperties::FrameRate, QVariant::fromValue(QScrollerProperties::Fps60));
    if (properties != m_scroller->scrollerProperties())
        m_scroller->setScrollerProperties(properties);
}

void PanScroller::stateChanged(QScroller::State state)
{
    setPanning(m_byUser && (state == QScroller::Dragging || state == QScroller::Scrolling));
    if (state == QScroller::Inactive) {
        m_startedScrolled = false;
        report();
        m_byUser = true;
    }
}

void PanScroller::move(qreal position)
{
    if (position != m_position) {
        m_position = position;
        Q_EMIT moved(position);
    }
    report();
}

// A fling that arrives at the top passes exactly 0 on its way into the over-shoot; that must not look like a
// pull, which goes from 0 to below. So 0 is told only when the movement ends there.
void PanScroller::report()
{
    if (m_startedScrolled && m_position == 0 && m_scroller->state() != QScroller::Inactive)
        return;
    if (m_reporting || m_position == m_reported)
        return;
    const QScopedValueRollback guard(m_reporting, true);
    // A receiver may set another position: it hears of that after it is done with this one.
    while (m_position != m_reported) {
        m_reported = m_position;
        Q_EMIT positionChanged(m_reported);
    }
}

void PanScroller::setPanning(bool panning)
{
    if (m_panning == panning)
        return;
    m_panning = panning;
    if (panning)
        Q_EMIT panningStarted();
    else
        Q_EMIT panningStopped();
}

} // namespace toolkit
