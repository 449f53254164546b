// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "data/trackerinterface.h"
#include "library/localvideospage.h"
#include "library/myallvideoswidget.h"
#include "platform/media/videowidget.h"
#include "platform/sparql/sparqlquery.h"
#include "platform/toolkit/scenemanager.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

// Requests that come one upon the other, and the way back from each, through the real pages.
class PlayRequestsTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup() { clean(); }
    void pagesFollowEachRequest_data();
    void pagesFollowEachRequest();
    void tapRightAfterBackWaitsForThePlace();
    void tapRightAfterBackOnANeverPlayedVideo();
    void tapRightAfterBackAlsoPlaysAfterTheGuard_data();
    void tapRightAfterBackAlsoPlaysAfterTheGuard();
    void storeChangeStartsTheParkedRequest();
    void newestOfSeveralParkedRequestsPlays();
    void newRequestReplacesOneWhosePlaceIsBeingAsked();
    void parkedAnswerWithAStaleIdIsIgnored();
    void fromTheFirstSecondNothingIsParked();
    void positionOfARequestReplacesTheStored_data();
    void positionOfARequestReplacesTheStored();
    void everyRequestIsAnnounced();
    void failedLookupWarns();
    void newRequestReplacesOneThatCouldNotBeAsked();
    void connectionsOfRequestsAreUnique();
    void cancelKeepsThePlaceAndEndsTheProgram();
    void busRequestFirstSavesThePlaceOfTheVideoThatPlays_data();
    void busRequestFirstSavesThePlaceOfTheVideoThatPlays();
    void busRequestOverAPausedVideoSavesNothingAnew();
    void busRequestOverAVideoThatWaitsForDataSavesItsPlace();
    void positionAskedForWinsOverThePlaceSavedJustNow_data();
    void positionAskedForWinsOverThePlaceSavedJustNow();
    void busRequestShowsNothingOfTheVideoBefore();
    void burstOfBusRequestsSavesOnceAndPlaysTheNewest();
    void busRequestDropsAParkedOne();
    void emptyAddressOverTheBusLeavesThePagesAsTheyAre();
    void addressThatNobodyCouldHaveIsRefused();

private:
    [[nodiscard]] QStringList savedPlaces() const
    {
        return m_store.texts(SparqlQuery::UpdateStatement).filter(u"nmm:runTime"_s);
    }
    void perform(const QString &step);
    void playUntil(int second);
    void back() { QTest::keyClick(&m_window, Qt::Key_Backspace); }
    [[nodiscard]] QStringList questionsForThePlace() const
    {
        return m_store.texts().filter(u"nmm:runTime ?_prop"_s);
    }
    [[nodiscard]] QString lastPlay() const
    {
        return backend() ? backend()->commands().filter(u"play "_s).join(u", "_s).section(u", "_s, -1)
                         : QString();
    }
    // The page's own two seconds.
    [[nodiscard]] QTimer *backGuard() const
    {
        for (QTimer *timer : player()->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (timer->isSingleShot() && timer->interval() == 2000)
                return timer;
        }
        return nullptr;
    }
};

void PlayRequestsTest::perform(const QString &step)
{
    if (step == u"tap"_s)
        tap(video(1));
    else if (step == u"back"_s)
        back();
    else if (step == u"call"_s)
        m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s}, 3);
    else if (step == u"launch"_s)
        m_controller->findChild<KestrelService *>()->launch();
    else if (step == u"library"_s)
        m_controller->goToLocalVideosPage();
    else
        QFAIL(qPrintable(step));
}

