// SPDX-License-Identifier: GPL-3.0-or-later
#include "videogestures.h"

#include <QGuiApplication>
#include <QLineF>
#include <QRectF>
#include <QStyleHints>

#include <cmath>

namespace {

constexpr int LongPress = 500; // ms
constexpr qreal StillFinger = 12; // what one that rests may wander
constexpr qreal SameSpot = 48; // between the taps of a double tap

} // namespace

VideoGestures::VideoGestures(QObject *parent) : QObject(parent)
{
    m_longPress.setObjectName(QStringLiteral("longPress"));
    m_longPress.setParent(this);
    m_longPress.setSingleShot(true);
    m_longPress.setInterval(LongPress);
    connect(&m_longPress, &QTimer::timeout, this, [this] { beginFast(); });
}

// Two fingers' taps lie further apart than two clicks, which is all that the window system looks for.
bool VideoGestures::isOnTime(const QPointF &position, quint64 time) const
{
    return m_tapTime != 0 && time >= m_tapTime
        && time - m_tapTime <= quint64(QGuiApplication::styleHints()->mouseDoubleClickInterval())
        && QLineF(m_tapPosition, position).length() <= SameSpot;
}

void VideoGestures::press(const QPointF &position, quint64 time, bool isDouble)
{
    cancel();
    // Not after a press that was a gesture, or was taken away.
    const bool again = std::exchange(m_afterTap, false) && (isDouble || isOnTime(position, time));
    m_start = position;
    if (again) { // the rest of this press is nothing more
        Q_EMIT doubleTapped();
        return;
    }
    m_undecided = true;
    const QRectF inside = QRectF(QPointF(), m_area).adjusted(Edge, Edge, -Edge, -Edge);
    m_atEdge = !inside.contains(position);
    if (!m_atEdge)
        m_longPress.start();
}

void VideoGestures::move(const QPointF &position)
{
    const QPointF way = position - m_start;
    if (m_undecided) {
        if (QLineF(QPointF(), way).length() > StillFinger)
            m_longPress.stop();
        if (std::max(std::abs(way.x()), std::abs(way.y())) > DeadZone)
            leaveDeadZone(position);
    }
    switch (m_gesture) {
    case Gesture::Seek: {
        const qreal beyond = std::max(0.0, std::abs(way.x()) - DeadZone);
        Q_EMIT moved(m_gesture, way.x() < 0 ? -beyond : beyond);
        break;
    }
    case Gesture::Dim:
    case Gesture::Volume:
        Q_EMIT moved(m_gesture, m_zero - position.y());
        break;
    case Gesture::Fast:
    case Gesture::None:
        break;
    }
}

void VideoGestures::leaveDeadZone(const QPointF &position)
{
    m_undecided = false;
    m_longPress.stop();
    if (m_atEdge)
        return;
    const QPointF way = position - m_start;
    if (std::abs(way.x()) >= std::abs(way.y())) {
        begin(Gesture::Seek);
        return;
    }
    m_zero = m_start.y() + (way.y() < 0 ? -DeadZone : DeadZone);
    begin(m_start.x() < m_area.width() / 2 ? Gesture::Dim : Gesture::Volume);
}

void VideoGestures::beginFast()
{
    if (!m_undecided || !m_permits || !m_permits(Gesture::Fast))
        return;
    m_undecided = false;
    begin(Gesture::Fast);
}

void VideoGestures::begin(Gesture gesture)
{
    if (m_permits && !m_permits(gesture))
        return;
    m_gesture = gesture;
    Q_EMIT began(gesture);
}

void VideoGestures::release(const QPointF &position, quint64 time)
{
    if (m_undecided || m_gesture != Gesture::None)
        move(position);
    m_longPress.stop();
    const Gesture gesture = std::exchange(m_gesture, Gesture::None);
    if (gesture != Gesture::None)
        Q_EMIT ended(gesture);
    if (!std::exchange(m_undecided, false))
        return;
    m_afterTap = true;
    m_tapTime = time;
    m_tapPosition = position;
    Q_EMIT tapped();
}

void VideoGestures::cancel()
{
    m_longPress.stop();
    m_undecided = false;
    const Gesture gesture = std::exchange(m_gesture, Gesture::None);
    if (gesture != Gesture::None)
        Q_EMIT cancelled(gesture);
}
