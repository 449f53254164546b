// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

#include <platform/media/playercontrols.h>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using toolkit::QueryDialog;
using toolkit::Sheet;

// A video that waits goes on exactly once, or not at all: also when a menu, a sheet or the window comes
// between a command and its answer.
class TestPlayerPageWaiting : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aMenuThatIsClosedAtOnceLetsTheVideoGoOn();
    void aMenuThatIsClosedAtOnceDoesNotOutweighAnotherPause_data();
    void aMenuThatIsClosedAtOnceDoesNotOutweighAnotherPause();
    void aMenuThatIsOpenedAgainAtOnceLetsTheVideoWait();
    void theWayBackFromTheDetailsMayBeQuicker();
    void theCardThatGoesLetsNothingGoOn_data();
    void theCardThatGoesLetsNothingGoOn();
    void afterSharingItWaitsWhateverTheWindowDid_data();
    void afterSharingItWaitsWhateverTheWindowDid();
    void afterARenameInTheSwitcherItWaits();
    void aFileThatIsGoingCannotBePlayed();
    void theQuestionGoesItsWayOut();
    void backAfterTheEndLeadsToTheLibrary();
    void whatIsJudgedAndCopiedIsTheVideoOnThePage();
    void whatIsLeftIsTheVideoOnThePage_data();
    void whatIsLeftIsTheVideoOnThePage();
};

void TestPlayerPageWaiting::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPageWaiting::init()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    begin();
}

void TestPlayerPageWaiting::cleanup()
{
    end();
}

// Opened and closed within the time that the renderer takes to pause.
void TestPlayerPageWaiting::aMenuThatIsClosedAtOnceLetsTheVideoGoOn()
{
    f.media.pauseDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(stored()));
    f.backend->clearCommands();
    m_page->navigationBar()->menuButton()->click();
    m_window->closeMenu();
    QTRY_VERIFY(!m_window->isMenuOpen());
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    f.backend->advance(2s);
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QTRY_COMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"resume"_s}));
    // That was all: a pause of the person's own is one.
    f.controller->pause();
    f.backend->advance(2s);
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QCOMPARE(resumes(), 1);
}

void TestPlayerPageWaiting::aMenuThatIsClosedAtOnceDoesNotOutweighAnotherPause_data()
{
    QTest::addColumn<QString>("reason");
    for (const QString &reason : {u"lock"_s, u"quick launch bar"_s, u"switcher"_s, u"card"_s, u"key"_s})
        QTest::newRow(qPrintable(reason)) << reason;
}

void TestPlayerPageWaiting::aMenuThatIsClosedAtOnceDoesNotOutweighAnotherPause()
{
    QFETCH(QString, reason);
    f.media.pauseDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(stored()));
    m_page->navigationBar()->menuButton()->click();
    m_window->closeMenu();
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    if (reason == u"lock"_s)
        f.controller->deviceLockStatusChanged(true);
    else if (reason == u"quick launch bar"_s)
        m_page->qlbOpened(true);
    else if (reason == u"switcher"_s)
        m_page->pageMinimized();
    else if (reason == u"card"_s)
        m_page->preUnmount();
    else
        press(Qt::Key_Space, QEvent::KeyRelease);
    f.backend->advance(2s);
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QCoreApplication::processEvents();
    QCOMPARE(resumes(), 0);
}

// Opened again before the renderer plays on: no second of the video runs below the menu.
void TestPlayerPageWaiting::aMenuThatIsOpenedAgainAtOnceLetsTheVideoWait()
{
    f.media.resumeDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(stored()));
    f.backend->clearCommands();
    m_page->navigationBar()->menuButton()->click();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_window->closeMenu();
    QTRY_COMPARE(resumes(), 1);
    QTRY_VERIFY(!m_window->isMenuOpen());
    m_page->navigationBar()->menuButton()->click();
    QVERIFY(m_window->isMenuOpen());
    f.backend->advance(2s);
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
    QCOMPARE(f.backend->position(), MediaTime::zero());
    m_window->closeMenu();
    QTRY_COMPARE(resumes(), 2);
    f.backend->advance(2s);
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"resume"_s, u"pause"_s, u"resume"_s}));
}