void PlayRequestsTest::pagesFollowEachRequest_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("serviceFramework");
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("pages");
    QTest::addColumn<int>("backButton"); // 1: leaving ends the program; -1: no player yet
    const QString file = u"file:///videos/1.mp4"_s;
    const auto row = [](const char *name, const QString &address, bool serviceFramework, const char *steps,
                        const char *pages, int backButton) {
        QTest::newRow(name) << address << serviceFramework << QString::fromLatin1(steps)
                            << QString::fromLatin1(pages) << backButton;
    };
    row("started", {}, false, "", "library", -1);
    row("tap", {}, false, "tap", "library player", 0);
    row("tap, back", {}, false, "tap back", "library", 0);
    row("tap, back, tap", {}, false, "tap back tap", "library player", 0);
    row("tap, call: the library is no longer beneath", {}, false, "tap call", "player", 1);
    row("tap, call, back", {}, false, "tap call back", "library", 0);
    row("call", {}, false, "call", "player", 1);
    row("call, call", {}, false, "call call", "player", 1);
    row("call, back, tap: an ordinary one again", {}, false, "call back tap", "library player", 0);
    row("launch changes nothing", {}, false, "tap launch", "library player", 0);
    row("address", file, false, "", "player", 1);
    row("address, back", file, false, "back", "library", 0);
    row("address, back, tap", file, false, "back tap", "library player", 0);
    row("address, call, back", file, false, "call back", "library", 0);
    row("-servicefw", {}, true, "", "", -1);
    row("-servicefw, call", {}, true, "call", "player", 1);
    row("-servicefw, call, back", {}, true, "call back", "library", 0);
    row("-servicefw, call, back, tap", {}, true, "call back tap", "library player", 0);
    row("-servicefw, call, launch", {}, true, "call launch", "player", 1);
    row("-servicefw, launch", {}, true, "launch", "library", -1);
    row("-servicefw, launch, launch", {}, true, "launch launch", "library", -1);
    row("the library twice", {}, false, "library library", "library", -1);
}

void PlayRequestsTest::pagesFollowEachRequest()
{
    QFETCH(QString, address);
    QFETCH(bool, serviceFramework);
    QFETCH(QString, steps);
    QFETCH(QString, pages);
    QFETCH(int, backButton);
    start(address, serviceFramework);
    if (!address.isEmpty())
        QTRY_COMPARE(stack(), u"player"_s);
    for (const QString &step : steps.split(u' ', Qt::SkipEmptyParts)) {
        perform(step);
        if (step == u"call"_s)
            QTRY_COMPARE(stack(), u"player"_s);
    }
    QTRY_COMPARE(stack(), pages); // a request right after Back waits until the place is saved
    QCOMPARE(player() ? int(player()->backButtonType()) : -1, backButton);
    if (!pages.isEmpty()) {
        const toolkit::ApplicationPage *top
            = pages.endsWith(u"player"_s) ? static_cast<toolkit::ApplicationPage *>(player()) : library();
        QCOMPARE(m_window.sceneManager()->currentPage(), top);
    }
}

// Video 1, once stopped at second 20, plays up to `second`.
void PlayRequestsTest::playUntil(int second)
{
    tap(video(1, 20));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->advance(std::chrono::seconds(second - 20));
    m_store.clear();
}

void PlayRequestsTest::tapRightAfterBackWaitsForThePlace()
{
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    back();
    QCOMPARE(stack(), u"library"_s);
    tap(video(2, 5));
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(played(), u"file:///videos/1.mp4"_s);
    QCOMPARE(questionsForThePlace(), QStringList());
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(played(), u"file:///videos/2.mp4"_s);
    QCOMPARE(lastPlay(), u"play file:///videos/2.mp4 17"_s);
    // The place in the first was on its way before the second was asked about.
    const QStringList texts = m_store.texts();
    const qsizetype saved = texts.indexOf(texts.filter(u"<urn:uuid:1> nmm:runTime \"32\""_s).value(0));
    QVERIFY2(saved >= 0, qPrintable(texts.join(u'\n')));
    QCOMPARE(questionsForThePlace().size(), 1);
    QVERIFY(texts.indexOf(questionsForThePlace().constFirst()) > saved);
}

