// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QTemporaryDir>
#include <QVariantList>

// Starts and steers the store service for tests (kestrel-store-peer). It comes up when the code under test
// asks for the store, or by start(); its database stands in a folder of its own. The process environment is
// set for it: one at a time.
class StorePeerControl
{
public:
    StorePeerControl();
    ~StorePeerControl();
    Q_DISABLE_COPY_MOVE(StorePeerControl)

    // Makes the service appear on the bus only this long after it was started.
    void setDelay(int ms);
    // Makes starting it impossible until allowStart().
    void forbidStart();
    void allowStart();

    // Starts it now and returns when it is on the bus. False when it did not come within ten seconds.
    [[nodiscard]] bool start();
    // True while it owns its name.
    [[nodiscard]] bool isRunning() const;
    // Ends it with SIGKILL and returns when its name is free.
    void kill();
    // Stops it in its tracks (SIGSTOP), and lets it go on.
    void stall();
    void goOn();

    void fill(int videos);
    // Whether a database stands behind the connections that clients hold.
    void serve(bool on);
    void emitReset();
    using Quads = QList<QList<int>>;
    void emitChanged(const Quads &deletes, const Quads &inserts);
    [[nodiscard]] QString dataHome() const { return m_home.path(); }

private:
    [[nodiscard]] qint64 pid() const;
    void call(const QString &method, const QVariantList &arguments);

    QTemporaryDir m_home;
};
