// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerfixture.h"

#include <platform/toolkit/applicationwindow.h>

#include <QSignalSpy>

#include <functional>

using namespace Qt::Literals::StringLiterals;
using State = AvloRenderer::State;

// The steps of a table row: what happens to a controller and its widget.
using Steps = std::function<void(PlayerController &)>;
Q_DECLARE_METATYPE(Steps)

class TestPlayerControllerState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void errorsAndTheirMessages_data();
    void errorsAndTheirMessages();
    void errorsHideTheIndicatorFirst();
    void statesSetTheBacklight();
    void reasonsToPauseAtOnce_data();
    void reasonsToPauseAtOnce();
    void aPendingStopStops();
    void theLockPausesOnlyPictures_data();
    void theLockPausesOnlyPictures();
    void theDisplayComingOnUnderTheLockPauses();
    void theEndOfTvOut_data();
    void theEndOfTvOut();
    void theRouteIsSubscribedWhileTheControllerLives();
    void aDoubleTapTogglesThePause();
    void aWindowThatIsNotSeenPauses();
    void inTheSwitcherTheLastReasonsAreNotAskedFor();
    void theEndOfTvOutPausesWhatNobodySees();
    void theRoutesThatAreTvOut();
    void pendingActionsComeBeforeTheIndicator();

private:
    PlayerFixture f;
};

void TestPlayerControllerState::init()
{
    QVERIFY(f.startWithRenderer());
}

void TestPlayerControllerState::cleanup()
{
    f.stop();
}

void TestPlayerControllerState::errorsAndTheirMessages_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("call");
    QTest::addColumn<QString>("messageId");
    QTest::addColumn<bool>("critical");
    const auto add = [](QList<int> codes, const QString &id, bool critical, bool call = false) {
        for (const int code : codes)
            QTest::newRow(qPrintable(u"%1%2"_s.arg(code).arg(call ? u" in a call"_s : QString())))
                << code << call << id << critical;
    };
    add({300, 303}, u"qtn_vide_error_notfound"_s, true);
    add({301, 304}, u"qtn_vide_error_connection"_s, false);
    add({302}, u"qtn_vide_error_uri"_s, true);
    add({308, 315}, u"qtn_vide_error_format"_s, true);
    add({309}, u"qtn_vide_error_resolution"_s, true);
    add({310}, u"qtn_vide_error_frame"_s, true);
    add({311, 312, 313, 330}, u"qtn_vide_error_drm"_s, true);
    add({314, 329}, u"qtn_vide_error_audio"_s, false);
    add({314, 329}, u"qtn_vide_error_call"_s, false, true);
    add({317, 318, 319}, u"qtn_vide_error_coded"_s, true);
    add({325, 326, 331}, QString(), false);
    add({332}, u"qtn_vide_error_format"_s, false);
    add({-1, 0, 299, 305, 306, 307, 316, 320, 321, 322, 323, 324, 327, 328, 333, 1000},
        u"qtn_vide_error_generic"_s, false);
}

void TestPlayerControllerState::errorsAndTheirMessages()
{
    QFETCH(int, code);
    QFETCH(bool, call);
    QFETCH(QString, messageId);
    QFETCH(bool, critical);
    FakeDevice::instance().call = call ? 1 : 0;
    QSignalSpy messages(f.controller.get(), &PlayerController::rendererError);
    QSignalSpy criticals(f.controller.get(), &PlayerController::criticalError);
    Q_EMIT f.widget->renderer()->error({code, u"technical"_s});
    QCOMPARE(messages.size(), messageId.isEmpty() ? 0 : 1);
    if (!messageId.isEmpty())
        QCOMPARE(messages.first().first().toString(), qtTrId(messageId.toLatin1().constData()));
    QCOMPARE(criticals.size(), critical ? 1 : 0);
}

void TestPlayerControllerState::errorsHideTheIndicatorFirst()
{
    f.controller->handleEvent(3);
    QStringList order;
    connect(f.controller.get(), &PlayerController::hideBufferIconRequested, this,
            [&] { order.append(u"hide"_s); });
    connect(f.controller.get(), &PlayerController::rendererError, this, [&] { order.append(u"message"_s); });
    connect(f.controller.get(), &PlayerController::criticalError, this, [&] { order.append(u"critical"_s); });
    f.controller->error(AvloError{308, QString()});
    QCOMPARE(order, (QStringList{u"hide"_s, u"message"_s, u"critical"_s}));
    QVERIFY(!f.widget->isBusy());
}

void TestPlayerControllerState::statesSetTheBacklight()
{
    for (const State state : {AvloRenderer::Transitioning, AvloRenderer::Playing, AvloRenderer::Paused,
                              AvloRenderer::Stopped, State(9)})
        f.controller->rendererStateChanged(state);
    QCOMPARE(FakeDevice::instance().backlight, (QList<int>{1, 3, 1, 1, 1}));
}

