// SPDX-License-Identifier: GPL-3.0-or-later
#include "windowwatch.h"

#include <QLineF>
#include <QMouseEvent>
#include <QTouchEvent>

#include <algorithm>

namespace {

constexpr qreal Jitter = 3; // logical pixels; what shakes the table moves no pointer

bool hasTwoFingers(const QTouchEvent *event)
{
    return std::count_if(event->points().cbegin(), event->points().cend(),
                         [](const QEventPoint &point) { return point.state() != QEventPoint::Released; })
        > 1;
}

} // namespace

void WindowWatch::follow(toolkit::ApplicationWindow *window)
{
    QWindow *handle = window ? window->windowHandle() : nullptr;
    if (window == m_window && handle == m_handle)
        return;
    for (QObject *watched : {static_cast<QObject *>(m_window), static_cast<QObject *>(m_handle)}) {
        if (watched)
            watched->removeEventFilter(this);
    }
    if (m_window) {
        m_window->disconnect(this);
        m_window->viewport()->removeEventFilter(this);
    }
    m_window = window;
    m_handle = handle;
    m_pointer.reset();
    if (!window)
        return;
    window->installEventFilter(this);
    connect(window, &toolkit::ApplicationWindow::viewportReplaced, this, &WindowWatch::followViewport);
    followViewport();
}

// Also another native window, perhaps.
void WindowWatch::followViewport()
{
    m_handle = m_window->windowHandle();
    if (m_handle)
        m_handle->installEventFilter(this);
    m_window->viewport()->installEventFilter(this);
    m_window->viewport()->setMouseTracking(true);
}

bool WindowWatch::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
    case QEvent::Leave:
        if (m_window && watched == m_window->viewport())
            pointerEvent(event);
        break;
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
        if (watched != m_handle)
            break;
        m_pointer.reset();
        if (hasTwoFingers(static_cast<QTouchEvent *>(event)))
            Q_EMIT secondFinger();
        break;
    case QEvent::WindowDeactivate:
        if (watched == m_window)
            Q_EMIT focusLost();
        break;
    case QEvent::WindowStateChange:
        if (watched == m_window)
            Q_EMIT stateChanged();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

// A window that comes under a pointer at rest is told of it, too: only what comes after that is a movement.
void WindowWatch::pointerEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave) {
        m_pointer.reset();
        return;
    }
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (mouse->source() != Qt::MouseEventNotSynthesized)
        return;
    const QPointF position = m_window->mapToScene(mouse->position().toPoint());
    const bool moved = m_pointer && QLineF(*m_pointer, position).length() >= Jitter;
    if (!m_pointer || moved)
        m_pointer = position;
    if (moved && mouse->buttons() == Qt::NoButton)
        Q_EMIT pointerMoved();
}
