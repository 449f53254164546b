// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

class ApplicationController;
class QWidget;

namespace toolkit {
class ApplicationWindow;
}

// With KESTREL_STARTUP_LOG set: one line on the log when the list of videos was painted for the first time,
// with the time since this was made. Otherwise does nothing.
class StartupLog : public QObject
{
    Q_OBJECT

public:
    StartupLog();

    void watch(ApplicationController *controller, toolkit::ApplicationWindow *window);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool isListShown() const;
    void report();

    QElapsedTimer m_sinceStart;
    QPointer<ApplicationController> m_controller;
    QPointer<QWidget> m_viewport;
};
