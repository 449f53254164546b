// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/applicationwindow.h>

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QWindow>

#include <optional>

// What a window hears and its scene does not tell the items: where a real pointer is, how many fingers are
// down, that the focus or the full screen came or went.
class WindowWatch : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Null: none. Once the window is shown.
    void follow(toolkit::ApplicationWindow *window);
    [[nodiscard]] toolkit::ApplicationWindow *window() const { return m_window; }
    // In the scene, since a pointer was moved there; fingers are none.
    [[nodiscard]] std::optional<QPointF> pointer() const { return m_pointer; }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void pointerMoved(); // without a button down
    void secondFinger(); // while another one is on the screen
    void focusLost();
    void stateChanged(); // full screen or not

private:
    void followViewport();
    void pointerEvent(QEvent *event);

    QPointer<toolkit::ApplicationWindow> m_window;
    QPointer<QWindow> m_handle;
    std::optional<QPointF> m_pointer;
};
