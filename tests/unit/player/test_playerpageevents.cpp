// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/label.h>

#include <QAction>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class TestPlayerPageEvents : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theMenuPausesAndClosingItResumes();
    void aPausedVideoStaysPausedAfterTheMenu();
    void afterSharingTheVideoStaysPaused();
    void deactivationPausesAPicture();
    void keysSeekPauseAndLeave();
    void keysAreDeafWhileTheMenuIsOpen();
    void minimisingPausesAndMaximisingAllowsPlaying();
    void aPageThatIsCoveredGivesTheBarBack();
    void theQuickLaunchBarPauses();
    void unmountingPausesAStoredVideo();
    void theCardComingBackShowsTheControls();
    void unblockingResumesOnlyWhatThePagePaused_data();
    void unblockingResumesOnlyWhatThePagePaused();
    void blockingRemembersTheStateUnlessThePagePaused();
    void aMenuWithEntriesPausesAndResumes();
    void deactivationLeavesSoundAndADarkDisplayAlone();
    void keysAreDeafWhileADialogIsOpen();
    void aCoveredPageKeepsThePendingAction();
    void aWindowThatLeavesTheDisplayPausesUnlessOnTv();
    void aMinimisedPageStaysAsItIsWhenTheCardComesBack();
};

void TestPlayerPageEvents::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPageEvents::init()
{
    QVERIFY(showPage());
}

void TestPlayerPageEvents::cleanup()
{
    removePage();
}

void TestPlayerPageEvents::theMenuPausesAndClosingItResumes()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->handleMenuClick();
    QCOMPARE(m_page->navigationBar()->opacity(), 0.3);
    QVERIFY(!m_page->navigationBar()->isEnabled());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    send(QEvent::WindowUnblocked);
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(m_page->navigationBar()->opacity(), 0.9);
    QVERIFY(m_page->navigationBar()->isEnabled());
}

void TestPlayerPageEvents::aPausedVideoStaysPausedAfterTheMenu()
{
    QVERIFY(play(PlayerFixture::video()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->handleMenuClick();
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageEvents::afterSharingTheVideoStaysPaused()
{
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy shared(m_page.get(), &PlayerPage::shareVideo);
    m_page->handleMenuClick();
    m_page->shareActionTriggered();
    QCOMPARE(shared.size(), 1);
    QCOMPARE(shared.first().first().toString(), u"file:///v/urn-1.mp4"_s);
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageEvents::deactivationPausesAPicture()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    send(QEvent::WindowDeactivate);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    QVERIFY(PlayerPageProbe::wasPlaying(*m_page));
    m_page->setControlsEnabled(false);
    send(QEvent::WindowActivate);
    QVERIFY(m_page->navigationBar()->isEnabled());
}

void TestPlayerPageEvents::keysSeekPauseAndLeave()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(20s);
    f.backend->clearCommands();
    press(Qt::Key_Right);
    press(Qt::Key_Right, QEvent::KeyRelease);
    press(Qt::Key_Left);
    press(Qt::Key_Space);
    QCOMPARE(f.backend->commands(), (QStringList{u"seek 30000"_s, u"seek 20000"_s}));
    press(Qt::Key_Space, QEvent::KeyRelease);
    QCOMPARE(f.backend->commands().last(), u"pause"_s);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace);
    press(Qt::Key_Backspace, QEvent::KeyRelease);
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageEvents::keysAreDeafWhileTheMenuIsOpen()
{
    m_page->addAction(new QAction(u"Entry"_s, m_page.get()));
    QVERIFY(play(PlayerFixture::video()));
    m_page->handleMenuClick();
    QVERIFY(m_window->isMenuOpen());
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace);
    QCOMPARE(back.size(), 0);
    m_window->closeMenu();
    QTRY_VERIFY(!m_window->isMenuOpen());
    press(Qt::Key_Backspace);
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageEvents::minimisingPausesAndMaximisingAllowsPlaying()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    m_page->pageMinimized();
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    // No buffering is shown meanwhile.
    Q_EMIT f.controller->buffering(20);
    QCOMPARE(PlayerPageProbe::label(*m_page), nullptr);
    f.backend->clearCommands();
    m_page->pageMinimized(); // paused already
    QCOMPARE(f.backend->commands(), QStringList());
    f.controller->resume(); // playing while minimised is paused again
    QTRY_VERIFY(f.backend->commands().contains(u"pause"_s));
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->pageMaximized();
    f.backend->clearCommands();
    f.controller->resume();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(f.backend->commands(), QStringList{u"resume"_s});
    QCOMPARE(f.widget->renderer()->property("xid").toInt(), int(m_window->effectiveWindowId()));
    Q_EMIT f.controller->buffering(20);
    QVERIFY(PlayerPageProbe::label(*m_page) != nullptr);
}

void TestPlayerPageEvents::aPageThatIsCoveredGivesTheBarBack()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    m_page->navigationBar()->setOpacity(0.3);
    toolkit::ApplicationPage other;
    other.appear(m_window.get(), toolkit::Appearance::Immediate);
    QTRY_COMPARE(m_page->navigationBar()->opacity(), 1.0);
    QCOMPARE(f.backend->commands(), QStringList()); // the window is still on the display
}

