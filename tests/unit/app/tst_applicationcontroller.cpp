// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "library/filterwidget.h"
#include "library/localvideospage.h"
#include "library/myallvideoswidget.h"
#include "platform/media/nullmediabackend.h"
#include "platform/media/videowidget.h"
#include "platform/sparql/sparqlquery.h"
#include "platform/toolkit/scenemanager.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QKeyEvent>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

class ApplicationControllerTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup() { clean(); }
    void startsWithTheLibrary();
    void startedWithAnAddressPlaysItAndBackLeadsToTheLibrary();
    void startedByTheServiceFrameworkNoPageOpensByItself();
    void launchedWithNothingToPlayTheLibraryOpens();
    void tapPlaysAndBackReturns();
    void goToPageWithThePageOnTopDoesNothing();
    void goToNoPageWarns();
    void goBackWithNoPagesQuits();
    void lastPageStays();
    void staleAnswersAreIgnored();
    void emptyAddressWarns();
    void unknownFileIsPlayedWithoutTheStore();
    void silentStoreDoesNotStopAnAddress();
    void requestWhileThePlaceIsSavedWaitsAndThenPlays();
    void parkedRequestOfANeverPlayedVideoStartsToo();
    void callRefusesWithABanner();
    void callWithNoPageNotifiesAndQuits();
    void serviceRequestEmptiesTheFilterAndPlays();
    void keysGoToThePageOnTop();
    void cardAwayShowsItsPage();
    void orientationFollowsThePage();
    void placeIsKeptWhenTheProgramEndsWhileItPlays();
};

void ApplicationControllerTest::startsWithTheLibrary()
{
    start();
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), library());
}

void ApplicationControllerTest::startedWithAnAddressPlaysItAndBackLeadsToTheLibrary()
{
    start(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(stack(), u"player"_s);
    QVERIFY(!library());
    QCOMPARE(played(), u"file:///videos/1.mp4"_s);
    QCOMPARE(player()->backButtonType(), PlayerPage::TvMainViewBackButton);
    Q_EMIT player()->goBack();
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), library());
    QCOMPARE(player()->backButtonType(), PlayerPage::NormalBackButton);
}

void ApplicationControllerTest::startedByTheServiceFrameworkNoPageOpensByItself()
{
    start({}, true);
    QCOMPARE(stack(), QString());
    QVERIFY(!library());
}

void ApplicationControllerTest::launchedWithNothingToPlayTheLibraryOpens()
{
    start({}, true);
    m_controller->findChild<KestrelService *>()->launch();
    QCOMPARE(stack(), u"library"_s);
}

void ApplicationControllerTest::tapPlaysAndBackReturns()
{
    start();
    tap(video(1));
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), player());
    QVERIFY(!library()->isVisible());
    QCOMPARE(player()->backButtonType(), PlayerPage::NormalBackButton);
    Q_EMIT player()->goBack();
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), library());
    QTRY_VERIFY(library()->isVisible());
    QVERIFY(library()->localVideosWidget()->autoUpdate());
}

void ApplicationControllerTest::goToPageWithThePageOnTopDoesNothing()
{
    start();
    m_controller->goToLocalVideosPage();
    QCOMPARE(stack(), u"library"_s);
}

void ApplicationControllerTest::goToNoPageWarns()
{
    start();
    expect("void ApplicationController::goToPage(ApplicationPage*) Kestrel: Cannot go to page, toPage null.");
    m_controller->goToPage(nullptr);
    QCOMPARE(stack(), u"library"_s);
}

void ApplicationControllerTest::goBackWithNoPagesQuits()
{
    start({}, true);
    expect("void ApplicationController::goBack() page list empty, can't go back!");
    QTimer::singleShot(0, m_controller.get(), &ApplicationController::goBack);
    QCOMPARE(QCoreApplication::exec(), 0);
}

void ApplicationControllerTest::lastPageStays()
{
    start();
    m_controller->goBack();
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(m_window.sceneManager()->currentPage(), library());
}

void ApplicationControllerTest::staleAnswersAreIgnored()
{
    start();
    m_store.answer(FakeSparqlAnswer::never());
    look(u"file:///videos/9.mp4"_s);
    m_controller->trackerDataReady(video(2), 12345);
    m_controller->trackerDataReady(video(2), 0);
    m_controller->accessPlayerPage(5, 777);
    QCOMPARE(stack(), u"library"_s);
}

void ApplicationControllerTest::emptyAddressWarns()
{
    start();
    QSignalSpy launched(m_controller.get(), &ApplicationController::launched);
    expect("void ApplicationController::processAndPlay(QString&, int) Empty url");
    look({});
    QCOMPARE(launched.count(), 1);
}

void ApplicationControllerTest::unknownFileIsPlayedWithoutTheStore()
{
    start();
    m_store.answerWith({});
    look(u"file:///elsewhere.mp4"_s, 7);
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(played(), u"file:///elsewhere.mp4"_s);
    QCOMPARE(m_controller->playerController()->currentVideo().playPosition, 7u);
}

void ApplicationControllerTest::silentStoreDoesNotStopAnAddress()
{
    start();
    m_store.answer(FakeSparqlAnswer::error(u"gone"_s));
    look(u"file:///elsewhere.mp4"_s);
    auto *guard = m_controller->findChild<QTimer *>(u"lookupGuard"_s);
    QVERIFY(guard->isActive());
    QCoreApplication::processEvents();
    QCOMPARE(stack(), u"library"_s);
    guard->stop();
    QMetaObject::invokeMethod(guard, "timeout");
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(played(), u"file:///elsewhere.mp4"_s);
}

