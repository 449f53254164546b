// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"

#include <data/videoconstants.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/spinner.h>

#include "support/driventimer.h"

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class TestPlayerPageLeave : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void backSavesThePlaceAndLeavesAtOnce();
    void backTwiceSavesOnce();
    void aRendererThatNeverAnswersHoldsThePageForTwoSeconds();
    void backWhilePausedIsDoneAtOnce();
    void backWithNothingToSaveStopsAtOnce();
    void aVideoOnTheCardHasAPlaceToSave();
    void backWhileOpeningStopsWhenItWouldPlay();
    void theBarsBackButtonTakesTheSameRoad();
    void theNextVideoStartsAfresh();
    void theEndOfAVideoLeavesThePage();
    void theEndQuitsAfterSavingWhenOpenedFromOutside();
    void theEndQuitsAtOnceWhenThereIsNothingToSave();
    void aCriticalErrorLeavesThePage();
    void aCriticalErrorQuitsAfterSavingWhenOpenedFromOutside();
    void errorsArePassedOn();
    void anErrorThatLeavesThePageThereShowsTheWayOn_data();
    void anErrorThatLeavesThePageThereShowsTheWayOn();
    void theEndOfAVideoFromOutsideEndsTheProgramWithThePlaceSaved();
    void aVideoThatComesInTimeKeepsTheProgramFromEnding();
    void leavingHidesTheToolbarAndIsDeafToBuffering();
    void theOrderOfLeaving();
    void theWindowsWayBackIsTheSame();
};

void TestPlayerPageLeave::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPageLeave::init()
{
    QVERIFY(showPage());
}

void TestPlayerPageLeave::cleanup()
{
    removePage();
}

void TestPlayerPageLeave::backSavesThePlaceAndLeavesAtOnce()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    QStringList order;
    connect(m_page.get(), &PlayerPage::goBack, this, [&] { order.append(u"goBack"_s); });
    connect(m_page.get(), &PlayerPage::savingReady, this,
            [&] { order.append(u"ready, "_s + f.savedPositions().join(u' ')); });
    m_page->backButton();
    QCOMPARE(order, QStringList{u"goBack"_s});
    QVERIFY(!m_page->isSavingDone());
    QVERIFY(PlayerPageProbe::guard(*m_page)->isActive());
    QTRY_COMPARE(order.size(), 2);
    QCOMPARE(order.last(), u"ready, urn:1 12"_s);
    QVERIFY(m_page->isSavingDone());
    QVERIFY(!PlayerPageProbe::guard(*m_page)->isActive());
    QVERIFY(!m_page->navigationBar()->isEnabled());
}

void TestPlayerPageLeave::backTwiceSavesOnce()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    m_page->backButton();
    QTRY_COMPARE(ready.size(), 1);
    m_page->backButton();
    QCOMPARE(back.size(), 1);
    QCOMPARE(ready.size(), 1);
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
}

void TestPlayerPageLeave::aRendererThatNeverAnswersHoldsThePageForTwoSeconds()
{
    f.media.hangsOnPause = true;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QTimer *guard = PlayerPageProbe::guard(*m_page);
    QVERIFY(guard->isSingleShot());
    QCOMPARE(guard->interval(), 2000);
    QCOMPARE(ready.size(), 0);
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::backButtonError() Timeout. Couldn't get reply from the renderer");
    QVERIFY(runOut(guard));
    QCOMPARE(ready.size(), 1);
    QVERIFY(m_page->isSavingDone());
}

void TestPlayerPageLeave::backWhilePausedIsDoneAtOnce()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    f.controller->pause();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QCOMPARE(ready.size(), 1);
    QVERIFY(m_page->isSavingDone());
    QVERIFY2(!PlayerPageProbe::guard(*m_page)->isActive(), "nothing is waited for any more");
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
}

void TestPlayerPageLeave::backWithNothingToSaveStopsAtOnce()
{
    VideoInfo stream;
    stream.url = u"http://h/stream"_s;
    QVERIFY(play(stream));
    f.backend->clearCommands();
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    m_page->backButton();
    QCOMPARE(f.backend->commands().first(), u"stop"_s);
    QCOMPARE(back.size(), 1);
    QVERIFY(!PlayerPageProbe::guard(*m_page)->isActive());
    QTRY_COMPARE(f.controller->state(), AvloRenderer::Stopped);
}

void TestPlayerPageLeave::aVideoOnTheCardHasAPlaceToSave()
{
    VideoInfo video;
    video.url = MYDOCS_URL + u"/Movies/a.mp4"_s;
    video.duration = 60;
    QVERIFY(play(video));
    m_page->backButton();
    QVERIFY(PlayerPageProbe::guard(*m_page)->isActive());
    QVERIFY(!f.backend->commands().contains(u"stop"_s));
}

