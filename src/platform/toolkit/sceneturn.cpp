// SPDX-License-Identifier: GPL-3.0-or-later
#include "sceneturn.h"

#include "windowgeometry.h"

namespace toolkit {

SceneTurn::SceneTurn(QObject *parent) : QObject(parent)
{
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    connect(&m_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        if (m_animation.state() == QAbstractAnimation::Running)
            setRotation(m_from + (m_to - m_from) * value.toReal());
    });
    connect(&m_animation, &QVariantAnimation::finished, this, &SceneTurn::finish);
}

void SceneTurn::setRotation(qreal rotation)
{
    m_rotation = rotation;
    Q_EMIT rotationChanged(rotation);
}

bool SceneTurn::begin()
{
    // The rotation of an interrupted turn stays where it is seen: the next one goes on from there.
    m_animation.stop();
    if (m_open) {
        m_open = false;
        Q_EMIT finished();
    }
    const int serial = ++m_serial;
    m_open = true;
    Q_EMIT started();
    return serial == m_serial;
}

void SceneTurn::turnTo(int rotation, int milliseconds)
{
    m_from = m_rotation;
    m_to = nearestRotation(m_rotation, rotation);
    if (milliseconds <= 0 || qFuzzyCompare(m_to + 1, m_from + 1)) {
        finish();
        return;
    }
    m_animation.setDuration(milliseconds);
    m_animation.start();
}

void SceneTurn::finish()
{
    m_animation.stop();
    if (!m_open)
        return;
    setRotation(normalizedAngle(qRound(m_to)));
    m_open = false;
    Q_EMIT finished();
}

} // namespace toolkit