void ApplicationControllerTest::requestWhileThePlaceIsSavedWaitsAndThenPlays()
{
    // Back out of one video and tap another before the place in the first is saved.
    start();
    tap(video(1, 20));
    Q_EMIT player()->goBack();
    QVERIFY(m_controller->playbackBlocked());
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{17}}));
    tap(video(2, 5));
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(played(), u"file:///videos/1.mp4"_s);
    Q_EMIT player()->savingReady();
    QTRY_COMPARE(stack(), u"library player"_s);
    QCOMPARE(played(), u"file:///videos/2.mp4"_s);
    QCOMPARE(m_controller->playerController()->currentVideo().playPosition, 17u);
}

void ApplicationControllerTest::parkedRequestOfANeverPlayedVideoStartsToo()
{
    start();
    tap(video(1, 20));
    Q_EMIT player()->goBack();
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({})); // the store has no place in it
    tap(video(2, 0));
    Q_EMIT player()->savingReady();
    QCoreApplication::processEvents();
    auto *guard = m_controller->findChild<QTimer *>(u"playedTimeGuard"_s);
    QVERIFY(guard->isActive());
    guard->stop();
    QMetaObject::invokeMethod(guard, "timeout");
    QCOMPARE(stack(), u"library player"_s);
    QCOMPARE(played(), u"file:///videos/2.mp4"_s);
}

void ApplicationControllerTest::callRefusesWithABanner()
{
    start();
    FakeCalls::active = 1;
    tap(video(1));
    QCOMPARE(stack(), u"library"_s);
    QVERIFY(library()->localVideosWidget()->isCallRefused());
    QCOMPARE(m_notices.messages, QStringList());
    FakeCalls::active = 0;
    tap(video(1));
    QCOMPARE(stack(), u"library player"_s);
    QVERIFY(!library()->localVideosWidget()->isCallRefused());
}

void ApplicationControllerTest::callWithNoPageNotifiesAndQuits()
{
    start({}, true);
    FakeCalls::active = 1;
    QTimer::singleShot(0, m_controller.get(),
                       [this] { m_controller->serviceFwPlayRequest(u"file:///x.mp4"_s, 0); });
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(m_notices.messages, QStringList(qtTrId("qtn_vide_error_call")));
}

void ApplicationControllerTest::serviceRequestEmptiesTheFilterAndPlays()
{
    start();
    library()->showTextEdit(u"vid"_s, true);
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s}, 30);
    QCOMPARE(library()->localVideosWidget()->filterWidget()->text(), QString());
    QTRY_COMPARE(stack(), u"player"_s);
    QCOMPARE(m_controller->playerController()->currentVideo().playPosition, 30u);
    QCOMPARE(player()->backButtonType(), PlayerPage::TvMainViewBackButton);
    Q_EMIT player()->goBack();
    QCOMPARE(stack(), u"library"_s);
    QCOMPARE(player()->backButtonType(), PlayerPage::NormalBackButton);
}

void ApplicationControllerTest::keysGoToThePageOnTop()
{
    start();
    QStringList heard;
    connect(m_controller.get(), &ApplicationController::keyEvent, this, [&heard](QKeyEvent *event) {
        heard.append(event->type() == QEvent::KeyPress ? u"press"_s : u"release"_s);
    });
    QTest::keyClick(&m_window, Qt::Key_V, Qt::NoModifier);
    QCOMPARE(heard.join(u' '), u"press"_s);
    QCOMPARE(library()->localVideosWidget()->filterWidget()->text(), u"v"_s);
    tap(video(1));
    QTest::keyClick(&m_window, Qt::Key_F5, Qt::NoModifier);
    QCOMPARE(heard.join(u' '), u"press press release"_s);
}

void ApplicationControllerTest::cardAwayShowsItsPage()
{
    start();
    m_controller->mmcStateChanged(false);
    QVERIFY(!library()->isVisible());
    m_controller->mmcStateChanged(false);
    m_controller->mmcStateChanged(true);
    QTRY_VERIFY(library()->isVisible());
}

void ApplicationControllerTest::orientationFollowsThePage()
{
    start();
    QCOMPARE(m_window.orientationAngle(), 270);
    QVERIFY(m_window.isOrientationAngleLocked());
    tap(video(1));
    QCOMPARE(m_window.orientationAngle(), 0);
    QCOMPARE(library()->requestedOrientation(), 1);
    Q_EMIT player()->goBack();
    QCOMPARE(m_window.orientationAngle(), 270);
    QCOMPARE(library()->requestedOrientation(), 0);
}

void ApplicationControllerTest::placeIsKeptWhenTheProgramEndsWhileItPlays()
{
    // The window is closed in the middle of a video; the next start goes on there.
    start();
    tap(video(1));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    auto *backend = qobject_cast<NullMediaBackend *>(player()->videoWidget()->backend());
    QVERIFY(backend);
    backend->advance(std::chrono::seconds(12));
    m_store.clear();
    QMetaObject::invokeMethod(qApp, "aboutToQuit");
    const QStringList updates = m_store.texts(SparqlQuery::UpdateStatement);
    QCOMPARE(updates.size(), 1);
    QVERIFY2(updates.first().contains(u"<urn:uuid:1> nmm:runTime \"12\""_s), qPrintable(updates.first()));
}

int main(int argc, char **argv)
{
    return runControllerTest<ApplicationControllerTest>(argc, argv);
}
#include "tst_applicationcontroller.moc"
