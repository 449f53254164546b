// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;
using toolkit::Sheet;

// What comes between a dialog of the player page and its end: a store that is silent, Back, another request,
// the card.
class TestPlayerPageDialogs : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aDialogAtATime();
    void aStoreThatDoesNotAnswerIsNotWaitedFor_data();
    void aStoreThatDoesNotAnswerIsNotWaitedFor();
    void whatHasComeIsNotTakenAway_data();
    void whatHasComeIsNotTakenAway();
    void nothingComesUpOverAnotherPage_data();
    void nothingComesUpOverAnotherPage();
    void aRequestClosesTheMenu();
    void aRemovalGoesOnWhenThePageIsLeft();
    void theSheetThatIsStillGoingIsNoDialogToWaitFor();
    void theCardTakesTheDialogsAway_data();
    void theCardTakesTheDialogsAway();
    void onlyTheVideoOnThePageIsTouched_data();
    void onlyTheVideoOnThePageIsTouched();
};

void TestPlayerPageDialogs::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageDialogs::init()
{
    begin();
}

void TestPlayerPageDialogs::cleanup()
{
    end();
}

void TestPlayerPageDialogs::aDialogAtATime()
{
    QVERIFY(play(stored()));
    m_page->editCurrent();
    QVERIFY(waitForPopup<Sheet>());
    const qsizetype asked = f.store->statements().size();
    m_page->deleteCurrent();
    m_page->editCurrent();
    QCOMPARE(f.store->statements().size(), asked);
    QVERIFY(!popup<QueryDialog>());
    // No key reaches the video.
    f.backend->clearCommands();
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace);
    press(Qt::Key_Space, QEvent::KeyRelease);
    QCOMPARE(back.size(), 0);
    QCOMPARE(f.backend->commands(), QStringList());
}

void TestPlayerPageDialogs::aStoreThatDoesNotAnswerIsNotWaitedFor_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("rename") << u"editAction"_s;
    QTest::newRow("delete") << u"deleteAction"_s;
}

void TestPlayerPageDialogs::aStoreThatDoesNotAnswerIsNotWaitedFor()
{
    QFETCH(QString, name);
    QVERIFY(play(stored()));
    m_videos.clear(); // the row left the store meanwhile
    choose(name);
    QTimer *guard = PlayerPageProbe::dialogGuard(*m_page);
    QVERIFY(guard->isActive());
    QCOMPARE(guard->interval(), 5000);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace);
    QCOMPARE(back.size(), 0); // it is waited for
    QVERIFY(runOut(guard));
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(resumes(), 1);
    QVERIFY(!popup<Sheet>() && !popup<QueryDialog>());
    press(Qt::Key_Backspace);
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageDialogs::whatHasComeIsNotTakenAway_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("rename") << u"editAction"_s;
    QTest::newRow("delete") << u"deleteAction"_s;
    QTest::newRow("save as") << u"saveAsAction"_s;
}

// The person thinks about it for longer than a store is waited for; and it had come while the menu was still
// there.
void TestPlayerPageDialogs::whatHasComeIsNotTakenAway()
{
    QFETCH(QString, name);
    VideoInfo video = stored();
    if (name == u"saveAsAction"_s)
        video.urn.clear();
    QVERIFY(play(video));
    m_page->navigationBar()->menuButton()->click();
    QVERIFY(m_window->isMenuOpen());
    action(name)->trigger();
    QTRY_VERIFY(popup<QueryDialog>() || popup<Sheet>());
    m_window->closeMenu();
    QTRY_VERIFY(!m_window->isMenuOpen());
    (void)runOut(PlayerPageProbe::dialogGuard(*m_page));
    QVERIFY(popup<QueryDialog>() || popup<Sheet>());
    QCOMPARE(resumes(), 0);
}

void TestPlayerPageDialogs::nothingComesUpOverAnotherPage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("leave");
    for (const QString &name : {u"editAction"_s, u"deleteAction"_s}) {
        for (const QString &leave : {u"back"_s, u"information"_s, u"another page"_s})
            QTest::addRow("%s, %s", qPrintable(name), qPrintable(leave)) << name << leave;
    }
}

void TestPlayerPageDialogs::nothingComesUpOverAnotherPage()
{
    QFETCH(QString, name);
    QFETCH(QString, leave);
    QVERIFY(play(stored()));
    f.store->answerBy([](const SparqlQuery &) { return FakeSparqlAnswer::later(); });
    choose(name);
    int asked = int(f.store->statements().size()) - 1;
    while (f.store->statements().at(asked).type != SparqlQuery::SelectStatement)
        --asked;
    toolkit::ApplicationPage other;
    if (leave == u"back"_s)
        m_page->backButton();
    else if (leave == u"information"_s)
        m_page->handleInfoButtonClick();
    else
        other.appear(m_window.get(), toolkit::Appearance::Immediate);
    f.store->finish(
        asked, {{u"urn:1"_s, u"Title"_s, u"clip.mp4"_s, 60, 0, u"video/mp4"_s, u"file:///v/1.mp4"_s, 1}});
    QCoreApplication::processEvents();
    QVERIFY(!popup<Sheet>() && !popup<QueryDialog>());
    QCOMPARE(resumes(), 0);
    QVERIFY(!PlayerPageProbe::dialogGuard(*m_page)->isActive());
}

void TestPlayerPageDialogs::aRequestClosesTheMenu()
{
    QVERIFY(play(stored()));
    m_page->navigationBar()->menuButton()->click();
    QVERIFY(m_window->isMenuOpen());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->closeDialogs();
    QTRY_VERIFY(!m_window->isMenuOpen());
    QCOMPARE(resumes(), 0); // another video is about to play
    VideoInfo other = stored(u"urn:2"_s);
    QVERIFY(play(other));
    QCOMPARE(f.backend->commands().last(), u"play "_s + other.url + u" 0"_s);
}

