// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/heartbeat.h"

#include <QTest>

#include <ctime>

// The helper itself: it must find what blocks, or the tests that use it say nothing.
class HeartbeatTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void idleLoopIsSteady();
    void blockedThreadIsFound();
    void blockThatLastsIsFoundToo();
};

namespace {

std::chrono::nanoseconds processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

// Keeps the thread busy for so long, however much of a processor it gets.
void block(std::chrono::nanoseconds time)
{
    const auto end = processorTime() + time;
    while (processorTime() < end) { }
}

} // namespace

void HeartbeatTest::idleLoopIsSteady()
{
    Heartbeat heart;
    QTRY_VERIFY(heart.beats() >= 20);
    QVERIFY2(heart.isSteady(), heart.report());
}

void HeartbeatTest::blockedThreadIsFound()
{
    Heartbeat heart;
    QTRY_VERIFY(heart.beats() >= 2);
    block(3 * Heartbeat::Bound);
    const int before = heart.beats();
    QTRY_VERIFY(heart.beats() > before);
    QVERIFY2(!heart.isSteady(), heart.report());
    heart.restart();
    QTRY_VERIFY(heart.beats() >= 5);
    QVERIFY2(heart.isSteady(), heart.report());
}

void HeartbeatTest::blockThatLastsIsFoundToo()
{
    Heartbeat heart;
    block(3 * Heartbeat::Bound); // not one beat
    QVERIFY2(!heart.isSteady(), heart.report());
}

QTEST_GUILESS_MAIN(HeartbeatTest)
#include "tst_heartbeat.moc"
