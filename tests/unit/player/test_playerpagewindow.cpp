// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

#include <QImage>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using toolkit::QueryDialog;
using toolkit::Sheet;

// What the window does to the player page in its less usual states: the task switcher, another page above,
// sound without a picture, a menu that is still open; and to whom the keys belong meanwhile.
class TestPlayerPageWindow : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void thePictureStaysUnderTheDetails();
    void underThePausedPictureNothingIsKept();
    void aPageThatIsCoveredIsOpaque();
    void nothingGoesOnInTheSwitcher();
    void nothingGoesOnUnderTheLock_data();
    void nothingGoesOnUnderTheLock();
    void onlyAPausedVideoGoesOn_data();
    void onlyAPausedVideoGoesOn();
    void activationLeavesTheMenuItsBar();
    void soundGoesOnBehindOtherWindows_data();
    void soundGoesOnBehindOtherWindows();
    void keysAreTheDialogsOwn_data();
    void keysAreTheDialogsOwn();
    void keysAreDeafUntilTheSheetIsGone();
    void eitherHalfOfBackspaceLeaves_data();
    void eitherHalfOfBackspaceLeaves();

private:
    [[nodiscard]] bool isPictureSeen() const
    {
        const QImage seen = m_window->grab().toImage();
        return seen.pixelColor(seen.rect().center()).value() > 0;
    }
};

void TestPlayerPageWindow::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageWindow::init()
{
    begin();
}

void TestPlayerPageWindow::cleanup()
{
    FakeDevice::instance() = FakeDevice();
    end();
    // Also when a test ended in the switcher.
    m_window->raiseToFront();
    QTRY_VERIFY(m_window->isOnDisplay());
}

// Its output is moved off the screen when the page is left; while the details come over it the moving picture
// stays in its place, until the page is back.
void TestPlayerPageWindow::thePictureStaysUnderTheDetails()
{
    QVERIFY(play(PlayerFixture::video()));
    QVERIFY(isPictureSeen());
    m_page->handleInfoButtonClick();
    f.controller->disableOutputRectangle();
    QVERIFY(isPictureSeen());
    toolkit::ApplicationPage details;
    details.appear(m_window.get(), toolkit::Appearance::Immediate);
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    QTRY_VERIFY(!isPictureSeen());
    // Only the page's coming back from there is waited for.
    f.widget->setOutputRectangleOverride(true);
    details.appear(m_window.get(), toolkit::Appearance::Immediate);
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    QTRY_VERIFY(m_page->isShown());
    QVERIFY(isPictureSeen());
}