void PlayRequestsTest::tapRightAfterBackOnANeverPlayedVideo()
{
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({})); // no place of it is known
    back();
    tap(video(2));
    auto *guard = m_controller->findChild<QTimer *>(u"playedTimeGuard"_s);
    QTRY_VERIFY(guard->isActive());
    QCOMPARE(stack(), u"library"_s);
    expire(guard);
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(lastPlay(), u"play file:///videos/2.mp4 0"_s);
}

void PlayRequestsTest::tapRightAfterBackAlsoPlaysAfterTheGuard_data()
{
    QTest::addColumn<bool>("playedBefore");
    QTest::addColumn<QString>("command");
    QTest::newRow("played before") << true << u"play file:///videos/2.mp4 17"_s;
    QTest::newRow("never played") << false << u"play file:///videos/2.mp4 0"_s;
}

void PlayRequestsTest::tapRightAfterBackAlsoPlaysAfterTheGuard()
{
    QFETCH(bool, playedBefore);
    QFETCH(QString, command);
    m_media.hangsOnPause = true;
    start();
    playUntil(32);
    m_store.answerWhen(
        u"nmm:runTime ?_prop"_s,
        FakeSparqlAnswer::rows(playedBefore ? QList<QVariantList>{{17}} : QList<QVariantList>{}));
    back();
    tap(video(2));
    QCoreApplication::processEvents();
    QCOMPARE(stack(), u"library"_s);
    expect("void PlayerPage::backButtonError() Timeout. Couldn't get reply from the renderer");
    expire(backGuard());
    auto *guard = m_controller->findChild<QTimer *>(u"playedTimeGuard"_s);
    if (!playedBefore)
        expire(guard);
    QTRY_COMPARE(stack(), u"library player"_s);
    QVERIFY(!guard->isActive());
    QCOMPARE(lastPlay(), command);
    // What the player knows of the place without an answer.
    QCOMPARE(savedPlaces().size(), 1);
    QVERIFY2(savedPlaces().constFirst().contains(u"<urn:uuid:1> nmm:runTime \"32\""_s),
             qPrintable(savedPlaces().constFirst()));
}

void PlayRequestsTest::storeChangeStartsTheParkedRequest()
{
    m_media.hangsOnPause = true;
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    back();
    tap(video(2, 5));
    Q_EMIT TrackerInterface::instance()->videosChanged(QList<QStringList>{});
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(lastPlay(), u"play file:///videos/2.mp4 17"_s);
}

void PlayRequestsTest::newestOfSeveralParkedRequestsPlays()
{
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    back();
    tap(video(2, 5));
    tap(video(3, 5));
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(played(), u"file:///videos/3.mp4"_s);
    QCOMPARE(backend()->commands().filter(u"videos/2.mp4"_s), QStringList());
    QVERIFY(questionsForThePlace().constFirst().contains(u"urn:uuid:3"_s));
}

void PlayRequestsTest::newRequestReplacesOneWhosePlaceIsBeingAsked()
{
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::later());
    back();
    tap(video(2, 5));
    QTRY_COMPARE(questionsForThePlace().size(), 1);
    const int question = int(m_store.texts().indexOf(questionsForThePlace().constFirst()));
    tap(video(3, 7)); // the place in the first is saved by now: plays at once
    QCOMPARE(played(), u"file:///videos/3.mp4"_s);
    m_store.finish(question, {{17}});
    QCoreApplication::processEvents();
    QCOMPARE(lastPlay(), u"play file:///videos/3.mp4 7"_s);
    QVERIFY(!m_controller->findChild<QTimer *>(u"playedTimeGuard"_s)->isActive());
}

