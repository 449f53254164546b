// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core_support.h"

#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/pannableviewport.h"

#include <QGraphicsSceneMouseEvent>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QTest>
#include <QWheelEvent>

#include <algorithm>

// Content that takes presses, as cells do.
class Content : public toolkit::Widget
{
public:
    using toolkit::Widget::Widget;
    QStringList log;
    int taps() const { return int(log.count(QStringLiteral("tap"))); }

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *) override { log.append(QStringLiteral("press")); }
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override
    {
        log.append(rect().contains(event->pos()) ? QStringLiteral("tap") : QStringLiteral("cancel"));
    }
};

// What is scrolled to stays so far from an edge, where the content runs out.
constexpr qreal EdgeDepth = 28;

// The positions that were told.
struct Seen
{
    QList<qreal> positions;
    [[nodiscard]] qreal least() const
    {
        return positions.isEmpty() ? 0 : *std::min_element(positions.begin(), positions.end());
    }
    // As those do who wait for a pull: from exactly 0 to below it.
    [[nodiscard]] int pulls() const
    {
        int count = 0;
        qreal last = 0;
        for (const qreal y : positions) {
            count += y < 0 && last == 0 ? 1 : 0;
            last = y;
        }
        return count;
    }
};

// A page whose content is panned by a finger or a pointer.
class ViewportFixture
{
protected:
    void setUp() { m_touch = false; }
    void tearDown()
    {
        m_page.reset();
        m_window.reset();
        setReducedMotion(false);
    }
    void makePage(qreal contentHeight,
                  toolkit::ApplicationWindow::Profile profile = toolkit::ApplicationWindow::Profile::Desktop);
    void press(const QPointF &scene);
    void move(const QPointF &scene, int milliseconds = 16);
    void release(const QPointF &scene, int milliseconds = 16);
    void drag(const QPointF &from, const QPointF &to, int steps, int stepMilliseconds);
    void tap(const QPointF &scene);
    void wheel(int delta);
    [[nodiscard]] QPointF toWindow(const QPointF &scene) const
    {
        return m_window->viewportTransform().map(scene);
    }
    [[nodiscard]] qreal y() const { return m_viewport->position().y(); }
    [[nodiscard]] QPointF middle() const { return m_viewport->mapToScene(m_viewport->rect().center()); }
    void send(QEvent::Type type, const QPointF &scene, Qt::MouseButtons buttons);

    std::unique_ptr<toolkit::ApplicationWindow> m_window;
    std::unique_ptr<toolkit::ApplicationPage> m_page;
    toolkit::PannableViewport *m_viewport = nullptr;
    Content *m_content = nullptr;
    Seen m_seen;
    quint64 m_time = 1000;
    bool m_touch = false;
    std::unique_ptr<QPointingDevice> m_screen{QTest::createTouchDevice()};
};

inline void ViewportFixture::makePage(qreal contentHeight, toolkit::ApplicationWindow::Profile profile)
{
    m_window = shownWindow(profile);
    m_page = std::make_unique<toolkit::ApplicationPage>();
    m_viewport = m_page->pannableViewport();
    m_content = new Content;
    m_content->setPreferredHeight(contentHeight);
    m_page->setCentralWidget(m_content);
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    m_seen.positions.clear();
    QObject::connect(m_viewport, &toolkit::PannableViewport::positionChanged, m_page.get(),
                     [this](QPointF position) { m_seen.positions.append(position.y()); });
    QTRY_COMPARE(m_content->size().height(), qMax(contentHeight, m_viewport->size().height()));
}

// Events carry their own time, so that speeds are those that are meant.
inline void ViewportFixture::send(QEvent::Type type, const QPointF &scene, Qt::MouseButtons buttons)
{
    const QPointF position = toWindow(scene);
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, position, m_window->viewport()->mapToGlobal(position), button, buttons,
                      Qt::NoModifier);
    event.setTimestamp(m_time);
    QCoreApplication::sendEvent(m_window->viewport(), &event);
}

inline void ViewportFixture::press(const QPointF &scene)
{
    m_time += 50;
    if (m_touch)
        QTest::touchEvent(m_window.get(), m_screen.get()).press(0, toWindow(scene).toPoint(), m_window.get());
    else
        send(QEvent::MouseButtonPress, scene, Qt::LeftButton);
}

inline void ViewportFixture::move(const QPointF &scene, int milliseconds)
{
    m_time += milliseconds;
    if (m_touch)
        QTest::touchEvent(m_window.get(), m_screen.get()).move(0, toWindow(scene).toPoint(), m_window.get());
    else
        send(QEvent::MouseMove, scene, Qt::LeftButton);
}

inline void ViewportFixture::release(const QPointF &scene, int milliseconds)
{
    m_time += milliseconds;
    if (m_touch)
        QTest::touchEvent(m_window.get(), m_screen.get())
            .release(0, toWindow(scene).toPoint(), m_window.get());
    else
        send(QEvent::MouseButtonRelease, scene, Qt::NoButton);
}

// Without a rest before the finger leaves this is a flick. The content follows once a frame.
inline void ViewportFixture::drag(const QPointF &from, const QPointF &to, int steps, int stepMilliseconds)
{
    press(from);
    for (int step = 1; step <= steps; ++step) {
        const qreal before = y();
        move(from + (to - from) * step / steps, stepMilliseconds);
        if (m_viewport->isPanning())
            (void)QTest::qWaitFor([this, before] { return y() != before; }, 100);
    }
}

inline void ViewportFixture::tap(const QPointF &scene)
{
    press(scene);
    release(scene, 60);
}

inline void ViewportFixture::wheel(int delta)
{
    const QPointF position = toWindow(middle());
    QWheelEvent event(position, m_window->viewport()->mapToGlobal(position), QPoint(), QPoint(0, delta),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(m_window->viewport(), &event);
}
