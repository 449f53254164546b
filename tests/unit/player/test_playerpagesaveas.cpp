// SPDX-License-Identifier: GPL-3.0-or-later
#include "playermenustage.h"
#include "support/largefile.h"

#include <platform/saveas/copyprogress.h>
#include <platform/saveas/saveascontent.h>
#include <platform/toolkit/sheetheader.h>

#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

// A copy of the video on the page, from the bar's menu to the file in the folder of movies.
class TestPlayerPageSaveAs : public QObject, protected PlayerMenuStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void theCopyIsThereAndTheVideoGoesOn();
    void theMachinesOwnNameIsNoFolder();
    void aPausedVideoStaysPausedAfterACopy();
    void aCopyThatEndsWhileNobodyWatches_data();
    void aCopyThatEndsWhileNobodyWatches();
    void theCardGoesWhileItIsCopied();

private:
    static QString movies() { return QStandardPaths::writableLocation(QStandardPaths::MoviesLocation); }
    static QStringList saved()
    {
        return QDir(movies()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    // Opened by its address, and not in the store.
    VideoInfo unstored()
    {
        VideoInfo video = stored();
        video.urn.clear();
        return video;
    }
    SaveAsDialog *open()
    {
        choose(u"saveAsAction"_s);
        return popup<SaveAsDialog>();
    }
};

void TestPlayerPageSaveAs::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    QVERIFY(openWindow());
}

void TestPlayerPageSaveAs::init()
{
    begin();
    QVERIFY(QDir().mkpath(movies()));
}

void TestPlayerPageSaveAs::cleanup()
{
    end();
    QVERIFY(QDir(movies()).removeRecursively());
}

void TestPlayerPageSaveAs::theCopyIsThereAndTheVideoGoesOn()
{
    QVERIFY(play(unstored()));
    SaveAsDialog *dialog = open();
    QVERIFY(dialog);
    QTest::keyClicks(m_window.get(), u"holiday"_s);
    dialog->header()->positiveButton()->click();
    QVERIFY(dialog->isCopying());
    QCOMPARE(resumes(), 0); // it waits for the copy, too
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QCOMPARE(saved(), QStringList{u"holiday.mp4"_s});
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(resumes(), 1);
    QVERIFY(!PlayerPageProbe::saveAsManager(*m_page)->isDialogOpen());
    QVERIFY(!PlayerPageProbe::wasPlaying(*m_page));
    press(Qt::Key_Space, QEvent::KeyRelease); // the keys are the video's again
    QVERIFY(f.waitFor(AvloRenderer::Paused));
}

// As some programs write an address.
void TestPlayerPageSaveAs::theMachinesOwnNameIsNoFolder()
{
    VideoInfo video = unstored();
    const QString path = QUrl(video.url).path(QUrl::FullyEncoded);
    video.url = u"file://localhost"_s + path;
    QVERIFY(play(video));
    SaveAsDialog *dialog = open();
    QVERIFY(dialog);
    QCOMPARE(dialog->sourcePath(), path);
    QSignalSpy accepted(dialog, &SaveAsDialog::accepted);
    dialog->save();
    QTRY_COMPARE(accepted.size(), 1);
    QCOMPARE(saved(), QStringList{u"urn-1.mp4"_s});
}

void TestPlayerPageSaveAs::aPausedVideoStaysPausedAfterACopy()
{
    QVERIFY(play(unstored()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    SaveAsDialog *dialog = open();
    QVERIFY(dialog);
    dialog->save();
    QTRY_VERIFY(m_page->navigationBar()->isEnabled()); // the page is free again
    QCOMPARE(saved(), QStringList{u"urn-1.mp4"_s});
    QCOMPARE(resumes(), 0);
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
}

void TestPlayerPageSaveAs::aCopyThatEndsWhileNobodyWatches_data()
{
    QTest::addColumn<QString>("where");
    QTest::newRow("minimised") << u"minimised"_s;
    QTest::newRow("locked") << u"locked"_s;
    QTest::newRow("display off") << u"display off"_s;
}

// It takes minutes, and the person has put the device into a pocket by the end.
void TestPlayerPageSaveAs::aCopyThatEndsWhileNobodyWatches()
{
    QFETCH(QString, where);
    QVERIFY(play(unstored()));
    SaveAsDialog *dialog = open();
    QVERIFY(dialog);
    dialog->save();
    if (where == u"minimised"_s)
        m_page->pageMinimized();
    else if (where == u"locked"_s)
        f.controller->deviceLockStatusChanged(true);
    else
        f.controller->displayStatusChanged(false);
    QTRY_VERIFY(m_page->navigationBar()->isEnabled());
    QCOMPARE(saved(), QStringList{u"urn-1.mp4"_s});
    QCOMPARE(resumes(), 0);
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
    m_page->pageMaximized();
}

void TestPlayerPageSaveAs::theCardGoesWhileItIsCopied()
{
    const LargeFile large;
    VideoInfo video;
    video.url = u"file://"_s + large.path();
    QVERIFY(play(video));
    SaveAsDialog *dialog = open();
    QVERIFY(dialog);
    dialog->save();
    QTRY_VERIFY(dialog->content()->progressBar()->isVisible());
    m_page->massStorageModeChanged(false);
    QVERIFY(!popup<SaveAsDialog>());
    QVERIFY(!PlayerPageProbe::saveAsManager(*m_page));
    QTRY_VERIFY(!isCopyThreadThere());
    QCOMPARE(saved(), QStringList());
    QCOMPARE(resumes(), 0);
    QCOMPARE(f.controller->state(), AvloRenderer::Paused);
}

QTEST_MAIN(TestPlayerPageSaveAs)
#include "test_playerpagesaveas.moc"
