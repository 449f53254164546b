// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"
#include "support/driventimer.h"

#include <data/positionjournal.h>
#include <platform/media/playercontrols.h>
#include <platform/toolkit/button.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

// However a video is left, it is left with its place saved: once, for that video and no other, and before
// what comes instead.
class TestPlayerPlace : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void noVideoIsLeftUnsaved_data();
    void noVideoIsLeftUnsaved();
    void whatIsSavedAlreadyIsNotSavedAnew_data();
    void whatIsSavedAlreadyIsNotSavedAnew();
    void backWhileTheVideoIsOpened();
    void aVideoThatWasToBeginAnewIsWhereItWasUntilItIsSeen();
    void backWhileASeekIsUnderWayKeepsItsTarget();
    void theVideoThatIsPlayedAgainGoesOnWhereItIs();
    void aPositionThatIsAskedForWins();
    void placesOfVideosWatchedBeforeAreRemembered();
    void streamsAreLeftWithoutAWord();
    void aRendererThatHangsCostsNothing();
    void aRendererThatGoesTakesNoPlaceWithIt();
    void anErrorInTheMiddleKeepsThePlace_data();
    void anErrorInTheMiddleKeepsThePlace();
    void anErrorBeforeTheFirstFrameSavesNothing();
    void whatTheStoreDoesNotKnowOfTheLengthTheRendererDoes();
    void playAfterAStopGoesOnWhereItWas();
    void playAfterTheEndBeginsAnew();

    void whilePlayingThePlaceIsNotedEveryFiveSeconds();
    void aPausedVideoIsNotNoted();
    void streamsAreNotNoted();
    void afterItsEndNothingIsNoted();
    void aKillCostsAtMostFiveSeconds();
    void savingClosesTheNote();
    void whatWasLeftIsWhereItGoesOn();
    void aFullDiskDoesNotDisturbThePlayback();

private:
    [[nodiscard]] QTimer *noteTimer() const { return f.controller->findChild<QTimer *>(u"noteTimer"_s); }
    [[nodiscard]] QString folder() const { return m_state->filePath(u"places"_s); }
    [[nodiscard]] QStringList notes() const { return QDir(folder()).entryList(QDir::Files | QDir::Hidden); }
    // A program of its own over the folder of the one before.
    void openJournal()
    {
        m_journal.reset();
        m_journal = std::make_unique<PositionJournal>(TrackerInterface::instance(),
                                                      ThumbnailHelper::instance(), folder());
        f.controller->setJournal(m_journal.get());
    }
    bool isClosed() { return m_journal->waitForDone(10000) && notes().isEmpty(); }
    void settle() { QVERIFY(m_journal->waitForDone(10000)); }

    std::unique_ptr<QTemporaryDir> m_state;
    std::unique_ptr<PositionJournal> m_journal;
};

void TestPlayerPlace::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPlace::init()
{
    m_state = std::make_unique<QTemporaryDir>();
    QVERIFY(showPage());
}

void TestPlayerPlace::cleanup()
{
    removePage();
    m_journal.reset();
    f.store->answerBy({});
}

void TestPlayerPlace::noVideoIsLeftUnsaved_data()
{
    QTest::addColumn<QString>("way");
    for (const QString &way :
         {u"another record"_s, u"the same record"_s, u"stop"_s, u"end of the program"_s, u"shutdown"_s})
        QTest::newRow(qPrintable(way)) << way;
}

void TestPlayerPlace::noVideoIsLeftUnsaved()
{
    QFETCH(QString, way);
    QVERIFY(play(PlayerFixture::video(u"urn:1"_s, 60, 5)));
    f.backend->advance(12s);
    f.backend->clearCommands();
    QStringList story;
    connect(f.controller.get(), &PlayerController::positionSaved, this,
            [&] { story = f.savedPositions() + f.backend->commands(); });
    VideoInfo next = PlayerFixture::video(way == u"another record"_s ? u"urn:2"_s : u"urn:1"_s, 60, 7);
    if (way.endsWith(u"record"_s))
        f.controller->play(next);
    else if (way == u"stop"_s)
        f.controller->stop();
    else if (way == u"shutdown"_s)
        m_page->shutdown();
    else
        f.controller->saveLastKnownPlace();
    QCOMPARE(story, QStringList{u"urn:1 17"_s}); // nothing was asked of the renderer before
    QCoreApplication::processEvents();
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 17"_s});
    if (way == u"another record"_s)
        QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-2.mp4 7"_s});
}

