// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>

#include <functional>

// Requests that may come faster than the window can follow. The first one runs at once; of those that come
// within the interval after it, the newest runs when the interval is over.
class RequestGate
{
public:
    explicit RequestGate(const QString &timerName);

    void pass(std::function<void()> request);

    [[nodiscard]] QTimer *timer() { return &m_timer; }

private:
    void open();

    QTimer m_timer;
    std::function<void()> m_newest;
};