void TestPlayerPageWindow::underThePausedPictureNothingIsKept()
{
    QVERIFY(play(PlayerFixture::video()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->handleInfoButtonClick();
    f.controller->disableOutputRectangle();
    QVERIFY(!isPictureSeen());
}

void TestPlayerPageWindow::aPageThatIsCoveredIsOpaque()
{
    QVERIFY(play(PlayerFixture::video()));
    m_window->setGlobalAlpha(0.5);
    QVERIFY(m_window->windowOpacity() < 0.6);
    m_page->playerPageNotOnTop();
    QCOMPARE(m_window->windowOpacity(), 1.0);
}

// The menu was open when the person went to the task switcher; there it goes.
void TestPlayerPageWindow::nothingGoesOnInTheSwitcher()
{
    QVERIFY(play(stored()));
    m_page->handleMenuClick();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_window->showMinimized();
    QTRY_VERIFY(m_window->isInSwitcher());
    QTRY_VERIFY(!m_window->windowHandle()->isExposed()); // the window manager is done with it
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(PlayerPageProbe::wasPlaying(*m_page));
    QVERIFY(m_page->navigationBar()->isEnabled());
    m_window->raiseToFront();
    QTRY_VERIFY(!m_window->isInSwitcher() && m_window->isOnDisplay());
    // Back from there it may.
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList{u"resume"_s});
}

void TestPlayerPageWindow::nothingGoesOnUnderTheLock_data()
{
    QTest::addColumn<bool>("locked");
    QTest::addColumn<bool>("dark");
    QTest::newRow("locked") << true << false;
    QTest::newRow("display off") << false << true;
}

void TestPlayerPageWindow::nothingGoesOnUnderTheLock()
{
    QFETCH(bool, locked);
    QFETCH(bool, dark);
    QVERIFY(play(stored()));
    m_page->handleMenuClick();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    f.controller->deviceLockStatusChanged(locked);
    f.controller->displayStatusChanged(!dark);
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageWindow::onlyAPausedVideoGoesOn_data()
{
    QTest::addColumn<AvloRenderer::State>("state");
    QTest::newRow("stopped") << AvloRenderer::Stopped;
    QTest::newRow("transitioning") << AvloRenderer::Transitioning;
    QTest::newRow("playing") << AvloRenderer::Playing;
}

void TestPlayerPageWindow::onlyAPausedVideoGoesOn()
{
    QFETCH(AvloRenderer::State, state);
    f.controller->rendererStateChanged(state);
    PlayerPageProbe::setWasPlaying(*m_page, true);
    PlayerPageProbe::setSavedState(*m_page, AvloRenderer::Playing);
    PlayerPageProbe::setShareOpened(*m_page, true);
    m_page->setControlsEnabled(false);
    f.backend->clearCommands();
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(PlayerPageProbe::wasPlaying(*m_page));
    QVERIFY(m_page->navigationBar()->isEnabled());
    // And that something was being shared is over in any case.
    f.controller->rendererStateChanged(AvloRenderer::Paused);
    send(QEvent::WindowUnblocked);
    QCOMPARE(f.backend->commands(), QStringList{u"resume"_s});
}

void TestPlayerPageWindow::activationLeavesTheMenuItsBar()
{
    QVERIFY(play(stored()));
    m_page->navigationBar()->menuButton()->click();
    QVERIFY(m_window->isMenuOpen());
    send(QEvent::WindowActivate);
    QVERIFY(!m_page->navigationBar()->isEnabled());
    QCOMPARE(m_page->navigationBar()->opacity(), 0.3);
    m_window->closeMenu();
    QTRY_VERIFY(!m_window->isMenuOpen());
    m_page->setControlsEnabled(false);
    send(QEvent::WindowActivate);
    QVERIFY(m_page->navigationBar()->isEnabled());
}

void TestPlayerPageWindow::soundGoesOnBehindOtherWindows_data()
{
    QTest::addColumn<bool>("picture");
    QTest::newRow("sound") << false;
    QTest::newRow("picture") << true;
}

void TestPlayerPageWindow::soundGoesOnBehindOtherWindows()
{
    QFETCH(bool, picture);
    if (!picture)
        f.media.size = QSize();
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    m_page->qlbOpened(true);
    QCOMPARE(f.backend->commands(), QStringList(picture ? 1 : 0, u"pause"_s));
    m_page->qlbOpened(false);
    f.controller->rendererStateChanged(AvloRenderer::Playing);
    f.backend->clearCommands();
    m_page->pageMinimized();
    QCOMPARE(f.backend->commands(), QStringList(picture ? 1 : 0, u"pause"_s));
    m_page->pageMaximized();
}

void TestPlayerPageWindow::keysAreTheDialogsOwn_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("rename") << u"editAction"_s;
    QTest::newRow("delete") << u"deleteAction"_s;
    QTest::newRow("save as") << u"saveAsAction"_s;
}

void TestPlayerPageWindow::keysAreTheDialogsOwn()
{
    QFETCH(QString, name);
    VideoInfo video = stored();
    if (name == u"saveAsAction"_s)
        video.urn.clear();
    QVERIFY(play(video));
    choose(name);
    QTRY_VERIFY(popup<QueryDialog>() || popup<Sheet>());
    f.backend->clearCommands();
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    for (const int key : {Qt::Key_Backspace, Qt::Key_Space, Qt::Key_Left, Qt::Key_Right}) {
        press(key);
        press(key, QEvent::KeyRelease);
    }
    QCOMPARE(back.size(), 0);
    QCOMPARE(f.backend->commands(), QStringList());
}

// For 1200 ms it is still on its way out, and a key may have been meant for it.
void TestPlayerPageWindow::keysAreDeafUntilTheSheetIsGone()
{
    QVERIFY(play(stored()));
    choose(u"editAction"_s);
    QVERIFY(waitForPopup<Sheet>());
    popup<Sheet>()->reject();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    const EditManager *manager = PlayerPageProbe::editManager(*m_page);
    QVERIFY(manager->isSheetDisplayed());
    f.backend->clearCommands();
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace);
    press(Qt::Key_Right);
    press(Qt::Key_Space, QEvent::KeyRelease);
    QCOMPARE(back.size(), 0);
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(runOut(manager->findChild<QTimer *>(u"displayedTimer"_s)));
    press(Qt::Key_Space, QEvent::KeyRelease);
    QCOMPARE(f.backend->commands(), QStringList{u"pause"_s});
}

void TestPlayerPageWindow::eitherHalfOfBackspaceLeaves_data()
{
    QTest::addColumn<QEvent::Type>("type");
    QTest::newRow("press") << QEvent::KeyPress;
    QTest::newRow("release") << QEvent::KeyRelease;
}

// The press may have gone to a dialog that it closed.
void TestPlayerPageWindow::eitherHalfOfBackspaceLeaves()
{
    QFETCH(QEvent::Type, type);
    QVERIFY(play(PlayerFixture::video()));
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace, type);
    QCOMPARE(back.size(), 1);
}

QTEST_MAIN(TestPlayerPageWindow)
#include "test_playerpagewindow.moc"