void TestPlayerPageEvents::theQuickLaunchBarPauses()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    m_page->qlbOpened(true);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->qlbOpened(false);
    f.controller->resume();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    FakeDevice::instance().route = u"tvout"_s;
    f.backend->clearCommands();
    m_page->qlbOpened(true);
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageEvents::unmountingPausesAStoredVideo()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    m_page->preUnmount();
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    VideoInfo stream;
    stream.url = u"http://h/x"_s;
    QVERIFY(play(stream));
    f.backend->clearCommands();
    m_page->preUnmount();
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageEvents::theCardComingBackShowsTheControls()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->massStorageModeChanged(false);
    QCOMPARE(m_page->navigationBar()->opacity(), 0.9);
    m_page->massStorageModeChanged(true);
    QVERIFY(f.widget->controlsVisible());
    QVERIFY(PlayerPageProbe::overlay(*m_page)->isShown());
    QVERIFY(f.controller->suppressBusyOff());
}

void TestPlayerPageEvents::unblockingResumesOnlyWhatThePagePaused_data()
{
    QTest::addColumn<bool>("wasPlaying");
    QTest::addColumn<bool>("savedPlaying");
    QTest::addColumn<bool>("shareOpened");
    QTest::addColumn<bool>("dialogOpen");
    for (int row = 0; row < 16; ++row) {
        const bool was = row & 1;
        const bool saved = row & 2;
        const bool share = row & 4;
        const bool dialog = row & 8;
        QTest::addRow("was %d saved %d share %d dialog %d", was, saved, share, dialog)
            << was << saved << share << dialog;
    }
}

