// SPDX-License-Identifier: GPL-3.0-or-later
#include "pangesture.h"

#include "panscroller.h"
#include "scenepress.h"
#include "theme.h"

#include <QGraphicsObject>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>

#include <cmath>

namespace toolkit {

namespace {

constexpr qreal pullDistance = 24; // of a finger, where nothing moves with it

} // namespace

PanGesture::PanGesture(QGraphicsObject *viewport, PanScroller *scroller)
    : m_viewport(viewport),
      m_scroller(scroller)
{
    m_clock.start();
}

QPointF PanGesture::local(const QGraphicsSceneMouseEvent *event) const
{
    return m_viewport->mapFromScene(event->scenePos());
}

qint64 PanGesture::time(const QGraphicsSceneMouseEvent *event) const
{
    return event->timestamp() != 0 ? qint64(event->timestamp()) : m_clock.elapsed();
}

bool PanGesture::mouse(QEvent *event)
{
    const auto of = [event] { return static_cast<QGraphicsSceneMouseEvent *>(event); };
    switch (event->type()) {
    case QEvent::GraphicsSceneMousePress:
    case QEvent::GraphicsSceneMouseDoubleClick:
        return of()->button() == Qt::LeftButton && press(of());
    case QEvent::GraphicsSceneMouseMove:
        return move(of());
    case QEvent::GraphicsSceneMouseRelease:
        return of()->button() == Qt::LeftButton && release(of());
    default:
        return false;
    }
}

bool PanGesture::press(const QGraphicsSceneMouseEvent *event)
{
    if (!m_enabled)
        return false;
    // The same press comes by again on its way through the items beneath the finger.
    if (m_state != State::None && event->timestamp() == m_pressedAt && local(event) == m_pressed)
        return m_state == State::Panning;
    if (m_state != State::None)
        m_scroller->stop(); // what held the press before is gone, and its release with it
    m_pressedAt = event->timestamp();
    m_pressed = local(event);
    m_pulled = false;
    const bool stopped = m_scroller->isMoving();
    m_scroller->input(QScroller::InputPress, m_pressed, time(event));
    m_state = State::Undecided;
    if (stopped) {
        // The content does not hear of this press at all.
        m_state = State::Panning;
        m_viewport->grabMouse();
    }
    return stopped;
}

bool PanGesture::move(const QGraphicsSceneMouseEvent *event)
{
    if (m_state == State::None || m_state == State::Passed)
        return false;
    const QPointF position = local(event);
    m_scroller->input(QScroller::InputMove, position, time(event));
    pullWithoutMotion(position);
    if (m_state == State::Undecided && (m_scroller->isDragged() || m_pulled))
        takeOver();
    return m_state == State::Panning;
}

bool PanGesture::release(const QGraphicsSceneMouseEvent *event)
{
    const bool wasPanning = m_state == State::Panning;
    if (m_state == State::None || isCancellingScenePress()) {
        // Somebody takes the press away from all of us.
        if (m_state == State::Undecided) {
            m_state = State::Passed;
            m_scroller->stop();
        }
        return false;
    }
    m_scroller->input(QScroller::InputRelease, local(event), time(event));
    end();
    return wasPanning;
}

// From here on this is no tap.
void PanGesture::takeOver()
{
    m_state = State::Panning;
    if (m_viewport->scene() == nullptr || m_viewport->scene()->mouseGrabberItem() == m_viewport)
        return;
    cancelScenePress(m_viewport->scene());
    m_viewport->grabMouse();
}

void PanGesture::end()
{
    m_state = State::None;
    if (m_viewport->scene() != nullptr && m_viewport->scene()->mouseGrabberItem() == m_viewport)
        m_viewport->ungrabMouse();
}

void PanGesture::pullWithoutMotion(const QPointF &position)
{
    if (m_pulled || !Theme::instance()->reducedMotion() || m_scroller->position() > 0)
        return;
    const QPointF way = position - m_pressed;
    if (way.y() >= pullDistance && way.y() > std::abs(way.x())) {
        m_pulled = true;
        m_scroller->stop();
        m_scroller->pull();
    }
}

void PanGesture::lost()
{
    if (m_state == State::Panning)
        end();
}

} // namespace toolkit