void TestPlayerPlace::whatIsSavedAlreadyIsNotSavedAnew_data()
{
    noVideoIsLeftUnsaved_data();
}

void TestPlayerPlace::whatIsSavedAlreadyIsNotSavedAnew()
{
    QFETCH(QString, way);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    f.controller->pause();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    VideoInfo next = PlayerFixture::video(way == u"another record"_s ? u"urn:2"_s : u"urn:1"_s);
    if (way.endsWith(u"record"_s))
        f.controller->play(next);
    else if (way == u"stop"_s)
        f.controller->stop();
    else if (way == u"shutdown"_s)
        m_page->shutdown();
    else
        f.controller->saveLastKnownPlace();
    QCoreApplication::processEvents();
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
}

void TestPlayerPlace::backWhileTheVideoIsOpened()
{
    f.media.prerollDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 20);
    f.controller->play(video);
    QVERIFY(f.waitFor(AvloRenderer::Transitioning));
    m_page->keyEvent(std::make_unique<QKeyEvent>(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier).get());
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 30"_s}); // where it would have gone on
    QCOMPARE(ready.size(), 1);
    QVERIFY(m_page->isSavingDone());
    f.backend->advance(2s);
    QTRY_COMPARE(f.controller->state(), AvloRenderer::Stopped);
    QCOMPARE(f.savedPositions().size(), 1);
}

// The setting says that every video begins at its beginning: one that nobody saw has not begun.
void TestPlayerPlace::aVideoThatWasToBeginAnewIsWhereItWasUntilItIsSeen()
{
    f.media.prerollDelay = 1s;
    f.backend->setDefaultMedia(f.media);
    f.controller->setStartMode(0);
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 20);
    f.controller->play(video);
    QVERIFY(f.waitFor(AvloRenderer::Transitioning));
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QCOMPARE(ready.size(), 1);
    f.backend->advance(2s);
    QTRY_COMPARE(f.controller->state(), AvloRenderer::Stopped);
    QCOMPARE(f.savedPositions(), QStringList());
}

void TestPlayerPlace::backWhileASeekIsUnderWayKeepsItsTarget()
{
    f.media.seekDelay = 3s;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    f.controller->pause();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    f.widget->seekBy(10);
    m_page->backButton();
    QCOMPARE(f.savedPositions(), (QStringList{u"urn:1 12"_s, u"urn:1 22"_s}));
    // Another one is opened before the seek has ended.
    f.controller->setPendingAction(PlayerController::NoAction);
    VideoInfo next = PlayerFixture::video(u"urn:2"_s);
    f.controller->play(next);
    f.backend->advance(5s);
    QCOMPARE(f.savedPositions().size(), 2);
}

void TestPlayerPlace::theVideoThatIsPlayedAgainGoesOnWhereItIs()
{
    QVERIFY(play(PlayerFixture::video(u"urn:1"_s, 60, 5)));
    f.backend->advance(12s);
    f.backend->clearCommands();
    VideoInfo again = PlayerFixture::video(u"urn:1"_s, 60, 5);
    f.controller->play(again);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 17"_s});
}

void TestPlayerPlace::aPositionThatIsAskedForWins()
{
    QVERIFY(play(PlayerFixture::video(u"urn:1"_s, 60, 5)));
    f.backend->advance(12s);
    f.backend->clearCommands();
    VideoInfo again = PlayerFixture::video(u"urn:1"_s, 60, 40);
    f.controller->forgetSavedPlace();
    f.controller->play(again);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 40"_s});
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 17"_s});
}

// The row of the first lags behind while two others were watched for a moment each.
void TestPlayerPlace::placesOfVideosWatchedBeforeAreRemembered()
{
    for (const QString &urn : {u"urn:1"_s, u"urn:2"_s, u"urn:3"_s}) {
        QVERIFY(play(PlayerFixture::video(urn)));
        f.backend->advance(12s);
    }
    f.backend->clearCommands();
    VideoInfo first = PlayerFixture::video(u"urn:1"_s);
    f.controller->play(first);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 12"_s});
}

void TestPlayerPlace::streamsAreLeftWithoutAWord()
{
    VideoInfo stream;
    stream.url = u"http://h/stream"_s;
    QVERIFY(play(stream));
    f.backend->advance(12s);
    QVERIFY(!f.controller->saveLastKnownPlace());
    VideoInfo next = PlayerFixture::video(u"urn:2"_s);
    f.controller->play(next);
    QCOMPARE(f.savedPositions(), QStringList());
}