void TestPlayerControllerState::reasonsToPauseAtOnce_data()
{
    QTest::addColumn<Steps>("before");
    QTest::addColumn<int>("pauses");
    const auto add
        = [](const char *name, Steps before, int pauses) { QTest::newRow(name) << before << pauses; };
    add(
        "none", [](PlayerController &) {}, 0);
    add(
        "minimised", [](PlayerController &c) { c.handleEvent(5); }, 1);
    add(
        "quick launch bar", [](PlayerController &c) { c.setQlbOpen(true); }, 1);
    add(
        "pending pause", [](PlayerController &c) { c.setPendingAction(2); }, 1);
    add(
        "a dialog is open", [](PlayerController &c) { c.setPauseWhenPlaying(true); }, 1);
    add(
        "locked", [](PlayerController &c) { c.deviceLockStatusChanged(true); }, 1);
    add(
        "display off", [](PlayerController &c) { c.displayStatusChanged(false); }, 1);
    add(
        "not merged",
        [](PlayerController &c) {
            c.setQlbOpen(true);
            c.setPendingAction(2);
            c.setPauseWhenPlaying(true);
            c.deviceLockStatusChanged(true);
        },
        3);
}

void TestPlayerControllerState::reasonsToPauseAtOnce()
{
    QFETCH(Steps, before);
    QFETCH(int, pauses);
    before(*f.controller);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList(pauses, u"pause"_s));
}

void TestPlayerControllerState::aPendingStopStops()
{
    f.controller->setPendingAction(0);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList{u"stop"_s});
}

void TestPlayerControllerState::theLockPausesOnlyPictures_data()
{
    QTest::addColumn<Steps>("before");
    QTest::addColumn<bool>("pauses");
    const auto add
        = [](const char *name, Steps before, bool pauses) { QTest::newRow(name) << before << pauses; };
    const auto picture = [](PlayerController &c) { c.handleMetadataChange(u"res-x"_s, {320}); };
    add(
        "a picture", [=](PlayerController &c) { picture(c), c.rendererStateChanged(AvloRenderer::Playing); },
        true);
    add(
        "in transition",
        [=](PlayerController &c) { picture(c), c.rendererStateChanged(AvloRenderer::Transitioning); }, true);
    add(
        "audio only", [](PlayerController &c) { c.rendererStateChanged(AvloRenderer::Playing); }, false);
    add(
        "paused", [=](PlayerController &c) { picture(c), c.rendererStateChanged(AvloRenderer::Paused); },
        false);
    add(
        "stopped", [=](PlayerController &c) { picture(c), c.rendererStateChanged(AvloRenderer::Stopped); },
        false);
    add(
        "on TV, display on",
        [=](PlayerController &c) {
            FakeDevice::instance().route = u"tvout"_s;
            picture(c), c.rendererStateChanged(AvloRenderer::Playing);
        },
        true);
    add(
        "on TV, display off",
        [=](PlayerController &c) {
            FakeDevice::instance().route = u"builtinandtvout"_s;
            picture(c), c.rendererStateChanged(AvloRenderer::Playing);
            c.displayStatusChanged(false);
        },
        false);
}

void TestPlayerControllerState::theLockPausesOnlyPictures()
{
    QFETCH(Steps, before);
    QFETCH(bool, pauses);
    before(*f.controller);
    f.backend->clearCommands();
    f.controller->deviceLockStatusChanged(true);
    QCOMPARE(f.backend->commands(), QStringList(pauses ? 1 : 0, u"pause"_s));
    f.controller->deviceLockStatusChanged(false);
    QCOMPARE(f.backend->commands().size(), pauses ? 1 : 0);
}

void TestPlayerControllerState::theDisplayComingOnUnderTheLockPauses()
{
    QSignalSpy off(f.controller.get(), &PlayerController::deviceDisplayStatusOff);
    FakeDevice::instance().route = u"tvout"_s;
    f.controller->handleMetadataChange(u"res-y"_s, {180});
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    f.controller->displayStatusChanged(false);
    QCOMPARE(off.size(), 1);
    QVERIFY(f.controller->isDisplayOff());
    f.controller->deviceLockStatusChanged(true);
    QCOMPARE(f.backend->commands(), QStringList());
    f.controller->displayStatusChanged(true);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    QCOMPARE(off.size(), 1);
    // That it goes off is told, and no more.
    f.controller->displayStatusChanged(false);
    QCOMPARE(off.size(), 2);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
}