void PlayRequestsTest::parkedAnswerWithAStaleIdIsIgnored()
{
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::later());
    back();
    tap(video(2, 5));
    QTRY_COMPARE(questionsForThePlace().size(), 1);
    Q_EMIT TrackerInterface::instance()->playedTimeFinished(40, 987654);
    QCOMPARE(stack(), u"library"_s);
    m_store.finish(int(m_store.texts().indexOf(questionsForThePlace().constFirst())), {{17}});
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(lastPlay(), u"play file:///videos/2.mp4 17"_s);
}

void PlayRequestsTest::fromTheFirstSecondNothingIsParked()
{
    // A video that began at its start and was not saved yet: there is no place to wait for.
    start();
    tap(video(1));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    back();
    QVERIFY(!m_controller->playbackBlocked());
    tap(video(2, 5));
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(lastPlay(), u"play file:///videos/2.mp4 5"_s);
}

void PlayRequestsTest::positionOfARequestReplacesTheStored_data()
{
    QTest::addColumn<uint>("asked");
    QTest::addColumn<QString>("command");
    QTest::newRow("0: where the store says") << 0u << u"play file:///videos/1.mp4 21"_s;
    QTest::newRow("30") << 30u << u"play file:///videos/1.mp4 30"_s;
}

void PlayRequestsTest::positionOfARequestReplacesTheStored()
{
    QFETCH(uint, asked);
    QFETCH(QString, command);
    start();
    m_store.answerWith(
        {{u"urn:uuid:1"_s, u"video 1"_s, u"1.mp4"_s, 60, 21, u"video/mp4"_s, u"file:///videos/1.mp4"_s, 1}});
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s, u"file:///other.mp4"_s},
                                                      asked);
    QTRY_COMPARE(stack(), u"player"_s);
    QTRY_COMPARE(lastPlay(), command);
}

void PlayRequestsTest::everyRequestIsAnnounced()
{
    start();
    QSignalSpy started(m_controller->findChild<KestrelService *>(), &KestrelService::playbackStarted);
    tap(video(1, 20));
    QCOMPARE(started.count(), 1);
    back();
    tap(video(2, 5)); // parked: it reached the player all the same
    QCOMPARE(started.count(), 2);
}

void PlayRequestsTest::failedLookupWarns()
{
    start();
    m_store.answer(FakeSparqlAnswer::null());
    QTest::ignoreMessage(
        QtWarningMsg,
        QRegularExpression(u"^void ApplicationController::processAndPlay\\(QString&, int\\) Tracker "
                           "query failed$"_s));
    look(u"file:///elsewhere.mp4"_s, 9);
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_COMPARE(lastPlay(), u"play file:///elsewhere.mp4 9"_s);
}

void PlayRequestsTest::newRequestReplacesOneThatCouldNotBeAsked()
{
    // The store stumbles over the first address; of the second one it still tells all that it knows.
    start();
    m_store.answer(FakeSparqlAnswer::null());
    expect("void ApplicationController::processAndPlay(QString&, int) Tracker query failed");
    look(u"file:///elsewhere.mp4"_s, 9);
    m_store.answerWith(
        {{u"urn:uuid:1"_s, u"video 1"_s, u"1.mp4"_s, 60, 21, u"video/mp4"_s, u"file:///videos/1.mp4"_s, 1}});
    look(u"file:///videos/1.mp4"_s, 30);
    QTRY_COMPARE(stack(), u"library player"_s);
    QTRY_COMPARE(lastPlay(), u"play file:///videos/1.mp4 30"_s);
    QCOMPARE(m_controller->playerController()->currentVideo().urn, u"urn:uuid:1"_s);
    QCOMPARE(backend()->commands().filter(u"play "_s).size(), 1);
}

