// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <ctime>

// Says in the marker of an extension that the program stands still in its code, as long as it does: who is
// fed up with it kills the program, which no program sees coming. Looks after each second of processor time
// that the GUI thread uses, so that nothing wakes up while nothing happens, and finds what computes for ever
// wherever it was called from; what waits for ever in a call of the program's is marked without it.
class HangWitness : public QObject
{
    Q_OBJECT

public:
    // Of the thread that makes it, and one only.
    HangWitness();
    ~HangWitness() override;

private:
    void turnBegins();

    timer_t m_timer = {};
    bool m_isRunning = false;
};
