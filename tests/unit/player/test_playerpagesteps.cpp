// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

#include <platform/toolkit/spinner.h>

using namespace Qt::Literals::StringLiterals;

// Steps of the player page that other steps, which usually come with them, would make up for.
class TestPlayerPageSteps : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void minimisingIsTwoReasonsToPause();
    void minimisingHidesTheSpinner();
    void theQuickLaunchBarIsAReasonUntilItCloses();
    void theCardComingBackLetsPlay();
    void theCardComingBackIsFollowedByBuffering();
    void theEndOfARenameGivesThePageBack();
    void sharingPausesBeforeItIsTold();
    void comingBackFillsTheScreen();
    void theToolbarIsEnabledWithTheBar();

private:
    // What the player asks for when the renderer begins to play.
    [[nodiscard]] QStringList atPlaying()
    {
        f.backend->clearCommands();
        f.controller->rendererStateChanged(AvloRenderer::Playing);
        return f.backend->commands();
    }
};

void TestPlayerPageSteps::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageSteps::init()
{
    begin();
}

void TestPlayerPageSteps::cleanup()
{
    end();
}

// The player knows that the page is minimised, and has been told to pause: neither relies on the other.
void TestPlayerPageSteps::minimisingIsTwoReasonsToPause()
{
    VideoInfo video = stored();
    f.controller->play(video);
    m_page->pageMinimized();
    QCOMPARE(atPlaying(), (QStringList{u"pause"_s, u"pause"_s}));
    m_page->pageMaximized();
    QCOMPARE(atPlaying(), QStringList());
}

void TestPlayerPageSteps::minimisingHidesTheSpinner()
{
    VideoInfo video = stored();
    f.controller->play(video);
    QVERIFY(PlayerPageProbe::spinner(*m_page)->isVisible());
    m_page->pageMinimized();
    QVERIFY(!PlayerPageProbe::spinner(*m_page)->isVisible());
    m_page->pageMaximized();
}

void TestPlayerPageSteps::theQuickLaunchBarIsAReasonUntilItCloses()
{
    m_page->qlbOpened(true);
    QCOMPARE(atPlaying(), QStringList{u"pause"_s});
    m_page->qlbOpened(false);
    QCOMPARE(atPlaying(), QStringList());
}

void TestPlayerPageSteps::theCardComingBackLetsPlay()
{
    f.controller->setPendingAction(PlayerController::PauseWhenPlaying);
    QCOMPARE(atPlaying(), QStringList{u"pause"_s});
    m_page->massStorageModeChanged(true);
    QCOMPARE(atPlaying(), QStringList());
}

void TestPlayerPageSteps::theCardComingBackIsFollowedByBuffering()
{
    QVERIFY(play(stored()));
    m_page->backButton();
    Q_EMIT f.controller->buffering(20);
    QVERIFY(!PlayerPageProbe::label(*m_page));
    m_page->massStorageModeChanged(true);
    Q_EMIT f.controller->buffering(20);
    QVERIFY(PlayerPageProbe::label(*m_page));
}

// Also where no menu's end would let the video go on.
void TestPlayerPageSteps::theEndOfARenameGivesThePageBack()
{
    QVERIFY(play(stored()));
    m_page->saveCurrentState();
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    f.controller->setStopAtEnd(true);
    f.controller->setPauseWhenPlaying(true);
    PlayerPageProbe::setDialogOpen(*m_page, true);
    PlayerPageProbe::setWasPlaying(*m_page, true);
    m_page->controlsVisibilityChanged(true);
    m_page->editOrSaveAsDone();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(resumes(), 1);
    QVERIFY(!f.controller->stopAtEnd());
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
    QVERIFY(!PlayerPageProbe::overlay(*m_page)->isShown());
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace); // no dialog is open
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageSteps::sharingPausesBeforeItIsTold()
{
    QVERIFY(play(stored()));
    f.backend->clearCommands();
    QStringList before;
    connect(m_page.get(), &PlayerPage::shareVideo, m_page.get(), [&](const QString &url) {
        before = f.backend->commands() + QStringList{url};
        QVERIFY(!PlayerPageProbe::shareOpened(*m_page));
    });
    m_page->shareActionTriggered();
    QCOMPARE(before, (QStringList{u"pause"_s, m_videos.constFirst().url}));
    QVERIFY(PlayerPageProbe::shareOpened(*m_page));
}

void TestPlayerPageSteps::comingBackFillsTheScreen()
{
    QVERIFY(play(stored()));
    m_window->setProfile(toolkit::ApplicationWindow::Profile::Handset);
    m_window->showForProfile();
    QTRY_VERIFY(m_window->isFullScreen());
    m_window->setWindowState(Qt::WindowNoState);
    QTRY_VERIFY(!m_window->isFullScreen());
    m_page->resetSavedState();
    const bool fills = QTest::qWaitFor([this] { return m_window->isFullScreen(); });
    m_window->setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    m_window->showForProfile();
    QTRY_VERIFY(m_window->isOnDisplay());
    QVERIFY(fills);
}

// Wherever it stands.
void TestPlayerPageSteps::theToolbarIsEnabledWithTheBar()
{
    m_page->navigationBar()->setCentralWidget(nullptr);
    toolkit::Widget *toolbar = PlayerPageProbe::overlay(*m_page)->toolbar();
    toolbar->setParentItem(m_page.get());
    for (const bool enabled : {false, true}) {
        m_page->setControlsEnabled(enabled);
        QCOMPARE(toolbar->isEnabled(), enabled);
        QCOMPARE(m_page->navigationBar()->isEnabled(), enabled);
    }
}

QTEST_MAIN(TestPlayerPageSteps)
#include "test_playerpagesteps.moc"