void TestPlayerPageEvents::unblockingResumesOnlyWhatThePagePaused()
{
    QFETCH(bool, wasPlaying);
    QFETCH(bool, savedPlaying);
    QFETCH(bool, shareOpened);
    QFETCH(bool, dialogOpen);
    QVERIFY(play(PlayerFixture::video()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    PlayerPageProbe::setWasPlaying(*m_page, wasPlaying);
    PlayerPageProbe::setSavedState(*m_page, savedPlaying ? AvloRenderer::Playing : AvloRenderer::Paused);
    PlayerPageProbe::setShareOpened(*m_page, shareOpened);
    PlayerPageProbe::setDialogOpen(*m_page, dialogOpen);
    f.controller->setPauseWhenPlaying(true);
    m_page->setControlsEnabled(false);
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    const bool resumes = wasPlaying && savedPlaying && !shareOpened && !dialogOpen;
    QCOMPARE(f.backend->commands(), QStringList(resumes ? 1 : 0, u"resume"_s));
    QCOMPARE(PlayerPageProbe::wasPlaying(*m_page), wasPlaying && !resumes);
    QVERIFY(m_page->navigationBar()->isEnabled());
    // Playback that starts while a dialog is open is paused, also after the event.
    f.backend->clearCommands();
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList(dialogOpen ? 1 : 0, u"pause"_s));
}

void TestPlayerPageEvents::blockingRemembersTheStateUnlessThePagePaused()
{
    QVERIFY(play(PlayerFixture::video()));
    send(QEvent::WindowBlocked);
    QVERIFY(!m_page->navigationBar()->isEnabled());
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    PlayerPageProbe::setWasPlaying(*m_page, true);
    send(QEvent::WindowBlocked); // still remembers that it played
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList{u"resume"_s});
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    send(QEvent::WindowBlocked); // remembers the pause
    PlayerPageProbe::setWasPlaying(*m_page, true);
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageEvents::aMenuWithEntriesPausesAndResumes()
{
    m_page->addAction(new QAction(u"Entry"_s, m_page.get()));
    QVERIFY(play(PlayerFixture::video()));
    m_page->navigationBar()->menuButton()->click();
    QVERIFY(m_window->isMenuOpen());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QVERIFY(!m_page->navigationBar()->isEnabled());
    m_window->closeMenu();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QVERIFY(m_page->navigationBar()->isEnabled());
}

void TestPlayerPageEvents::deactivationLeavesSoundAndADarkDisplayAlone()
{
    f.media.size = QSize();
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    send(QEvent::WindowDeactivate);
    QCOMPARE(f.backend->commands(), QStringList());
    f.controller->handleMetadataChange(u"res-x"_s, {320});
    f.controller->displayStatusChanged(false);
    send(QEvent::WindowDeactivate);
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
    f.controller->displayStatusChanged(true);
    send(QEvent::WindowDeactivate);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
}

void TestPlayerPageEvents::keysAreDeafWhileADialogIsOpen()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    PlayerPageProbe::setDialogOpen(*m_page, true);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace);
    press(Qt::Key_Right);
    press(Qt::Key_Space, QEvent::KeyRelease);
    QCOMPARE(back.size(), 0);
    QCOMPARE(f.backend->commands(), QStringList());
    m_page->massStorageModeChanged(false); // the card went: the dialog is closed
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
    press(Qt::Key_Backspace);
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageEvents::aCoveredPageKeepsThePendingAction()
{
    QVERIFY(play(PlayerFixture::video()));
    toolkit::ApplicationPage other;
    other.appear(m_window.get(), toolkit::Appearance::Immediate);
    QTRY_VERIFY(!m_page->isShown());
    f.controller->setPendingAction(PlayerController::StopWhenPlaying);
    f.backend->clearCommands();
    m_page->pageMinimized();
    m_page->pageMaximized();
    QCOMPARE(f.backend->commands(), QStringList());
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList{u"stop"_s});
}

void TestPlayerPageEvents::aWindowThatLeavesTheDisplayPausesUnlessOnTv()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->navigationBar()->setOpacity(0.3);
    m_window->hide();
    QTRY_VERIFY(!m_window->isOnDisplay());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QCOMPARE(m_page->navigationBar()->opacity(), 1.0);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    f.backend->clearCommands();
    m_page->playerPageNotOnTop();
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
    FakeDevice::instance().route = u"tvout"_s;
    m_page->playerPageNotOnTop();
    QCOMPARE(f.backend->commands().size(), 1);
    m_window->showForProfile();
    QTRY_VERIFY(m_window->isOnDisplay());
}

void TestPlayerPageEvents::aMinimisedPageStaysAsItIsWhenTheCardComesBack()
{
    QVERIFY(play(PlayerFixture::video()));
    m_page->pageMinimized();
    m_page->massStorageModeChanged(true);
    QVERIFY(!f.widget->controlsVisible());
    QVERIFY(!f.controller->suppressBusyOff());
    m_page->pageMaximized();
}

QTEST_MAIN(TestPlayerPageEvents)
#include "test_playerpageevents.moc"
