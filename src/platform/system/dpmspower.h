// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

struct xcb_connection_t;

// Whether an X server has its screens switched on. The server tells only when it is asked, so it is asked
// every two seconds between start() and stop(); nothing ever waits for it. On while the server cannot tell.
class DpmsPower : public QObject
{
    Q_OBJECT

public:
    // `connection` stays open longer than this.
    explicit DpmsPower(xcb_connection_t *connection, QObject *parent = nullptr);

    void start();
    void stop();
    [[nodiscard]] bool isOn() const { return m_on; }

Q_SIGNALS:
    void onChanged(bool on);

private:
    enum class Step { LookForExtension, AwaitExtension, AskPower, AwaitPower, NeverAgain };
    void advance();
    [[nodiscard]] Step awaitExtension();
    [[nodiscard]] Step awaitPower();
    void setOn(bool on);

    xcb_connection_t *m_connection;
    QTimer m_timer;
    Step m_step = Step::LookForExtension;
    unsigned int m_request = 0; // whose reply is awaited
    bool m_on = true;
};
