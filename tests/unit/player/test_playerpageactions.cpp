// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;
using toolkit::Sheet;

// The menu of the bar: what it offers for which video, and that the video waits while one of its dialogs is
// open.
class TestPlayerPageActions : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aStoredVideoIsSharedRenamedAndDeleted();
    void whatIsOfferedForWhichVideo_data();
    void whatIsOfferedForWhichVideo();
    void theActionsAreMadeAgainOnlyWhenOthersStand();
    void withoutAControllerNothingHappens();
    void aRenameWaitsAndGoesOnOnce_data();
    void aRenameWaitsAndGoesOnOnce();
    void aCopyWaitsAndGoesOnOnce();
    void aPausedVideoStaysPausedAfterARename();
    void playbackThatBeginsUnderADialogWaits();
    void theMenuIsOfferedToReadersAsItsButtonIs();
    void noLeavesTheVideoAndItGoesOn();
    void yesStopsDeletesAndLeaves();
    void aVideoOpenedFromOutsideEndsTheProgram();
    void aFileThatStays();
    void aConfirmationWithoutManager();
    void anEndWithoutSender();
};

void TestPlayerPageActions::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageActions::init()
{
    begin();
}

void TestPlayerPageActions::cleanup()
{
    end();
}

void TestPlayerPageActions::aStoredVideoIsSharedRenamedAndDeleted()
{
    QCOMPARE(offered(), (QStringList{u"shareAction"_s, u"editAction"_s, u"deleteAction"_s}));
    QStringList texts;
    const QList<QAction *> actions = m_page->actions();
    for (const QAction *action : actions)
        texts.append(action->text());
    QCOMPARE(texts,
             (QStringList{qtTrId("qtn_comm_command_share"), qtTrId("qtn_comm_command_rename"),
                          qtTrId("qtn_comm_command_delete")}));
    QVERIFY(toolkit::Action::isDestructive(action(u"deleteAction"_s)));
    QVERIFY(!toolkit::Action::isDestructive(action(u"shareAction"_s)));
}

void TestPlayerPageActions::whatIsOfferedForWhichVideo_data()
{
    QTest::addColumn<QString>("urn");
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("fuse");
    QTest::addColumn<bool>("menu");
    QTest::addColumn<QStringList>("offered");
    const QStringList stored{u"shareAction"_s, u"editAction"_s, u"deleteAction"_s};
    const QStringList copied{u"saveAsAction"_s};
    QTest::newRow("stored") << u"urn:1"_s << u"file:///v/a.mp4"_s << false << true << stored;
    QTest::newRow("stored, on a phone over FUSE")
        << u"urn:1"_s << u"file:///v/a.mp4"_s << true << true << stored;
    QTest::newRow("stored stream") << u"urn:1"_s << u"http://h/a.mp4"_s << false << true << stored;
    QTest::newRow("local") << QString() << u"file:///v/a.mp4"_s << false << true << copied;
    QTest::newRow("local, in capitals") << QString() << u"FILE:///v/a.mp4"_s << false << true << copied;
    QTest::newRow("local, over FUSE") << QString() << u"file:///v/a.mp4"_s << true << false << copied;
    QTest::newRow("stream") << QString() << u"http://h/a.mp4"_s << false << false << stored;
    QTest::newRow("no address") << QString() << QString() << false << false << stored;
}

void TestPlayerPageActions::whatIsOfferedForWhichVideo()
{
    QFETCH(QString, urn);
    QFETCH(QString, url);
    QFETCH(bool, fuse);
    VideoInfo video;
    video.urn = urn;
    video.url = url;
    m_page->type = fuse ? 0x65735546 : 0xEF53;
    m_page->setToolbarVisible(true);
    f.controller->play(video);
    QVERIFY(!PlayerPageProbe::overlay(*m_page)->toolbar()->isVisible());
    QTEST(m_page->navigationBar()->menuButton()->isEnabled(), "menu");
    QTEST(offered(), "offered");
}

