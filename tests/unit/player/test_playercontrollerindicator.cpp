// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerfixture.h"

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;

class TestPlayerControllerIndicator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void indicatorEvents_data();
    void indicatorEvents();
    void afterAnErrorMinimisingDoesNotMoveTheIndicator();
    void unknownEventsAreLogged();
    void resettingTheFlagsForgetsThemAll();
    void statesMoveTheIndicator();
    void playingEndsABusyStateThatWasKept();
    void aRequestWhilePlayingShowsNoIcon();
    void anUnknownEventIsTheLastOne();

private:
    PlayerFixture f;
};

void TestPlayerControllerIndicator::init()
{
    QVERIFY(f.startWithRenderer());
}

void TestPlayerControllerIndicator::cleanup()
{
    f.stop();
}

void TestPlayerControllerIndicator::indicatorEvents_data()
{
    QTest::addColumn<QList<int>>("events");
    QTest::addColumn<QString>("icon"); // what was asked of the buffer icon
    QTest::addColumn<bool>("busy");
    QTest::newRow("0 while stopped") << QList<int>{0} << u"show"_s << true;
    QTest::newRow("0 minimised") << QList<int>{5, 0} << u"hide"_s << true;
    QTest::newRow("1") << QList<int>{0, 1} << u"show"_s << false;
    QTest::newRow("1 held") << QList<int>{8, 1} << u"show"_s << true;
    QTest::newRow("1 suppressed, once") << QList<int>{0, 10, 1} << u"show"_s << true;
    QTest::newRow("1 after suppressed") << QList<int>{0, 10, 1, 1} << u"show"_s << false;
    QTest::newRow("2") << QList<int>{0, 2} << u"show hide"_s << false;
    QTest::newRow("2 suppressed") << QList<int>{0, 10, 2} << u"show hide"_s << true;
    QTest::newRow("3") << QList<int>{3} << u"show"_s << true;
    QTest::newRow("3 minimised") << QList<int>{5, 3} << u"hide"_s << true;
    QTest::newRow("4") << QList<int>{3, 4} << u"show hide"_s << false;
    QTest::newRow("4 held") << QList<int>{8, 4} << u"show hide"_s << true;
    QTest::newRow("4 ends a suppression") << QList<int>{0, 10, 4, 1} << u"show hide"_s << false;
    QTest::newRow("5 ends a suppression") << QList<int>{0, 10, 5, 6, 0, 1} << u"show hide show"_s << false;
    QTest::newRow("7 ends a suppression") << QList<int>{0, 10, 7, 1} << u"show hide"_s << false;
    QTest::newRow("5") << QList<int>{3, 5} << u"show hide"_s << false;
    QTest::newRow("6 in transition") << QList<int>{3, 5, 6} << u"show hide show"_s << true;
    QTest::newRow("6 after transition") << QList<int>{3, 4, 5, 6} << u"show hide hide"_s << false;
    QTest::newRow("7 forgets the hold") << QList<int>{8, 7, 1} << u"show hide"_s << false;
    QTest::newRow("8") << QList<int>{8} << u"show"_s << true;
    QTest::newRow("9") << QList<int>{8, 9} << u"show hide"_s << false;
    QTest::newRow("9 suppressed") << QList<int>{8, 10, 9} << u"show hide"_s << true;
    QTest::newRow("10 minimised does not suppress") << QList<int>{5, 0, 10, 1} << u"hide"_s << false;
    QTest::newRow("11") << QList<int>{0, 11} << u"show"_s << false;
    QTest::newRow("11 minimised") << QList<int>{5, 0, 11} << u"hide"_s << true;
    QTest::newRow("12") << QList<int>{0, 12} << u"show hide"_s << false;
    QTest::newRow("12 minimised") << QList<int>{5, 0, 12} << u"hide hide"_s << true;
}

void TestPlayerControllerIndicator::indicatorEvents()
{
    QFETCH(QList<int>, events);
    QFETCH(bool, busy);
    QStringList icon;
    connect(f.controller.get(), &PlayerController::showBufferIconRequested, this,
            [&] { icon.append(u"show"_s); });
    connect(f.controller.get(), &PlayerController::hideBufferIconRequested, this,
            [&] { icon.append(u"hide"_s); });
    for (const int event : events)
        f.controller->handleEvent(event);
    QTEST(icon.join(u' '), "icon");
    QCOMPARE(f.widget->isBusy(), busy);
}

