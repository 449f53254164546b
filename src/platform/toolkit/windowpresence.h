// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

class QWidget;
class QWindow;

namespace toolkit {

class X11Visibility;

// Tells whether a window can be seen. On the display: shown, exposed, not minimised, not wholly behind others
// (where the window system tells that). In the switcher: shown by the program and yet not to be seen.
class WindowPresence : public QObject
{
    Q_OBJECT

public:
    explicit WindowPresence(QWidget *window);
    ~WindowPresence() override;

    [[nodiscard]] bool isOnDisplay() const { return m_onDisplay; }
    [[nodiscard]] bool isInSwitcher() const { return m_inSwitcher; }

    // The program gives itself another native window, which takes a moment to appear and to get the focus: no
    // leaving is told meanwhile.
    void beginReplacement();
    [[nodiscard]] bool isBeingReplaced() const { return m_replacement.isActive(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void onDisplayChanged(bool on);
    void inSwitcherChanged(bool in);
    void replaced();

private:
    void followHandle();
    void evaluate();
    void apply(bool visible);

    QWidget *m_window;
    QPointer<QWindow> m_handle;
    std::unique_ptr<X11Visibility> m_visibility;
    QTimer m_leaving; // a short stop of frames is no leaving
    QTimer m_replacement;
    bool m_onDisplay = false;
    bool m_inSwitcher = false;
    bool m_wasSeen = false;
};

} // namespace toolkit
