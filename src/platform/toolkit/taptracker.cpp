// SPDX-License-Identifier: GPL-3.0-or-later
#include "taptracker.h"

#include <QLineF>

namespace toolkit {

namespace {

constexpr int longTapInterval = 600; // ms
constexpr qreal slop = 14; // logical pixels that a resting finger may wander

} // namespace

TapTracker::TapTracker(QObject *parent) : QObject(parent)
{
    m_longTap.setParent(this);
    m_longTap.setObjectName(QStringLiteral("longTap"));
    m_longTap.setSingleShot(true);
    m_longTap.setInterval(longTapInterval);
    connect(&m_longTap, &QTimer::timeout, this, [this] {
        m_pressed = false;
        Q_EMIT longTapped(m_start);
    });
}

void TapTracker::press(const QPointF &scenePosition)
{
    m_start = scenePosition;
    m_pressed = true;
    m_longTap.start();
}

void TapTracker::move(const QPointF &scenePosition)
{
    if (m_pressed && QLineF(m_start, scenePosition).length() > slop)
        cancel();
}

void TapTracker::release(const QPointF &scenePosition)
{
    move(scenePosition);
    if (!m_pressed)
        return;
    m_pressed = false;
    m_longTap.stop();
    Q_EMIT tapped();
}

void TapTracker::cancel()
{
    m_longTap.stop();
    if (!std::exchange(m_pressed, false))
        return;
    Q_EMIT cancelled();
}

} // namespace toolkit
