// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

// How many updates of this process no store has acknowledged yet.
class OutstandingUpdates : public QObject
{
    Q_OBJECT

public:
    static OutstandingUpdates &instance();

    [[nodiscard]] int count() const { return m_count; }
    // True when the count came down to none within `timeoutMs`; turns a nested event loop meanwhile.
    bool wait(int timeoutMs);

Q_SIGNALS:
    void noneLeft();

private:
    friend class UpdateTicket;
    void change(int by);

    int m_count = 0;
};

// Held by an update from the moment it is given to a driver until it is acknowledged or has failed.
class UpdateTicket
{
public:
    UpdateTicket() { OutstandingUpdates::instance().change(1); }
    ~UpdateTicket() { OutstandingUpdates::instance().change(-1); }
    Q_DISABLE_COPY_MOVE(UpdateTicket)
};