// Information, and back, within the time that the renderer takes to pause.
void TestPlayerPageWaiting::theWayBackFromTheDetailsMayBeQuicker()
{
    f.media.pauseDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(stored()));
    f.backend->clearCommands();
    m_page->handleInfoButtonClick();
    f.controller->pause(); // by whoever shows the details
    m_page->resetSavedState();
    f.backend->advance(2s);
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"resume"_s}));
}

void TestPlayerPageWaiting::theCardThatGoesLetsNothingGoOn_data()
{
    QTest::addColumn<QString>("what");
    QTest::newRow("rename") << u"editAction"_s;
    QTest::newRow("delete") << u"deleteAction"_s;
    QTest::newRow("menu") << u"menu"_s;
    QTest::newRow("details") << u"details"_s;
}

// It is about to be unmounted, and somebody thinks better of a dialog meanwhile.
void TestPlayerPageWaiting::theCardThatGoesLetsNothingGoOn()
{
    QFETCH(QString, what);
    QVERIFY(play(stored()));
    if (what == u"details"_s) {
        m_page->handleInfoButtonClick();
        f.controller->pause();
    } else if (what == u"menu"_s) {
        m_page->navigationBar()->menuButton()->click();
    } else {
        choose(what);
        QVERIFY(QTest::qWaitFor([this] { return popup<QueryDialog>() || popup<Sheet>(); }));
    }
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->preUnmount();
    if (what == u"details"_s)
        m_page->resetSavedState();
    else if (what == u"menu"_s)
        m_window->closeMenu();
    else if (what == u"editAction"_s)
        popup<Sheet>()->reject();
    else
        popup<QueryDialog>()->reject();
    QTRY_VERIFY(!popup<QueryDialog>() && !popup<Sheet>() && !m_window->isMenuOpen());
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(resumes(), 0);
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
    // The person may.
    f.controller->resume();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
}

void TestPlayerPageWaiting::afterSharingItWaitsWhateverTheWindowDid_data()
{
    QTest::addColumn<bool>("away");
    QTest::newRow("the window keeps the focus") << false;
    QTest::newRow("it is away for a moment") << true;
}

void TestPlayerPageWaiting::afterSharingItWaitsWhateverTheWindowDid()
{
    QFETCH(bool, away);
    QVERIFY(play(stored()));
    Sheet sheet(Sheet::Extent::Content); // of targets
    connect(m_page.get(), &PlayerPage::shareVideo, &sheet, [&] { sheet.appear(m_window.get()); });
    choose(u"shareAction"_s);
    QVERIFY(waitForPopup<Sheet>());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    if (away) {
        send(QEvent::WindowDeactivate);
        send(QEvent::WindowActivate);
    }
    m_page->setControlsEnabled(false);
    sheet.reject();
    QTRY_VERIFY(m_page->navigationBar()->isEnabled()); // unblocked
    QCOMPARE(resumes(), 0);
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
}

void TestPlayerPageWaiting::afterARenameInTheSwitcherItWaits()
{
    QVERIFY(play(stored()));
    choose(u"editAction"_s);
    QVERIFY(waitForPopup<Sheet>());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->pageMinimized();
    popup<Sheet>()->reject();
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(resumes(), 0); // not even for the moment until it is paused again
    m_page->pageMaximized();
}

// The file lies on a slow disk: between Yes and its end the mark would begin it anew.
void TestPlayerPageWaiting::aFileThatIsGoingCannotBePlayed()
{
    QVERIFY(play(stored()));
    choose(u"deleteAction"_s);
    QueryDialog *dialog = question();
    QVERIFY(dialog);
    f.widget->setControlsVisible(true);
    QVERIFY(f.widget->controls()->isEnabled());
    dialog->button(QueryDialog::Yes)->click();
    QVERIFY(m_page->isDeleting());
    QVERIFY(!f.widget->controls()->playButton()->isEnabled());
    QVERIFY(f.waitFor(AvloRenderer::Stopped));
    QTRY_VERIFY(!m_page->isDeleting());
    QVERIFY(f.widget->controls()->playButton()->isEnabled());
    f.controller->setPendingAction(PlayerController::NoAction);
    QVERIFY(play(stored(u"urn:2"_s)));
}

