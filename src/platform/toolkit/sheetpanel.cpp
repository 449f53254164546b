// SPDX-License-Identifier: GPL-3.0-or-later
#include "sheetpanel.h"

#include "painthelpers.h"
#include "scenepress.h"

#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

SheetPanel::SheetPanel(QGraphicsItem *parent) : Widget(parent)
{
    setAcceptedMouseButtons(Qt::LeftButton);
    setFiltersChildEvents(true);
    setStyleName(u"SheetPanel"_s);
    m_clock.start();
}

void SheetPanel::setRounded(bool rounded)
{
    if (m_rounded == rounded)
        return;
    m_rounded = rounded;
    update();
    Q_EMIT groundChanged();
}

QColor SheetPanel::ground() const
{
    const QColor background = style().color(u"background"_s);
    return m_rounded ? background : style().color(u"full"_s, background);
}

void SheetPanel::applyStyle()
{
    Widget::applyStyle();
    Q_EMIT groundChanged();
}

void SheetPanel::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    if (!m_rounded) {
        painter->fillRect(rect(), ground());
        return;
    }
    // Below it ends at the edge of the scene: only the upper corners are seen.
    const qreal radius = style().radius;
    painter->setClipRect(rect(), Qt::IntersectClip);
    fillRounded(painter, rect().adjusted(0, 0, 0, radius), radius, style().color(u"line"_s, ground()));
    fillRounded(painter, rect().adjusted(1, 1, -1, radius), radius - 1, ground());
}

qint64 SheetPanel::time(const QGraphicsSceneMouseEvent *event) const
{
    return event->timestamp() != 0 ? qint64(event->timestamp()) : m_clock.elapsed();
}

void SheetPanel::press(const QGraphicsSceneMouseEvent *event)
{
    const qreal y = mapFromScene(event->scenePos()).y();
    if (m_draggable && (m_dragHeight < 0 || y <= m_dragHeight))
        m_drag.press(event->scenePos(), time(event));
    else
        m_drag.cancel();
}

bool SheetPanel::move(const QGraphicsSceneMouseEvent *event)
{
    const bool wasDragging = m_drag.isDragging();
    if (!m_drag.move(event->scenePos(), time(event)))
        return false;
    if (!wasDragging && scene()->mouseGrabberItem() != this) {
        // From here on this is no tap on what lies beneath the finger.
        cancelScenePress(scene());
        grabMouse();
    }
    Q_EMIT dragged(m_drag.distance());
    return true;
}

bool SheetPanel::release(const QGraphicsSceneMouseEvent *event)
{
    if (isCancellingScenePress()) {
        // Somebody takes the finger away from all of us.
        if (scene()->mouseGrabberItem() == this)
            ungrabMouse();
        return false;
    }
    if (!m_drag.isDragging()) {
        m_drag.cancel();
        return false;
    }
    const bool closes = m_drag.release(size().height(), time(event));
    if (scene()->mouseGrabberItem() == this)
        ungrabMouse();
    Q_EMIT dragEnded(closes);
    return true;
}

bool SheetPanel::mouse(QEvent *event)
{
    const auto of = [event] { return static_cast<QGraphicsSceneMouseEvent *>(event); };
    switch (event->type()) {
    case QEvent::GraphicsSceneMousePress:
    case QEvent::GraphicsSceneMouseDoubleClick:
        if (m_leaving)
            return true;
        press(of());
        return false;
    case QEvent::GraphicsSceneMouseMove:
        return move(of());
    case QEvent::GraphicsSceneMouseRelease:
        return release(of());
    default:
        return false;
    }
}

bool SheetPanel::sceneEventFilter(QGraphicsItem *, QEvent *event)
{
    return mouse(event);
}

void SheetPanel::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    if (!m_leaving)
        press(event);
    event->accept();
}

void SheetPanel::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    move(event);
}

void SheetPanel::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    release(event);
}

void SheetPanel::ungrabMouseEvent(QEvent *)
{
    // Something took the finger away in mid-drag: the sheet springs back.
    if (!m_drag.isDragging())
        return;
    m_drag.cancel();
    Q_EMIT dragEnded(false);
}

} // namespace toolkit