void TestPlayerControllerState::theEndOfTvOut_data()
{
    QTest::addColumn<Steps>("before");
    QTest::addColumn<QString>("route");
    QTest::addColumn<bool>("pauses");
    const auto add = [](const char *name, Steps before, const QString &route, bool pauses) {
        QTest::newRow(name) << before << route << pauses;
    };
    add(
        "in use", [](PlayerController &) {}, u"builtin"_s, false);
    add(
        "locked", [](PlayerController &c) { c.deviceLockStatusChanged(true); }, u"builtin"_s, true);
    add(
        "display off", [](PlayerController &c) { c.displayStatusChanged(false); }, QString(), true);
    add(
        "quick launch bar", [](PlayerController &c) { c.setQlbOpen(true); }, QString(), true);
    add(
        "still on TV", [](PlayerController &c) { c.deviceLockStatusChanged(true); }, u"tvout"_s, false);
}

void TestPlayerControllerState::theEndOfTvOut()
{
    QFETCH(Steps, before);
    QFETCH(QString, route);
    QFETCH(bool, pauses);
    before(*f.controller);
    FakeDevice::instance().route = route;
    Q_EMIT FakeDevice::instance().routeProperty->valueChanged();
    QCOMPARE(f.backend->commands(), QStringList(pauses ? 1 : 0, u"pause"_s));
}

void TestPlayerControllerState::theRouteIsSubscribedWhileTheControllerLives()
{
    QCOMPARE(FakeDevice::instance().subscriptions, 1);
    f.controller.reset();
    QCOMPARE(FakeDevice::instance().subscriptions, 0);
}

void TestPlayerControllerState::aDoubleTapTogglesThePause()
{
    Q_EMIT f.widget->doubleClick();
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(f.playUntilItPlays(PlayerFixture::video()));
    f.backend->clearCommands();
    Q_EMIT f.widget->doubleClick();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    Q_EMIT f.widget->doubleClick();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"resume"_s}));
}

void TestPlayerControllerState::aWindowThatIsNotSeenPauses()
{
    toolkit::ApplicationWindow window;
    window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    QVERIFY(!window.isOnDisplay());
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    window.showForProfile();
    QTRY_VERIFY(window.isOnDisplay());
    f.backend->clearCommands();
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList());
    // In the task switcher it is not on the display either: two reasons, two pauses.
    window.showMinimized();
    QTRY_VERIFY(window.isInSwitcher() && !window.isOnDisplay());
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"pause"_s}));
}

void TestPlayerControllerState::inTheSwitcherTheLastReasonsAreNotAskedFor()
{
    toolkit::ApplicationWindow window;
    window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    window.showForProfile();
    QTRY_VERIFY(window.isOnDisplay());
    window.showMinimized();
    QTRY_VERIFY(window.isInSwitcher());
    f.controller->setPauseWhenPlaying(true);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"pause"_s}));
    // Under the lock the switcher is not asked about; the lock pauses.
    f.backend->clearCommands();
    f.controller->deviceLockStatusChanged(true);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"pause"_s}));
}

void TestPlayerControllerState::theEndOfTvOutPausesWhatNobodySees()
{
    toolkit::ApplicationWindow window;
    window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    FakeDevice::instance().route = u"builtin"_s;
    f.controller->tvOutvalueChanged();
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    FakeDevice::instance().route = u"tvout"_s;
    f.controller->tvOutvalueChanged();
    QCOMPARE(f.backend->commands().size(), 1);
    FakeDevice::instance().route = u"builtin"_s;
    window.showForProfile();
    QTRY_VERIFY(window.isOnDisplay());
    f.controller->tvOutvalueChanged();
    QCOMPARE(f.backend->commands().size(), 1);
}

void TestPlayerControllerState::theRoutesThatAreTvOut()
{
    const QHash<QString, bool> routes{{u"builtinandtvout"_s, true}, {u"tvout"_s, true},
                                      {u"builtin"_s, false},        {QString(), false},
                                      {u"TVOUT"_s, false},          {u"tvout "_s, false}};
    for (auto route = routes.begin(); route != routes.end(); ++route) {
        FakeDevice::instance().route = route.key();
        QCOMPARE(f.controller->isTvOut(), route.value());
    }
}

void TestPlayerControllerState::pendingActionsComeBeforeTheIndicator()
{
    // The stop is asked for before the busy state is taken back.
    QList<bool> busy;
    f.controller->handleEvent(PlayerController::BufferingBelowFull);
    f.controller->handleEvent(PlayerController::BufferingFull);
    f.controller->handleEvent(PlayerController::PlayRequested);
    QVERIFY(f.widget->isBusy());
    connect(f.controller.get(), &PlayerController::hideBufferIconRequested, this,
            [&] { busy.append(f.widget->isBusy()); });
    f.controller->setPendingAction(PlayerController::StopWhenPlaying);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(busy, QList<bool>{true});
    QVERIFY(!f.widget->isBusy());
    QCOMPARE(f.backend->commands(), QStringList{u"stop"_s});
}

QTEST_MAIN(TestPlayerControllerState)
#include "test_playercontrollerstate.moc"