void TestPlayerPageLeave::backWhileOpeningStopsWhenItWouldPlay()
{
    f.media.prerollDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    QVERIFY(f.waitFor(AvloRenderer::Transitioning));
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QCOMPARE(ready.size(), 1);
    f.backend->advance(2s);
    QTRY_VERIFY(f.backend->commands().contains(u"stop"_s));
    QTRY_COMPARE(f.controller->state(), AvloRenderer::Stopped);
}

void TestPlayerPageLeave::theBarsBackButtonTakesTheSameRoad()
{
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    m_page->navigationBar()->backButton()->click();
    QCOMPARE(back.size(), 1);
    QVERIFY(f.widget->renderer()->property("render-rectangle").toString().startsWith(u"0,"_s));
}

void TestPlayerPageLeave::theNextVideoStartsAfresh()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->backButton();
    QTRY_VERIFY(m_page->isSavingDone());
    f.controller->setPendingAction(PlayerController::NoAction);
    QVERIFY(play(PlayerFixture::video(u"urn:2"_s)));
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    m_page->backButton();
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageLeave::theEndOfAVideoLeavesThePage()
{
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    f.backend->advance(60s);
    QTRY_COMPARE(back.size(), 1);
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 0"_s});
}

void TestPlayerPageLeave::theEndQuitsAfterSavingWhenOpenedFromOutside()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    f.backend->advance(60s);
    QTRY_VERIFY(PlayerPageProbe::guard(*m_page)->isActive());
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 0"_s});
    QVERIFY(!f.backend->commands().contains(u"stop"_s));
    m_page->playTimeSaved();
    QCOMPARE(f.backend->commands().last(), u"stop"_s);
    QCOMPARE(back.size(), 0);
}

void TestPlayerPageLeave::theEndQuitsAtOnceWhenThereIsNothingToSave()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    VideoInfo stream;
    stream.url = u"http://h/stream"_s;
    QVERIFY(play(stream));
    f.backend->advance(60s);
    QTRY_VERIFY(f.backend->commands().contains(u"stop"_s));
}

void TestPlayerPageLeave::aCriticalErrorLeavesThePage()
{
    f.media.fault = AvloError{308, u"unknown format"_s};
    f.backend->setDefaultMedia(f.media);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    QSignalSpy errors(m_page.get(), &PlayerPage::playerError);
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    QTRY_COMPARE(back.size(), 1);
    QCOMPARE(errors.size(), 1);
    QCOMPARE(errors.first().first().toString(), qtTrId("qtn_vide_error_format"));
    QVERIFY(m_page->isSavingDone());
}

void TestPlayerPageLeave::aCriticalErrorQuitsAfterSavingWhenOpenedFromOutside()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    m_page->playbackEndedByError(); // nothing was played: nothing happens
    QVERIFY(!PlayerPageProbe::guard(*m_page)->isActive());
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    m_page->playbackEndedByError();
    QVERIFY(PlayerPageProbe::guard(*m_page)->isActive());
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::backButtonError() Timeout. Couldn't get reply from the renderer");
    QVERIFY(runOut(PlayerPageProbe::guard(*m_page)));
    QCOMPARE(f.backend->commands(), QStringList{u"stop"_s});
}

void TestPlayerPageLeave::errorsArePassedOn()
{
    QSignalSpy errors(m_page.get(), &PlayerPage::playerError);
    Q_EMIT f.controller->rendererError(u"one"_s);
    Q_EMIT f.controller->error(u"two"_s);
    Q_EMIT f.widget->error(u"three"_s);
    QStringList messages;
    for (const QVariantList &arguments : errors)
        messages.append(arguments.first().toString());
    QCOMPARE(messages, (QStringList{u"one"_s, u"two"_s, u"three"_s}));
}

void TestPlayerPageLeave::anErrorThatLeavesThePageThereShowsTheWayOn_data()
{
    QTest::addColumn<int>("backButton");
    QTest::addColumn<QString>("urn");
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("shown");
    const int normal = PlayerPage::NormalBackButton;
    const int outside = PlayerPage::TvMainViewBackButton;
    QTest::newRow("a foreign file that is not there") << outside << QString() << 300 << true;
    QTest::newRow("a server that is away, from outside") << outside << QString() << 301 << true;
    QTest::newRow("a server that is away") << normal << QString() << 301 << true;
    QTest::newRow("a page that is left") << normal << u"urn:1"_s << 300 << false;
    QTest::newRow("a program that ends") << outside << u"urn:1"_s << 300 << false;
}