void TestPlayerControllerIndicator::afterAnErrorMinimisingDoesNotMoveTheIndicator()
{
    f.controller->handleEvent(5); // minimised
    f.controller->handleEvent(3); // in transition
    f.controller->handleEvent(2);
    QSignalSpy shown(f.controller.get(), &PlayerController::showBufferIconRequested);
    QSignalSpy hidden(f.controller.get(), &PlayerController::hideBufferIconRequested);
    f.controller->handleEvent(5);
    f.controller->handleEvent(6);
    QVERIFY(shown.isEmpty() && hidden.isEmpty());
    QVERIFY(!f.widget->isBusy());
    // 6 has cleared "minimised": the next transition shows.
    f.controller->handleEvent(3);
    QCOMPARE(shown.size(), 1);
}

void TestPlayerControllerIndicator::unknownEventsAreLogged()
{
    f.controller->handleEvent(0);
    QTest::ignoreMessage(QtWarningMsg, "void PlayerController::handleEvent(int) Event doesn't exist");
    f.controller->handleEvent(13);
    QVERIFY(f.widget->isBusy());
}

void TestPlayerControllerIndicator::resettingTheFlagsForgetsThemAll()
{
    for (const int event : {8, 3, 10, 5})
        f.controller->handleEvent(event);
    f.controller->resetIndicatorFlags();
    QVERIFY(!f.controller->suppressBusyOff());
    QSignalSpy shown(f.controller.get(), &PlayerController::showBufferIconRequested);
    f.controller->handleEvent(6); // no transition is remembered
    QCOMPARE(shown.size(), 0);
    f.controller->handleEvent(0); // not minimised
    QCOMPARE(shown.size(), 1);
    f.controller->handleEvent(1); // not held
    QVERIFY(!f.widget->isBusy());
}

void TestPlayerControllerIndicator::statesMoveTheIndicator()
{
    QStringList icon;
    connect(f.controller.get(), &PlayerController::showBufferIconRequested, this,
            [&] { icon.append(u"show"_s); });
    connect(f.controller.get(), &PlayerController::hideBufferIconRequested, this,
            [&] { icon.append(u"hide"_s); });
    const auto after = [&](int state) {
        icon.clear();
        f.controller->rendererStateChanged(AvloRenderer::State(state));
        return icon.join(u' ') + (f.widget->isBusy() ? u" busy"_s : QString());
    };
    QCOMPARE(after(AvloRenderer::Transitioning), u"show busy"_s);
    QCOMPARE(after(AvloRenderer::Playing), u"hide"_s);
    QCOMPARE(after(AvloRenderer::Transitioning), u"show busy"_s);
    QCOMPARE(after(AvloRenderer::Paused), u"hide"_s);
    QCOMPARE(after(AvloRenderer::Transitioning), u"show busy"_s);
    QCOMPARE(after(AvloRenderer::Stopped), u" busy"_s); // only the backlight follows
    QCOMPARE(after(9), u"hide"_s);
}

// Kept busy for the way back from the card: the first step of playing ends the keeping, the second the state.
void TestPlayerControllerIndicator::playingEndsABusyStateThatWasKept()
{
    for (const int event : {0, 10, 4})
        f.controller->handleEvent(event);
    QVERIFY(f.widget->isBusy());
    for (const int event : {0, 10})
        f.controller->handleEvent(event);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QVERIFY(!f.widget->isBusy());
}

void TestPlayerControllerIndicator::aRequestWhilePlayingShowsNoIcon()
{
    f.controller->rendererStateChanged(AvloRenderer::Paused);
    QSignalSpy shown(f.controller.get(), &PlayerController::showBufferIconRequested);
    f.controller->handleEvent(0);
    QCOMPARE(shown.size(), 0);
    QVERIFY(f.widget->isBusy());
}

void TestPlayerControllerIndicator::anUnknownEventIsTheLastOne()
{
    f.controller->handleEvent(2);
    QTest::ignoreMessage(QtWarningMsg, "void PlayerController::handleEvent(int) Event doesn't exist");
    f.controller->handleEvent(14);
    QSignalSpy hidden(f.controller.get(), &PlayerController::hideBufferIconRequested);
    f.controller->handleEvent(5); // the error is no longer the last
    QCOMPARE(hidden.size(), 1);
    QTest::ignoreMessage(QtWarningMsg, "void PlayerController::handleEvent(int) Event doesn't exist");
    f.controller->handleEvent(-1);
}

QTEST_MAIN(TestPlayerControllerIndicator)
#include "test_playercontrollerindicator.moc"