void TestPlayerPlace::aRendererThatHangsCostsNothing()
{
    f.media.hangsOnPause = true;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    m_page->backButton();
    QCOMPARE(f.savedPositions(), QStringList());
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerPage::backButtonError() Timeout. Couldn't get reply from the renderer");
    QVERIFY(runOut(PlayerPageProbe::guard(*m_page)));
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    QCOMPARE(ready.size(), 1);
}

void TestPlayerPlace::aRendererThatGoesTakesNoPlaceWithIt()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    QSignalSpy errors(m_page.get(), &PlayerPage::playerError);
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerController::removeRenderer(QString, QString) Renderer was removed");
    f.backend->lose();
    QTRY_COMPARE(errors.size(), 1);
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    QCOMPARE(f.controller->state(), AvloRenderer::Stopped);
    // Black, and nothing on it: it shows how to go on.
    QTRY_VERIFY(PlayerPageProbe::overlay(*m_page)->isShown());
    QTRY_VERIFY(f.widget->renderer() != nullptr);
    VideoInfo again = PlayerFixture::video();
    f.controller->play(again);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 12"_s});
}

void TestPlayerPlace::anErrorInTheMiddleKeepsThePlace_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<bool>("leaves");
    QTest::newRow("the file is broken from here on") << 308 << true;
    QTest::newRow("the server is away") << 301 << false;
    QTest::newRow("of which nobody is told") << 325 << false;
}

// The renderer tells of the error first and only then that it stopped.
void TestPlayerPlace::anErrorInTheMiddleKeepsThePlace()
{
    QFETCH(int, code);
    QFETCH(bool, leaves);
    f.media.fault = AvloError{code, u"broken"_s};
    f.media.faultPosition = 12s;
    f.backend->setDefaultMedia(f.media);
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    QSignalSpy back(m_page.get(), &PlayerPage::goBack);
    QSignalSpy ready(m_page.get(), &PlayerPage::savingReady);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"PlayerController::error"_s));
    f.backend->advance(13s);
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    QCOMPARE(back.size(), leaves ? 1 : 0);
    QVERIFY(!PlayerPageProbe::guard(*m_page)->isActive()); // nothing is waited for
    QVERIFY(!f.backend->commands().contains(u"pause"_s));
    QVERIFY(ready.size() >= 1);
    QTRY_COMPARE(f.controller->state(), AvloRenderer::Stopped);
    QCOMPARE(f.savedPositions().size(), 1);
}

void TestPlayerPlace::anErrorBeforeTheFirstFrameSavesNothing()
{
    f.media.fault = AvloError{300, u"gone"_s};
    f.backend->setDefaultMedia(f.media);
    QSignalSpy errors(m_page.get(), &PlayerPage::playerError);
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 20);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"PlayerController::error"_s));
    f.controller->play(video);
    QTRY_COMPARE(errors.size(), 1);
    QTRY_COMPARE(f.controller->state(), AvloRenderer::Stopped);
    QCOMPARE(f.savedPositions(), QStringList());
}

void TestPlayerPlace::whatTheStoreDoesNotKnowOfTheLengthTheRendererDoes()
{
    QVERIFY(play(PlayerFixture::video(u"urn:1"_s, 0)));
    f.backend->advance(59s);
    f.controller->stop();
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 0"_s});
    QCOMPARE(f.controller->lastVideo().duration, 60u);
}

// A file that could not be deleted, for one, is stopped and still there.
void TestPlayerPlace::playAfterAStopGoesOnWhereItWas()
{
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    f.controller->stop();
    QVERIFY(f.waitFor(AvloRenderer::Stopped));
    f.backend->clearCommands();
    f.widget->setControlsVisible(true);
    Q_EMIT f.widget->controls()->playPauseRequested();
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 12"_s});
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    f.backend->advance(10s);
    f.controller->stop();
    QCOMPARE(f.savedPositions(), (QStringList{u"urn:1 12"_s, u"urn:1 22"_s}));
}

void TestPlayerPlace::playAfterTheEndBeginsAnew()
{
    m_page->setBackButtonType(PlayerPage::TvMainViewBackButton); // the page stays for a moment
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(60s);
    QVERIFY(f.waitFor(AvloRenderer::Stopped));
    f.backend->clearCommands();
    Q_EMIT f.widget->controls()->playPauseRequested();
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 0"_s});
}

