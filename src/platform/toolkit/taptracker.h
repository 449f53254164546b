// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointF>
#include <QTimer>

namespace toolkit {

// One finger or pointer on something: a tap, a long tap, or neither.
class TapTracker : public QObject
{
    Q_OBJECT

public:
    explicit TapTracker(QObject *parent = nullptr);

    void setLongTapInterval(int ms) { m_longTap.setInterval(ms); }
    void press(const QPointF &scenePosition);
    void move(const QPointF &scenePosition);
    void release(const QPointF &scenePosition);
    void cancel();
    [[nodiscard]] bool isPressed() const { return m_pressed; }

Q_SIGNALS:
    void tapped();
    void longTapped(QPointF scenePosition);
    void cancelled(); // became a movement, or was taken away

private:
    QTimer m_longTap;
    QPointF m_start;
    bool m_pressed = false;
};

} // namespace toolkit
