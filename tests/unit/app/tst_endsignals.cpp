// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/endsignals.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <unistd.h>

// The program is told to end by the session, the terminal or a person at it.
class EndSignalsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theEventLoopEnds_data();
    void theEventLoopEnds();
    void oneThatCameBeforeTheEventLoopIsNotLost();
    void theSecondOneDoesNotCutTheEndShort();
    void aProgramThatHangsIsEndedByTheSystem();
    void whatWasIgnoredStaysIgnored();
    void afterwardsEverythingIsAsBefore();

private:
    // The program's end, which must not come from the test's own impatience.
    static int run()
    {
        QTimer giveUp;
        giveUp.setSingleShot(true);
        connect(&giveUp, &QTimer::timeout, &giveUp, [] { QCoreApplication::exit(1); });
        giveUp.start(20000);
        return QCoreApplication::exec();
    }
    static sighandler_t handlerOf(int signal)
    {
        struct sigaction action = {};
        sigaction(signal, nullptr, &action);
        return action.sa_handler;
    }
};

// Whoever runs the tests in the background may ignore some.
void EndSignalsTest::init()
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::signal(signal, SIG_DFL);
}

void EndSignalsTest::cleanup()
{
    alarm(0);
}

void EndSignalsTest::theEventLoopEnds_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("the session ends") << SIGTERM;
    QTest::newRow("the person at the terminal") << SIGINT;
    QTest::newRow("the terminal is closed") << SIGHUP;
}

void EndSignalsTest::theEventLoopEnds()
{
    QFETCH(int, signal);
    const EndSignals signals;
    QSignalSpy atEnd(QCoreApplication::instance(), &QCoreApplication::aboutToQuit);
    QTimer::singleShot(0, this, [signal] { raise(signal); });
    QCOMPARE(run(), 0);
    QCOMPARE(atEnd.size(), 1);
}

void EndSignalsTest::oneThatCameBeforeTheEventLoopIsNotLost()
{
    const EndSignals signals;
    raise(SIGTERM);
    QCOMPARE(run(), 0);
}

// Some send it to the program and then to its whole group.
void EndSignalsTest::theSecondOneDoesNotCutTheEndShort()
{
    const EndSignals signals;
    bool saved = false;
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [&saved] {
        raise(SIGTERM);
        saved = true;
    });
    QTimer::singleShot(0, this, [] { raise(SIGTERM); });
    QCOMPARE(run(), 0);
    QVERIFY(saved);
    QCoreApplication::instance()->disconnect(this);
}

void EndSignalsTest::aProgramThatHangsIsEndedByTheSystem()
{
    const EndSignals signals;
    QCOMPARE(alarm(0), 0U);
    raise(SIGTERM);
    const unsigned left = alarm(0);
    QVERIFY2(left > 0 && left <= 20, qPrintable(QString::number(left)));
    QVERIFY(handlerOf(SIGALRM) == SIG_DFL);
    QCOMPARE(run(), 0);
}

void EndSignalsTest::whatWasIgnoredStaysIgnored()
{
    ::signal(SIGHUP, SIG_IGN);
    {
        const EndSignals signals;
        QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
        raise(SIGHUP);
        QCOMPARE(alarm(0), 0U);
        QVERIFY(handlerOf(SIGTERM) != SIG_DFL);
    }
    QVERIFY(handlerOf(SIGHUP) == SIG_IGN);
}

void EndSignalsTest::afterwardsEverythingIsAsBefore()
{
    delete new EndSignals;
    QVERIFY(handlerOf(SIGTERM) == SIG_DFL);
}

QTEST_GUILESS_MAIN(EndSignalsTest)
#include "tst_endsignals.moc"
