// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>

#include <functional>

// A program of this installation that works for this process alone: it ends with it, however that ends, and
// with this object. What it says on its standard error goes to ours. It is given no more of the environment
// than it needs.
class HelperProcess : public QProcess
{
    Q_OBJECT

public:
    explicit HelperProcess(QObject *parent = nullptr);
    // Kills it, and waits for a second at most.
    ~HelperProcess() override;

    // Adds those of these variables that are set here to the environment; before it is started.
    void passOn(const QStringList &variables);
    // `prepare` runs between fork and exec: only calls that are safe there. The thread that starts it must
    // live as long as this process: its end counts as that.
    void startHelper(const QString &program, const QStringList &arguments,
                     const std::function<void()> &prepare = {});

Q_SIGNALS:
    // Also when it could not be started, from the event loop then. May come twice.
    void ended();
};
