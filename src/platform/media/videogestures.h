// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointF>
#include <QSizeF>
#include <QTimer>

#include <functional>

// Tells what a finger or the pointer does on the picture: taps, swipes, a long press. A swipe begins where
// the finger leaves the dead zone around the place where it came down, and stays what it was when it began.
// Logical pixels.
class VideoGestures : public QObject
{
    Q_OBJECT

public:
    enum class Gesture {
        None,
        Seek, // sideways
        Dim, // up and down in the left half
        Volume, // up and down in the right half
        Fast, // a long press
    };
    Q_ENUM(Gesture)

    static constexpr qreal DeadZone = 24;
    static constexpr qreal Edge = 24; // belongs to the gestures of the system

    explicit VideoGestures(QObject *parent = nullptr);

    void setArea(const QSizeF &size) { m_area = size; }
    // Asked when a gesture is about to begin; what is not permitted is nothing at all.
    void setPermission(const std::function<bool(Gesture)> &permits) { m_permits = permits; }

    // `time` in milliseconds, 0 where it is not known; `isDouble`: the window system counts a double click.
    void press(const QPointF &position, quint64 time, bool isDouble);
    void move(const QPointF &position);
    void release(const QPointF &position, quint64 time);
    // The finger was taken away, or is not alone any more: it does nothing until it is lifted.
    void cancel();
    [[nodiscard]] Gesture gesture() const { return m_gesture; }

Q_SIGNALS:
    void tapped(); // at once, also when it turns out to be half of a double tap
    void doubleTapped();
    void began(VideoGestures::Gesture gesture);
    // From where the gesture began: to the right for a seek (0 back in the dead zone), upwards for the
    // others.
    void moved(VideoGestures::Gesture gesture, qreal way);
    void ended(VideoGestures::Gesture gesture);
    void cancelled(VideoGestures::Gesture gesture);

private:
    [[nodiscard]] bool isOnTime(const QPointF &position, quint64 time) const;
    void begin(Gesture gesture);
    void beginFast();
    void leaveDeadZone(const QPointF &position);

    std::function<bool(Gesture)> m_permits;
    QTimer m_longPress;
    QSizeF m_area;
    QPointF m_start;
    QPointF m_tapPosition;
    quint64 m_tapTime = 0; // of the last tap
    qreal m_zero = 0; // where an upwards gesture began
    Gesture m_gesture = Gesture::None;
    bool m_afterTap = false; // the last press was one, and no half of a double tap
    bool m_undecided = false; // may still become a tap or a gesture
    bool m_atEdge = false;
};