void TestPlayerPageActions::theActionsAreMadeAgainOnlyWhenOthersStand()
{
    const QList<QAction *> first = m_page->actions();
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    QCOMPARE(m_page->actions(), first);
    VideoInfo foreign = PlayerFixture::video(QString());
    f.controller->play(foreign);
    const QList<QAction *> second = m_page->actions();
    QCOMPARE(offered(), QStringList{u"saveAsAction"_s});
    QCOMPARE(second.constFirst()->text(), qtTrId("qtn_comm_content_save_as"));
    f.controller->play(foreign);
    QCOMPARE(m_page->actions(), second);
    f.controller->play(video);
    QCOMPARE(offered(), (QStringList{u"shareAction"_s, u"editAction"_s, u"deleteAction"_s}));
    QCOMPARE(m_page->findChildren<toolkit::Action *>().size(), 3); // the others are gone for good
}

void TestPlayerPageActions::withoutAControllerNothingHappens()
{
    PlayerPage page(new VideoWidget, nullptr);
    LogLines lines("kestrel.player");
    page.deleteCurrent();
    page.editCurrent();
    page.saveAsCurrent();
    page.prepareDeletion();
    page.editOrSaveAsDone();
    page.shareActionTriggered();
    page.enableIndexedActions(true);
    QCOMPARE(lines.all().filter(u"playercontroller == NULL"_s).size(), 7);
    QVERIFY(page.saveAllowed());
}

void TestPlayerPageActions::aRenameWaitsAndGoesOnOnce_data()
{
    QTest::addColumn<bool>("saved");
    QTest::newRow("saved") << true;
    QTest::newRow("given up") << false;
}

void TestPlayerPageActions::aRenameWaitsAndGoesOnOnce()
{
    QFETCH(bool, saved);
    QVERIFY(play(stored()));
    choose(u"editAction"_s);
    QVERIFY(waitForPopup<Sheet>());
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QCOMPARE(resumes(), 0);
    auto *sheet = popup<Sheet>();
    if (saved)
        sheet->accept();
    else
        sheet->reject();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QTRY_VERIFY(!sheet->isDisplayed());
    QCOMPARE(resumes(), 1);
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
    QVERIFY(m_page->navigationBar()->isEnabled());
}

void TestPlayerPageActions::aCopyWaitsAndGoesOnOnce()
{
    VideoInfo video = stored();
    video.urn.clear(); // opened by its address, and not in the store
    QVERIFY(play(video));
    choose(u"saveAsAction"_s);
    auto *dialog = popup<SaveAsDialog>();
    QVERIFY(dialog);
    QCOMPARE(dialog->defaultFileName(), u"urn-1"_s);
    QCOMPARE(dialog->sourcePath(), QUrl(video.url).path(QUrl::FullyEncoded));
    QVERIFY(PlayerPageProbe::saveAsManager(*m_page)->isDialogOpen());
    QCOMPARE(resumes(), 0);
    dialog->reject();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QTRY_VERIFY(!dialog->isDisplayed());
    QCOMPARE(resumes(), 1);
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
}

