// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QThread>

#include <functional>

// The thread on which pipelines are opened, moved and closed, or files are written: any of it may wait for a
// disk or a network that does not answer. One that hangs is left behind, and ends by itself when what it
// waits for does.
class ControlThread
{
public:
    explicit ControlThread(const QString &name = QStringLiteral("media-control"));
    // Waits a moment for what was posted; what takes longer is left behind.
    ~ControlThread();
    Q_DISABLE_COPY_MOVE(ControlThread)

    // Commands run in their order.
    void post(std::function<void()> command);
    [[nodiscard]] QThread *thread() const { return m_thread; }
    // Ends when everything that was posted is done.
    void finish();
    [[nodiscard]] bool isFinished() const { return m_thread->isFinished(); }

private:
    QThread *m_thread;
    QObject *m_anchor; // lives on the thread
    bool m_finishing = false;
};