void PlayRequestsTest::connectionsOfRequestsAreUnique()
{
    start();
    look(u"file:///videos/1.mp4"_s);
    look(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(stack(), u"library player"_s);
    QCoreApplication::processEvents();
    QCOMPARE(backend()->commands().filter(u"play "_s).size(), 1);
    Q_EMIT player()->goBack();
    tap(video(1));
    // One key, one answer, however often the page came up.
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->clearCommands();
    QTest::keyClick(&m_window, Qt::Key_Space);
    QCOMPARE(backend()->commands(), QStringList(u"pause"_s));
}

void PlayRequestsTest::cancelKeepsThePlaceAndEndsTheProgram()
{
    start();
    playUntil(32);
    QTimer::singleShot(0, m_controller->findChild<KestrelService *>(), &KestrelService::cancel);
    QCOMPARE(QCoreApplication::exec(), 0);
    const QStringList updates = m_store.texts(SparqlQuery::UpdateStatement).filter(u"nmm:runTime"_s);
    QVERIFY(!updates.isEmpty());
    for (const QString &update : updates)
        QVERIFY2(update.contains(u"<urn:uuid:1> nmm:runTime \"32\""_s), qPrintable(update));
    QVERIFY(backend()->commands().contains(u"stop"_s));
}

void PlayRequestsTest::busRequestFirstSavesThePlaceOfTheVideoThatPlays_data()
{
    QTest::addColumn<bool>("launch");
    QTest::newRow("play") << false;
    QTest::newRow("launch") << true;
}

void PlayRequestsTest::busRequestFirstSavesThePlaceOfTheVideoThatPlays()
{
    QFETCH(bool, launch);
    start();
    playUntil(32);
    auto *service = m_controller->findChild<KestrelService *>();
    const QStringList other{u"file:///videos/2.mp4"_s};
    m_store.answerWith(
        {{u"urn:uuid:2"_s, u"video 2"_s, u"2.mp4"_s, 60, 0, u"video/mp4"_s, u"file:///videos/2.mp4"_s, 2}});
    if (launch)
        service->launch(other);
    else
        service->play(other);
    // The place is on its way before the other video is asked for.
    QCOMPARE(savedPlaces().size(), 1);
    QVERIFY2(savedPlaces().constFirst().contains(u"<urn:uuid:1> nmm:runTime \"32\""_s),
             qPrintable(savedPlaces().constFirst()));
    QCOMPARE(m_store.texts().indexOf(savedPlaces().constFirst()), 0);
    QTRY_COMPARE(lastPlay(), u"play file:///videos/2.mp4 0"_s);
    QCOMPARE(savedPlaces().size(), 1);
    QCOMPARE(stack(), u"player"_s);
}

void PlayRequestsTest::busRequestOverAPausedVideoSavesNothingAnew()
{
    start();
    playUntil(32);
    m_controller->playerController()->pause();
    QTRY_COMPARE(savedPlaces().size(), 1); // by the pause
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/2.mp4"_s});
    QCOMPARE(savedPlaces().size(), 1);
}

void PlayRequestsTest::busRequestOverAVideoThatWaitsForDataSavesItsPlace()
{
    m_media.stalls = {{std::chrono::seconds(32), std::chrono::seconds(8)}};
    start();
    playUntil(34);
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/2.mp4"_s});
    QCOMPARE(savedPlaces().size(), 1);
    QVERIFY2(savedPlaces().constFirst().contains(u"<urn:uuid:1> nmm:runTime \"32\""_s),
             qPrintable(savedPlaces().constFirst()));
}

void PlayRequestsTest::positionAskedForWinsOverThePlaceSavedJustNow_data()
{
    QTest::addColumn<uint>("asked");
    QTest::addColumn<QString>("command");
    // The answer of the store lags behind what is on its way to it.
    QTest::newRow("0: goes on where it is") << 0u << u"play file:///videos/1.mp4 32"_s;
    QTest::newRow("30") << 30u << u"play file:///videos/1.mp4 30"_s;
}

void PlayRequestsTest::positionAskedForWinsOverThePlaceSavedJustNow()
{
    QFETCH(uint, asked);
    QFETCH(QString, command);
    start();
    playUntil(32);
    backend()->clearCommands();
    m_store.answerWith(
        {{u"urn:uuid:1"_s, u"video 1"_s, u"1.mp4"_s, 60, 20, u"video/mp4"_s, u"file:///videos/1.mp4"_s, 1}});
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s}, asked);
    QTRY_COMPARE(lastPlay(), command);
}

