// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>
#include <QEvent>

#include <algorithm>
#include <utility>

// An application (QGuiApplication or QApplication) that notes the longest delivery of an event, in
// milliseconds: until it is over, no other is looked at.
template <typename Application> class Turns : public Application
{
public:
    using Application::Application;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth > 0)
            return Application::notify(receiver, event);
        ++m_depth;
        QElapsedTimer timer;
        timer.start();
        const bool taken = Application::notify(receiver, event);
        note(double(timer.nsecsElapsed()) / 1e6);
        --m_depth;
        return taken;
    }
    void note(double milliseconds) { m_longest = std::max(m_longest, milliseconds); }
    double takeLongest() { return std::exchange(m_longest, 0); }

private:
    int m_depth = 0;
    double m_longest = 0;
};