void TestPlayerPageWaiting::theQuestionGoesItsWayOut()
{
    toolkit::Theme::instance()->setReducedMotion(false);
    QVERIFY(play(stored()));
    choose(u"deleteAction"_s);
    QPointer<QueryDialog> dialog = question();
    QVERIFY(dialog);
    QTRY_VERIFY(dialog->isOpen());
    QSignalSpy gone(dialog, &QueryDialog::disappeared);
    dialog->button(QueryDialog::No)->click();
    QVERIFY(!PlayerPageProbe::fileManager(*m_page));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(dialog); // still to be seen
    QTRY_COMPARE(gone.size(), 1);
    QTRY_VERIFY(!dialog);
    QTRY_VERIFY(!m_page->findChild<FileManager *>());
}

// A video from outside has ended, and before the program does, the person goes back: to the library.
void TestPlayerPageWaiting::backAfterTheEndLeadsToTheLibrary()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(stored()));
    f.backend->advance(60s);
    QTRY_VERIFY(PlayerPageProbe::guard(*m_page)->isActive());
    f.backend->clearCommands();
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QCOMPARE(back.size(), 1);
    QCOMPARE(ready.size(), 1);
    QVERIFY(!PlayerPageProbe::guard(*m_page)->isActive());
    QCOMPARE(f.backend->commands(), QStringList()); // shutting down would stop it
}

// A stored video was watched and left; a file that only lies there has just been opened.
void TestPlayerPageWaiting::whatIsJudgedAndCopiedIsTheVideoOnThePage()
{
    QVERIFY(play(stored(u"urn:left"_s)));
    m_page->backButton();
    QTRY_COMPARE(f.savedPositions().size(), 1);
    f.controller->setPendingAction(PlayerController::NoAction);
    VideoInfo open = stored(u"urn:open"_s);
    open.urn.clear();
    m_page->asked.clear();
    QVERIFY(play(open));
    QCOMPARE(m_page->asked.size(), 1);
    QVERIFY(m_page->asked.constFirst().endsWith("urn-open.mp4"));
    choose(u"saveAsAction"_s);
    auto *dialog = popup<SaveAsDialog>();
    QVERIFY(dialog);
    QCOMPARE(dialog->sourcePath(), QUrl(open.url).path(QUrl::FullyEncoded));
    dialog->reject();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
}

void TestPlayerPageWaiting::whatIsLeftIsTheVideoOnThePage_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<bool>("isStored");
    for (const QString &way : {u"back"_s, u"stop"_s, u"end"_s, u"error"_s}) {
        for (const bool isStored : {true, false})
            QTest::addRow("%s, %s", qPrintable(way), isStored ? "stored" : "stream") << way << isStored;
    }
}

void TestPlayerPageWaiting::whatIsLeftIsTheVideoOnThePage()
{
    QFETCH(QString, way);
    QFETCH(bool, isStored);
    QVERIFY(play(stored(u"urn:left"_s)));
    f.backend->advance(30s);
    m_page->backButton();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:left 30"_s});
    f.controller->setPendingAction(PlayerController::NoAction);
    VideoInfo open = stored(u"urn:open"_s);
    if (!isStored) {
        open.urn.clear();
        open.url = u"http://h/stream"_s;
    }
    QVERIFY(play(open));
    f.backend->advance(7s);
    if (way == u"back"_s)
        m_page->backButton();
    else if (way == u"stop"_s)
        f.controller->stop();
    else if (way == u"end"_s)
        f.backend->advance(60s);
    else
        Q_EMIT f.widget->renderer()->error({308, u"broken"_s});
    const QString place = way == u"end"_s ? u"urn:open 0"_s : u"urn:open 7"_s;
    if (isStored)
        QTRY_COMPARE(f.savedPositions(), (QStringList{u"urn:left 30"_s, place}));
    QVERIFY(f.waitFor(way == u"back"_s && isStored ? AvloRenderer::Paused : AvloRenderer::Stopped));
    const QStringList saved = f.savedPositions();
    QCOMPARE(saved.filter(u"urn:left"_s), QStringList{u"urn:left 30"_s});
    QCOMPARE(saved.filter(u"urn:open"_s).isEmpty(), !isStored);
}

QTEST_MAIN(TestPlayerPageWaiting)
#include "test_playerpagewaiting.moc"