// A page that is black, with nothing on it: nobody knows that it waits for a tap.
void TestPlayerPageLeave::anErrorThatLeavesThePageThereShowsTheWayOn()
{
    QFETCH(int, backButton);
    QFETCH(QString, urn);
    QFETCH(int, code);
    m_page->setBackButtonType(PlayerPage::BackButtonType(backButton));
    f.media.fault = AvloError{code, u"gone"_s};
    f.backend->setDefaultMedia(f.media);
    VideoInfo video = PlayerFixture::video();
    video.urn = urn;
    video.title.clear();
    video.url = u"file:///nowhere/at%20all.mp4"_s;
    QSignalSpy errors(m_page.get(), &PlayerPage::playerError);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"PlayerController::error"_s));
    f.controller->play(video);
    QTRY_COMPARE(errors.size(), 1);
    const PlayerOverlay *overlay = PlayerPageProbe::overlay(*m_page);
    QTEST(QTest::qWaitFor([&] { return overlay->isShown() && f.widget->controlsVisible(); }, 300), "shown");
    if (!overlay->isShown())
        return;
    QVERIFY(overlay->toolbar()->isVisible());
    QVERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(overlay->title(), u"at all.mp4"_s);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    m_page->handleBackButton();
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageLeave::theEndOfAVideoFromOutsideEndsTheProgramWithThePlaceSaved()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(PlayerFixture::video()));
    QStringList savedAtQuit;
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            [&] { savedAtQuit = f.savedPositions(); });
    connect(f.controller.get(), &PlayerController::playbackEnded, this,
            [&] { runOut(PlayerPageProbe::guard(*m_page)); });
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::backButtonError() Timeout. Couldn't get reply from the renderer");
    QTimer::singleShot(0, this, [&] { f.backend->advance(60s); });
    QTimer giveUp;
    giveUp.setSingleShot(true);
    connect(&giveUp, &QTimer::timeout, this, [] { QCoreApplication::exit(1); });
    giveUp.start(20s);
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(savedAtQuit, QStringList{u"urn:1 0"_s});
    QCOMPARE(f.backend->commands().last(), u"stop"_s);
    // The end of the program closed the window: for the other tests.
    m_window->showForProfile();
    QTRY_VERIFY(m_window->isOnDisplay());
}

void TestPlayerPageLeave::aVideoThatComesInTimeKeepsTheProgramFromEnding()
{
    // A video from outside has ended; before the program ends, another one is asked for.
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(60s);
    QTRY_VERIFY(PlayerPageProbe::guard(*m_page)->isActive());
    QVERIFY(play(PlayerFixture::video(u"urn:2"_s)));
    QVERIFY(!PlayerPageProbe::guard(*m_page)->isActive());
    f.backend->clearCommands();
    Q_EMIT m_page->savingReady();
    QCOMPARE(f.backend->commands(), QStringList()); // not shut down
    // Its own end ends the program as ever.
    f.backend->advance(60s);
    QTRY_VERIFY(PlayerPageProbe::guard(*m_page)->isActive());
}

void TestPlayerPageLeave::leavingHidesTheToolbarAndIsDeafToBuffering()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->controlsVisibilityChanged(true);
    QVERIFY(PlayerPageProbe::overlay(*m_page)->toolbar()->isVisible());
    m_page->backButton();
    QVERIFY(!PlayerPageProbe::overlay(*m_page)->toolbar()->isVisible());
    QVERIFY(!PlayerPageProbe::spinner(*m_page)->isVisible());
    Q_EMIT f.controller->buffering(20);
    QCOMPARE(PlayerPageProbe::label(*m_page), nullptr);
}

void TestPlayerPageLeave::theOrderOfLeaving()
{
    QVERIFY(play(PlayerFixture::video()));
    f.controller->handleEvent(PlayerController::TransitionBegan);
    f.backend->clearCommands();
    QStringList order;
    connect(f.controller.get(), &PlayerController::hideBufferIconRequested, this,
            [&] { order.append(u"icon"_s); });
    connect(m_page.get(), &PlayerPage::goBack, this,
            [&] { order.append(u"goBack"_s + f.backend->commands().join(u' ')); });
    m_page->backButton();
    QCOMPARE(order.first(2), (QStringList{u"icon"_s, u"goBack"_s}));
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
}

void TestPlayerPageLeave::theWindowsWayBackIsTheSame()
{
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    Q_EMIT m_page->backButtonClicked();
    QCOMPARE(back.size(), 1);
}

QTEST_MAIN(TestPlayerPageLeave)
#include "test_playerpageleave.moc"
