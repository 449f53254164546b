// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCoreApplication>
#include <QMap>
#include <QPointingDevice>
#include <QTest>
#include <QTouchEvent>
#include <QWidget>
#include <QWindow>

#include <memory>

// Fingers on a touch screen. Those that do nothing rest where they are.
class Fingers
{
public:
    explicit Fingers(QWidget *widget)
        : m_widget(widget),
          m_touch(QTest::touchEvent(widget, m_screen.get(), false))
    {
    }

    void down(int finger, const QPoint &at)
    {
        m_down[finger] = at;
        m_touch.press(finger, at, m_widget);
        others(finger);
    }
    void moveBy(int finger, const QPoint &way)
    {
        m_down[finger] += way;
        m_touch.move(finger, m_down.value(finger), m_widget);
        others(finger);
    }
    void up(int finger)
    {
        m_touch.release(finger, m_down.take(finger), m_widget);
        others(finger);
    }
    [[nodiscard]] bool isDown(int finger) const { return m_down.contains(finger); }
    // A gesture of the compositor begins: it tells the window, and then the fingers are gone.
    void taken()
    {
        QTouchEvent cancel(QEvent::TouchCancel, m_screen.get());
        QCoreApplication::sendEvent(m_widget->windowHandle(), &cancel);
        for (const int finger : m_down.keys())
            up(finger);
    }

private:
    void others(int finger)
    {
        for (const int other : m_down.keys()) {
            if (other != finger)
                m_touch.stationary(other);
        }
        m_touch.commit();
    }

    QWidget *m_widget;
    std::unique_ptr<QPointingDevice> m_screen{QTest::createTouchDevice()};
    QTest::QTouchEventWidgetSequence m_touch;
    QMap<int, QPoint> m_down;
};