void TestPlayerPageDialogs::aRemovalGoesOnWhenThePageIsLeft()
{
    const VideoInfo video = stored();
    QVERIFY(play(video));
    QSignalSpy deleted(m_page.get(), &PlayerPage::deleteFile);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    choose(u"deleteAction"_s);
    QueryDialog *dialog = question();
    QVERIFY(dialog);
    dialog->button(QueryDialog::Yes)->click();
    m_page->backButton(); // before the file is gone
    QCOMPARE(deleted.size(), 0);
    QCOMPARE(back.size(), 1);
    QTRY_COMPARE(deleted.size(), 1);
    QCOMPARE(deleted.first().first().toString(), video.url);
    QCOMPARE(files(), QStringList());
    QCOMPARE(back.size(), 1);
    QTRY_VERIFY(!m_page->findChild<FileManager *>());
}

// The mark of the sheet stays for a moment after it.
void TestPlayerPageDialogs::theSheetThatIsStillGoingIsNoDialogToWaitFor()
{
    QVERIFY(play(stored()));
    choose(u"editAction"_s);
    QVERIFY(waitForPopup<Sheet>());
    popup<Sheet>()->reject();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QVERIFY(PlayerPageProbe::editManager(*m_page)->isSheetDisplayed());
    f.backend->clearCommands();
    LogLines lines("kestrel.player");
    choose(u"editAction"_s);
    QCOMPARE(lines.all().filter(u"Dialog already open!"_s).size(), 1);
    QVERIFY(!popup<Sheet>());
    QTRY_COMPARE(f.backend->commands(), (QStringList{u"pause"_s, u"resume"_s})); // by the menu
    QVERIFY(f.waitFor(AvloRenderer::Playing));
}

void TestPlayerPageDialogs::theCardTakesTheDialogsAway_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("rename") << u"editAction"_s;
    QTest::newRow("delete") << u"deleteAction"_s;
    QTest::newRow("save as") << u"saveAsAction"_s;
}

void TestPlayerPageDialogs::theCardTakesTheDialogsAway()
{
    QFETCH(QString, name);
    VideoInfo video = stored();
    if (name == u"saveAsAction"_s)
        video.urn.clear();
    QVERIFY(play(video));
    QSignalSpy deleted(m_page.get(), &PlayerPage::deleteFile);
    choose(name);
    QVERIFY(QTest::qWaitFor([this] { return popup<QueryDialog>() || popup<Sheet>(); }));
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    m_page->massStorageModeChanged(false);
    QTRY_VERIFY(!popup<QueryDialog>() && !popup<Sheet>());
    QVERIFY(!PlayerPageProbe::fileManager(*m_page));
    QVERIFY(!PlayerPageProbe::editManager(*m_page));
    QVERIFY(!PlayerPageProbe::saveAsManager(*m_page));
    QCOMPARE(m_page->navigationBar()->opacity(), 0.9);
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
    QCOMPARE(f.controller->state(), AvloRenderer::Paused); // it waits for the card
    QCOMPARE(resumes(), 0);
    QCOMPARE(deleted.size(), 0);
    QCOMPARE(files(), QStringList{u"urn-1.mp4"_s});
    // The card is back, and the person goes on.
    f.backend->clearCommands();
    f.controller->resume();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(f.backend->commands(), QStringList{u"resume"_s});
}

void TestPlayerPageDialogs::onlyTheVideoOnThePageIsTouched_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("share") << u"shareAction"_s;
    QTest::newRow("rename") << u"editAction"_s;
    QTest::newRow("delete") << u"deleteAction"_s;
}

// One was watched and left, another has just been opened and was not saved yet.
void TestPlayerPageDialogs::onlyTheVideoOnThePageIsTouched()
{
    QFETCH(QString, name);
    const VideoInfo left = stored(u"urn:left"_s);
    const VideoInfo open = stored(u"urn:open"_s);
    QVERIFY(play(left));
    m_page->backButton();
    QTRY_COMPARE(f.savedPositions().size(), 1);
    f.controller->setPendingAction(PlayerController::NoAction);
    QSignalSpy shared(m_page.get(), &PlayerPage::shareVideo);
    QSignalSpy deleted(m_page.get(), &PlayerPage::deleteFile);
    QVERIFY(play(open));
    action(name)->trigger();
    QCOMPARE(f.savedPositions().size(), 1); // still that of the other one
    if (name == u"shareAction"_s) {
        QCOMPARE(shared.first().first().toString(), open.url);
    } else if (name == u"editAction"_s) {
        QVERIFY(waitForPopup<Sheet>());
        auto *field = m_page->scene()->focusItem()
            ? dynamic_cast<toolkit::TextEdit *>(m_page->scene()->focusItem())
            : nullptr;
        QVERIFY(field);
        field->setText(u"Another title"_s);
        popup<Sheet>()->accept();
        QTRY_VERIFY(f.store->lastText().contains(u"Another title"_s));
        QVERIFY(f.store->lastText().contains(open.urn));
        QVERIFY(!f.store->lastText().contains(left.urn));
    } else {
        QueryDialog *dialog = question();
        QVERIFY(dialog);
        dialog->button(QueryDialog::Yes)->click();
        QTRY_COMPARE(deleted.size(), 1);
        QCOMPARE(deleted.first().first().toString(), open.url);
        QCOMPARE(files(), QStringList{u"urn-left.mp4"_s});
    }
}

QTEST_MAIN(TestPlayerPageDialogs)
#include "test_playerpagedialogs.moc"
