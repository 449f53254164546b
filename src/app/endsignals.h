// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <array>
#include <memory>

#include <csignal>

class QSocketNotifier;

// A program that is told to end by SIGTERM, SIGINT or SIGHUP ends as one that is told so by its user: what it
// has begun to save is saved. One at a time. What was ignored when the program started (as by nohup) stays
// so. A program that hangs is ended by the system some seconds after the signal.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    explicit EndSignals(QObject *parent = nullptr);
    // What was done about the signals before is done again.
    ~EndSignals() override;

private:
    struct Handled
    {
        int signal = 0;
        struct sigaction before = {};
    };

    std::array<Handled, 3> m_handled{{{SIGTERM, {}}, {SIGINT, {}}, {SIGHUP, {}}}};
    std::unique_ptr<QSocketNotifier> m_notifier;
};
