// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "data/positionjournal.h"
#include "data/thumbnailhelper.h"
#include "data/trackerinterface.h"
#include "player/playercontroller.h"
#include "support/driventimer.h"

#include <QDir>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

// A program was killed in the middle of a video, and this is the next one.
class LeftPlacesTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void init();
    void cleanup() { clean(); }

    void theStoreIsGivenThePlaceAtTheStart_data();
    void theStoreIsGivenThePlaceAtTheStart();
    void theVideoGoesOnThereAtOnce();
    void aPositionThatIsAskedForCountsMore();
    void aProgramThatEndsInOrderLeavesNothing();
    void aProgramThatEndsWithoutAnAnswerLeavesThePlace();

private:
    [[nodiscard]] QStringList savedPlaces() const
    {
        return m_store.texts(SparqlQuery::UpdateStatement).filter(u"nmm:runTime"_s);
    }
    [[nodiscard]] static QStringList notes()
    {
        // Not the one that is being written.
        return QDir(PositionJournal::defaultFolder()).entryList({u"*.json"_s}, QDir::Files | QDir::Hidden);
    }
    [[nodiscard]] QString lastPlay() const
    {
        const QStringList plays
            = player() && backend() ? backend()->commands().filter(u"play "_s) : QStringList();
        return plays.isEmpty() ? QString() : plays.constLast();
    }
    // As the library would tell of it, and the store when it is asked by address.
    void storeTellsOfPosition(int position)
    {
        m_store.answerWith({{u"urn:uuid:1"_s, u"video 1"_s, u"1.mp4"_s, 60, position, u"video/mp4"_s,
                             u"file:///videos/1.mp4"_s, 1}});
    }
};

// Video 1 was at 38.
void LeftPlacesTest::init()
{
    QDir(PositionJournal::defaultFolder()).removeRecursively();
    PositionJournal left(TrackerInterface::instance(), ThumbnailHelper::instance(),
                         PositionJournal::defaultFolder());
    m_store.answer(FakeSparqlAnswer::never());
    left.note(video(1), 38);
    QVERIFY(left.waitForDone(10000));
    m_store.clear();
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::rows({{20}}));
}

void LeftPlacesTest::theStoreIsGivenThePlaceAtTheStart_data()
{
    QTest::addColumn<bool>("serviceFramework");
    QTest::newRow("with the library") << false;
    QTest::newRow("for calls over the bus") << true;
}

void LeftPlacesTest::theStoreIsGivenThePlaceAtTheStart()
{
    QFETCH(bool, serviceFramework);
    QCOMPARE(notes().size(), 1);
    start({}, serviceFramework);
    QTRY_COMPARE(savedPlaces().size(), 1);
    QVERIFY2(savedPlaces().constFirst().contains(u"<urn:uuid:1> nmm:runTime \"38\""_s),
             qPrintable(savedPlaces().constFirst()));
    QTRY_COMPARE(notes(), QStringList());
}

// The store tells of the video before it was given the place.
void LeftPlacesTest::theVideoGoesOnThereAtOnce()
{
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::later());
    start(u"file:///videos/1.mp4"_s);
    QTRY_COMPARE(stack(), u"player"_s);
    QTRY_COMPARE(lastPlay(), u"play file:///videos/1.mp4 38"_s);
}

void LeftPlacesTest::aPositionThatIsAskedForCountsMore()
{
    m_store.answerWhen(u"nmm:runTime ?_prop"_s, FakeSparqlAnswer::later());
    start();
    m_controller->findChild<KestrelService *>()->play({u"file:///videos/1.mp4"_s}, 10);
    QTRY_COMPARE(lastPlay(), u"play file:///videos/1.mp4 10"_s);
}

void LeftPlacesTest::aProgramThatEndsInOrderLeavesNothing()
{
    start();
    QTRY_COMPARE(notes(), QStringList());
    tap(video(2, 20));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->advance(10s);
    QVERIFY(runOut(m_controller->playerController()->findChild<QTimer *>(u"noteTimer"_s)));
    QTRY_COMPARE(notes().size(), 1);
    m_store.clear();
    QTimer::singleShot(0, m_controller.get(), &ApplicationController::stopAndQuit);
    QCOMPARE(QCoreApplication::exec(), 0);
    QCOMPARE(savedPlaces().size(), 1);
    QVERIFY(savedPlaces().constFirst().contains(u"<urn:uuid:2> nmm:runTime \"30\""_s));
    QTRY_COMPARE(notes(), QStringList());
}

void LeftPlacesTest::aProgramThatEndsWithoutAnAnswerLeavesThePlace()
{
    start();
    QTRY_COMPARE(notes(), QStringList());
    tap(video(2, 20));
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    backend()->advance(10s);
    m_store.answer(FakeSparqlAnswer::never());
    m_controller->stopAndQuit();
    m_controller.reset();
    QCOMPARE(notes().size(), 1);
    m_store.clear();
    start();
    QTRY_COMPARE(savedPlaces().size(), 1);
    QVERIFY(savedPlaces().constFirst().contains(u"<urn:uuid:2> nmm:runTime \"30\""_s));
}

int main(int argc, char **argv)
{
    return runControllerTest<LeftPlacesTest>(argc, argv);
}
#include "tst_leftplaces.moc"