void TestPlayerPageActions::aPausedVideoStaysPausedAfterARename()
{
    QVERIFY(play(stored()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    choose(u"editAction"_s);
    QVERIFY(waitForPopup<Sheet>());
    QVERIFY(!m_page->navigationBar()->isEnabled());
    popup<Sheet>()->reject();
    QTRY_VERIFY(m_page->navigationBar()->isEnabled()); // the page is free again
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
    QCOMPARE(resumes(), 0);
}

void TestPlayerPageActions::playbackThatBeginsUnderADialogWaits()
{
    VideoInfo video = stored();
    f.controller->play(video);
    m_page->editCurrent(); // it does not play yet
    QVERIFY(QTest::qWaitFor([this] { return f.backend->commands().contains(u"pause"_s); }));
    QVERIFY(f.waitFor(AvloRenderer::Paused));
}

void TestPlayerPageActions::theMenuIsOfferedToReadersAsItsButtonIs()
{
    VideoInfo stream;
    stream.url = u"http://h/a.mp4"_s;
    QVERIFY(play(stream));
    QVERIFY(!m_page->offersMenu());
    m_page->requestMenu();
    QVERIFY(!m_window->isMenuOpen());
    QVERIFY(play(stored()));
    QVERIFY(m_page->offersMenu());
    m_page->requestMenu();
    QVERIFY(m_window->isMenuOpen());
    QVERIFY(f.waitFor(AvloRenderer::Paused)); // as by the button
}

void TestPlayerPageActions::noLeavesTheVideoAndItGoesOn()
{
    QVERIFY(play(stored()));
    QSignalSpy deleted(m_page.get(), &PlayerPage::deleteFile);
    choose(u"deleteAction"_s);
    QueryDialog *dialog = question();
    QVERIFY(dialog);
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    dialog->button(QueryDialog::No)->click();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(resumes(), 1);
    QCOMPARE(deleted.size(), 0);
    QCOMPARE(files(), QStringList{u"urn-1.mp4"_s});
    QTRY_VERIFY(!PlayerPageProbe::fileManager(*m_page));
    // And again.
    choose(u"deleteAction"_s);
    QVERIFY(question());
}

void TestPlayerPageActions::yesStopsDeletesAndLeaves()
{
    const VideoInfo video = stored();
    QVERIFY(play(video));
    QStringList story;
    connect(m_page.get(), &PlayerPage::deleteFile, m_page.get(),
            [&story](const QString &url) { story.append(u"delete "_s + url); });
    connect(m_page.get(), &PlayerPage::goBack, m_page.get(), [&story] { story.append(u"back"_s); });
    connect(m_page.get(), &PlayerPage::savingReady, m_page.get(), [&story] { story.append(u"saved"_s); });
    choose(u"deleteAction"_s);
    QueryDialog *dialog = question();
    QVERIFY(dialog);
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QTRY_COMPARE(f.savedPositions().size(), 1);
    story.clear();
    dialog->button(QueryDialog::Yes)->click();
    QVERIFY(f.waitFor(AvloRenderer::Stopped));
    QTRY_COMPARE(story, (QStringList{u"delete "_s + video.url, u"back"_s, u"saved"_s}));
    QCOMPARE(files(), QStringList());
    QCOMPARE(resumes(), 0);
}

void TestPlayerPageActions::aVideoOpenedFromOutsideEndsTheProgram()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton);
    QVERIFY(play(stored()));
    QSignalSpy deleted(m_page.get(), &PlayerPage::deleteFile);
    choose(u"deleteAction"_s);
    QueryDialog *dialog = question();
    QVERIFY(dialog);
    f.backend->clearCommands();
    dialog->button(QueryDialog::Yes)->click();
    QTRY_COMPARE(files(), QStringList());
    QTRY_VERIFY(!PlayerPageProbe::fileManager(*m_page));
    QCOMPARE(deleted.size(), 0);
    QCOMPARE(f.backend->commands().count(u"stop"_s), 2); // before the file goes, and with the program
}

void TestPlayerPageActions::aFileThatStays()
{
    QVERIFY(play(stored()));
    QSignalSpy told(m_page.get(), &PlayerPage::notify);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    choose(u"deleteAction"_s);
    QueryDialog *dialog = question();
    QVERIFY(dialog);
    // A folder in its place meanwhile.
    QVERIFY(QFile::remove(m_folder->filePath(u"urn-1.mp4"_s)));
    QVERIFY(QDir(m_folder->path()).mkdir(u"urn-1.mp4"_s));
    dialog->button(QueryDialog::Yes)->click();
    QTRY_COMPARE(told.size(), 1);
    QCOMPARE(told.first().first().toString(), qtTrId("qtn_vide_error_delete"));
    QTRY_VERIFY(!PlayerPageProbe::fileManager(*m_page));
    QCOMPARE(back.size(), 0);
    QVERIFY(play(m_videos.constFirst())); // and is not paused at once
    QCOMPARE(f.backend->commands().last().section(u' ', 0, 0), u"play"_s);
    press(Qt::Key_Backspace); // the page answers again
    QCOMPARE(back.size(), 1);
}

void TestPlayerPageActions::aConfirmationWithoutManager()
{
    LogLines lines("kestrel.player");
    m_page->prepareDeletion();
    QCOMPARE(lines.all().filter(u"fileManager == NULL!"_s).size(), 1);
}

void TestPlayerPageActions::anEndWithoutSender()
{
    QSignalSpy deleted(m_page.get(), &PlayerPage::deleteFile);
    PlayerPageProbe::setDialogOpen(*m_page, true);
    LogLines lines("kestrel.player");
    m_page->deleteDone(true);
    QCOMPARE(lines.all().filter(u"Invalid sender"_s).size(), 1);
    QCOMPARE(deleted.size(), 0);
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    press(Qt::Key_Backspace); // no dialog is open
    QCOMPARE(back.size(), 1);
}

QTEST_MAIN(TestPlayerPageActions)
#include "test_playerpageactions.moc"