void TestPlayerPlace::whilePlayingThePlaceIsNotedEveryFiveSeconds()
{
    openJournal();
    QVERIFY(!noteTimer()->isActive());
    QVERIFY(play(PlayerFixture::video()));
    QVERIFY(noteTimer()->isActive());
    QCOMPARE(noteTimer()->interval(), 5000);
    QVERIFY(!noteTimer()->isSingleShot());
    f.store->clear();
    for (const int second : {5, 10, 15}) {
        f.backend->advance(5s);
        QVERIFY(runOut(noteTimer()));
        settle();
        QCOMPARE(notes().size(), 1);
        QFile note(folder() + u'/' + notes().constFirst());
        QVERIFY(note.open(QIODevice::ReadOnly));
        QVERIFY(note.readAll().contains("\"position\":" + QByteArray::number(second) + ','));
    }
    QCOMPARE(f.savedPositions(), QStringList());
    QCOMPARE(f.store->texts().size(), 1); // what it has, once a playback
}

void TestPlayerPlace::aPausedVideoIsNotNoted()
{
    openJournal();
    QVERIFY(play(PlayerFixture::video()));
    f.controller->pause();
    QVERIFY(f.waitFor(AvloRenderer::Paused));
    QVERIFY(!noteTimer()->isActive());
    f.controller->resume();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    QVERIFY(noteTimer()->isActive());
    f.controller->stop();
    QVERIFY(!noteTimer()->isActive());
}

void TestPlayerPlace::streamsAreNotNoted()
{
    openJournal();
    VideoInfo stream;
    stream.url = u"http://h/stream"_s;
    for (const VideoInfo &video : {stream, PlayerFixture::video(QString())}) {
        QVERIFY(play(video));
        f.store->clear();
        f.backend->advance(10s);
        QVERIFY(runOut(noteTimer()));
        settle();
        QCOMPARE(notes(), QStringList());
        QCOMPARE(f.store->texts(), QStringList());
    }
}

void TestPlayerPlace::afterItsEndNothingIsNoted()
{
    openJournal();
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(59s);
    f.controller->savePosition(59); // finished; its last second plays
    QTRY_VERIFY(isClosed());
    QVERIFY(runOut(noteTimer()));
    QVERIFY(isClosed());
}

void TestPlayerPlace::aKillCostsAtMostFiveSeconds()
{
    f.store->answerBy([](const SparqlQuery &query) {
        return query.text().contains(u"nmm:runTime ?_prop"_s) ? FakeSparqlAnswer::rows({{5}})
                                                              : FakeSparqlAnswer::rows({});
    });
    openJournal();
    QVERIFY(play(PlayerFixture::video(u"urn:1"_s, 60, 5)));
    for (int tick = 0; tick < 4; ++tick) {
        f.backend->advance(5s);
        QVERIFY(runOut(noteTimer()));
    }
    f.backend->advance(4900ms);
    settle();
    f.store->clear();
    f.controller->setJournal(nullptr);
    openJournal(); // the next start
    m_journal->restore();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 25"_s}); // of 29.9
    QTRY_VERIFY(isClosed());
}

void TestPlayerPlace::savingClosesTheNote()
{
    openJournal();
    QVERIFY(play(PlayerFixture::video()));
    f.backend->advance(12s);
    QVERIFY(runOut(noteTimer()));
    settle();
    QCOMPARE(notes().size(), 1);
    m_page->backButton();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    QTRY_VERIFY(isClosed());
}

// The store is not there yet, and the first thing the person does is to go on.
void TestPlayerPlace::whatWasLeftIsWhereItGoesOn()
{
    f.store->answerBy([](const SparqlQuery &query) {
        return query.text().contains(u"nmm:runTime ?_prop"_s) ? FakeSparqlAnswer::later()
                                                              : FakeSparqlAnswer::rows({});
    });
    openJournal();
    m_journal->note(PlayerFixture::video(), 38);
    settle();
    openJournal();
    m_journal->restore();
    f.backend->clearCommands();
    VideoInfo row = PlayerFixture::video(u"urn:1"_s, 60, 5);
    f.controller->play(row);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 38"_s});
}

void TestPlayerPlace::aFullDiskDoesNotDisturbThePlayback()
{
    QFile inTheWay(folder());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    openJournal();
    QVERIFY(play(PlayerFixture::video()));
    f.backend->clearCommands();
    for (int tick = 0; tick < 3; ++tick) {
        f.backend->advance(5s);
        QVERIFY(runOut(noteTimer()));
    }
    settle();
    QCOMPARE(f.controller->state(), AvloRenderer::Playing);
    QCOMPARE(f.backend->commands(), QStringList());
    m_page->backButton();
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 15"_s});
}

QTEST_MAIN(TestPlayerPlace)
#include "test_playerplace.moc"