void PlayRequestsTest::busRequestShowsNothingOfTheVideoBefore()
{
    // Back in the list, and while the store takes its time the player page is up already.
    start();
    playUntil(32);
    const auto pictureIsSeen = [this] { // beside what turns in the middle while it waits
        const QImage image = m_window.grab().toImage();
        return qGray(image.pixel(image.width() / 4, image.height() / 2)) > 60;
    };
    QTRY_VERIFY(pictureIsSeen());
    back();
    QTRY_COMPARE(stack(), u"library"_s);
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Paused);
    m_store.answerBy([](const SparqlQuery &) { return FakeSparqlAnswer::later(); });
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/2.mp4"_s});
    QVERIFY(player()->isVisible());
    QVERIFY(!pictureIsSeen());
}

void PlayRequestsTest::burstOfBusRequestsSavesOnceAndPlaysTheNewest()
{
    start();
    playUntil(32);
    auto *service = m_controller->findChild<KestrelService *>();
    m_store.answer(FakeSparqlAnswer::never()); // the video goes on for a while
    for (int i = 0; i < 1000; ++i)
        service->play({u"file:///videos/%1.mp4"_s.arg(i)});
    QTRY_VERIFY(!m_store.texts().filter(u"videos/999.mp4"_s).isEmpty());
    QCOMPARE(savedPlaces().size(), 1);
    QVERIFY2(m_store.texts().size() <= 4, qPrintable(m_store.texts().join(u'\n')));
    expire(m_controller->findChild<QTimer *>(u"lookupGuard"_s));
    QTRY_COMPARE(lastPlay(), u"play file:///videos/999.mp4 0"_s);
}

void PlayRequestsTest::busRequestDropsAParkedOne()
{
    // Back out of a video, a tap on the next, and at the same moment another program asks for a third.
    start();
    playUntil(32);
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    back();
    tap(video(2, 5));
    QCOMPARE(stack(), u"library"_s);
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s});
    Q_EMIT player()->savingReady();
    QTRY_COMPARE(stack(), u"player"_s);
    QCOMPARE(played(), u"file:///videos/1.mp4"_s);
    QCOMPARE(questionsForThePlace(), QStringList());
    QCOMPARE(backend()->commands().filter(u"videos/2.mp4"_s), QStringList());
}

void PlayRequestsTest::emptyAddressOverTheBusLeavesThePagesAsTheyAre()
{
    start();
    tap(video(1));
    QSignalSpy launched(m_controller.get(), &ApplicationController::launched);
    expect("void ApplicationController::processAndPlay(QString&, int) Empty url");
    m_controller->findChild<KestrelService *>()->play({QString(), u"file:///videos/2.mp4"_s});
    QCOMPARE(launched.count(), 1);
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(player()->backButtonType(), PlayerPage::NormalBackButton);
    QCOMPARE(played(), u"file:///videos/1.mp4"_s);
}

void PlayRequestsTest::addressThatNobodyCouldHaveIsRefused()
{
    start();
    expect("void ApplicationController::serviceFwPlayRequest(QString, uint) Address too long");
    m_controller->findChild<KestrelService *>()->play({u"file:///"_s + QString(1 << 20, u'x')});
    QCOMPARE(stack(), u"library"_s);
    QVERIFY(!player());
    m_controller->findChild<KestrelService *>()->play({u"file:///"_s + QString(60000, u'x')});
    QTRY_COMPARE(stack(), u"player"_s);
}

int main(int argc, char **argv)
{
    return runControllerTest<PlayRequestsTest>(argc, argv);
}
#include "tst_playrequests.moc"
