// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QScroller>
#include <QVariantAnimation>

class QGraphicsObject;

namespace toolkit {

// The vertical movement of a content behind a window of `viewHeight`: drags, flicks, over-shoot and animated
// scrolling, with the physics of QScroller, which sends its events to the target; the target hands them on to
// scrollEvent().
class PanScroller : public QObject
{
    Q_OBJECT

public:
    explicit PanScroller(QGraphicsObject *target);

    void setMetrics(qreal viewWidth, qreal viewHeight, qreal contentHeight);
    [[nodiscard]] qreal maximum() const { return qMax(0.0, m_contentHeight - m_viewHeight); }
    [[nodiscard]] qreal position() const { return m_position; }
    // Clamped, at once, stops any movement.
    void setPosition(qreal position);
    // Animated where motion is wanted; `byUser` also counts as panning.
    void scrollTo(qreal position, bool byUser);
    // Where an animated movement will end.
    [[nodiscard]] qreal target() const;
    // The pull beyond the top that has no finger: a wheel, or reduced motion.
    void pull();

    [[nodiscard]] bool isMoving() const; // by itself: kinetic or animated
    [[nodiscard]] bool isDragged() const { return m_scroller->state() == QScroller::Dragging; }
    [[nodiscard]] bool isPanning() const { return m_panning; }
    bool input(QScroller::Input input, const QPointF &position, qint64 milliseconds);
    void stop();

    // Events of QScroller to the target; false for others.
    bool scrollEvent(QEvent *event);

Q_SIGNALS:
    void positionChanged(qreal position);
    void moved(qreal position); // like positionChanged(), but every step
    void panningStarted();
    void panningStopped();

private:
    void updateProperties();
    void stateChanged(QScroller::State state);
    void move(qreal position);
    void report();
    void setPanning(bool panning);

    QScroller *m_scroller;
    QVariantAnimation m_pull;
    qreal m_viewWidth = 0;
    qreal m_viewHeight = 0;
    qreal m_contentHeight = 0;
    qreal m_position = 0;
    qreal m_reported = 0;
    qreal m_pixelsPerMeter = 0;
    bool m_startedScrolled = false; // the movement did not begin at the top
    bool m_byUser = true;
    bool m_panning = false;
    bool m_reporting = false;
};

} // namespace toolkit
