// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerfixture.h"

#include <data/thumbnailpaths.h>

#include <QFileInfo>
#include <QMetaMethod>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString stillPath(const QString &url)
{
    return ThumbnailPaths::pausePath(url, u"video-grid"_s);
}

} // namespace

class TestPlayerController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void playingStartsAtTheSavedPosition_data();
    void playingStartsAtTheSavedPosition();
    void theDisplayModeFillsOnlyWhenItIsZero();
    void replayingGoesOnWhereItWasSavedJustNow();
    void aRequestWithoutARendererWaitsForIt();
    void aRendererIsConnectedOnce();
    void theLossOfTheRendererIsTold();
    void otherRenderersAreNotMissed();
    void playTellsWhetherTheStoreKnowsTheVideo();
    void theOrderOfPlaying();
    void theResumeRule_data();
    void theResumeRule();
    void oncePlayedToItsEndNothingMoreIsSaved();
    void theEndStopsAVideoThatIsBeingLeft();
    void theEndIsToldAndTheStillIsRemoved();
    void aPauseSavesPlaceAndStill();
    void aStillOfWhatJustEndedIsNotKept();
    void aStillIsKeptAgainOncePlayedAgain();
    void theEndRemovesAStillThatCameAfterTheLastSave();
    void theLastVideoIsNeverAnother();
    void savingIsToldAfterTheCopyWasRefreshed();
    void withoutAWidgetItOnlyLogs();
    void metadataOfAPictureIsNoted();
    void bufferingIsPassedOn();
    void signalsAndSlotsStandInTheirOrder();

private:
    PlayerFixture f;
};

void TestPlayerController::init()
{
    QVERIFY(f.startWithRenderer());
}

void TestPlayerController::cleanup()
{
    f.stop();
}

void TestPlayerController::playingStartsAtTheSavedPosition_data()
{
    QTest::addColumn<int>("startMode");
    QTest::addColumn<QString>("command");
    QTest::newRow("resume") << 1 << u"play file:///v/urn-1.mp4 17"_s;
    QTest::newRow("from the beginning") << 0 << u"play file:///v/urn-1.mp4 0"_s;
    QTest::newRow("any other mode") << 2 << u"play file:///v/urn-1.mp4 0"_s;
}

void TestPlayerController::playingStartsAtTheSavedPosition()
{
    QFETCH(int, startMode);
    QFETCH(QString, command);
    f.controller->setStartMode(startMode);
    QSignalSpy started(f.controller.get(), &PlayerController::playbackIsStarted);
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 17);
    f.controller->play(video);
    QCOMPARE(f.backend->commands(), QStringList{command});
    QCOMPARE(started.size(), 1);
}

void TestPlayerController::theDisplayModeFillsOnlyWhenItIsZero()
{
    VideoInfo video = PlayerFixture::video();
    for (const int mode : {0, 1, 2, 7}) {
        f.controller->setDisplayMode(mode);
        f.controller->play(video);
        QCOMPARE(f.widget->fillMode(), mode == 0);
    }
}

void TestPlayerController::replayingGoesOnWhereItWasSavedJustNow()
{
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 0);
    f.controller->play(video);
    f.controller->savePosition(23);
    // The library's record is older than the save.
    VideoInfo again = PlayerFixture::video(u"urn:1"_s, 60, 5);
    f.backend->clearCommands();
    f.controller->play(again);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 23"_s});
    QCOMPARE(again.playPosition, 23u);
    // Another video, and one that the store does not know, keep their own.
    VideoInfo other = PlayerFixture::video(u"urn:2"_s, 60, 7);
    f.controller->play(other);
    VideoInfo unknown = PlayerFixture::video(QString(), 60, 9);
    f.controller->play(unknown);
    QCOMPARE(f.backend->commands().mid(1),
             (QStringList{u"play file:///v/urn-2.mp4 7"_s, u"play file:///v/.mp4 9"_s}));
}

void TestPlayerController::aRequestWithoutARendererWaitsForIt()
{
    f.stop();
    f.start();
    QSignalSpy started(f.controller.get(), &PlayerController::playbackIsStarted);
    f.widget->setControlsVisible(true);
    QTest::ignoreMessage(QtDebugMsg,
                         "void PlayerController::play(VideoInfo&) Renderer not found, delaying play");
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, 60, 17);
    f.controller->play(video);
    QCOMPARE(started.size(), 0);
    QTRY_COMPARE(started.size(), 1);
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-1.mp4 17"_s});
    QVERIFY(!f.widget->controlsVisible());
    QVERIFY(f.backend->stillOnPause());
    f.controller->fetchRenderer(); // announced again: nothing waits any more
    QCOMPARE(f.backend->commands().size(), 1);
}

void TestPlayerController::aRendererIsConnectedOnce()
{
    f.controller->fetchRenderer();
    f.controller->fetchRenderer();
    QSignalSpy buffering(f.controller.get(), &PlayerController::buffering);
    QSignalSpy errors(f.controller.get(), &PlayerController::rendererError);
    Q_EMIT f.widget->renderer()->bufferingInfo(50);
    Q_EMIT f.widget->renderer()->error({308, QString()});
    QCOMPARE(buffering.size(), 1);
    QCOMPARE(errors.size(), 1);
}

void TestPlayerController::theLossOfTheRendererIsTold()
{
    QVERIFY(f.playUntilItPlays(PlayerFixture::video()));
    QSignalSpy errors(f.controller.get(), SIGNAL(error(QString)));
    QTest::ignoreMessage(QtWarningMsg,
                         "void PlayerController::removeRenderer(QString, QString) Renderer was removed");
    f.backend->lose();
    QTRY_COMPARE(errors.size(), 1);
    QCOMPARE(errors.first().first().toString(), qtTrId("qtn_vide_error_generic"));
    // The next video is played by the one that takes its place.
    QTRY_VERIFY(f.widget->renderer() != nullptr);
    QVERIFY(f.playUntilItPlays(PlayerFixture::video(u"urn:2"_s)));
    QCOMPARE(f.backend->commands(), QStringList{u"play file:///v/urn-2.mp4 0"_s});
}

void TestPlayerController::otherRenderersAreNotMissed()
{
    QSignalSpy errors(f.controller.get(), SIGNAL(error(QString)));
    Q_EMIT RendererRegistry::instance()->rendererRemoved(u"another"_s, u"Another"_s);
    QCOMPARE(errors.size(), 0);
}

void TestPlayerController::playTellsWhetherTheStoreKnowsTheVideo()
{
    QSignalSpy indexed(f.controller.get(), &PlayerController::isIndexedByTracker);
    VideoInfo known = PlayerFixture::video();
    VideoInfo unknown = PlayerFixture::video(QString());
    f.controller->play(known);
    f.controller->play(unknown);
    QCOMPARE(indexed.size(), 2);
    QCOMPARE(indexed.at(0).first().toBool(), true);
    QCOMPARE(indexed.at(1).first().toBool(), false);
}

void TestPlayerController::theOrderOfPlaying()
{
    QVERIFY(f.playUntilItPlays(PlayerFixture::video(u"urn:1"_s)));
    f.controller->setStopAtEnd(true);
    f.controller->rendererStateChanged(AvloRenderer::Stopped);
    f.backend->clearCommands();
    f.widget->setFrame(u"/still.jpeg"_s);
    f.controller->setDisplayMode(0);
    QStringList order;
    PlayerController *controller = f.controller.get();
    const auto note = [&](const QString &what) {
        order.append(what + (controller->stopAtEnd() ? u" stop"_s : QString())
                     + (controller->hasPicture() ? u" picture"_s : QString())
                     + (f.widget->frame().isEmpty() ? QString() : u" still"_s)
                     + (f.widget->fillMode() ? u" fill"_s : QString()) + u' '
                     + f.backend->commands().join(u' '));
    };
    connect(controller, &PlayerController::showBufferIconRequested, this, [&] { note(u"icon"_s); });
    connect(controller, &PlayerController::isIndexedByTracker, this, [&] { note(u"indexed"_s); });
    connect(controller, &PlayerController::deleteBufferIconStatusLabel, this, [&] { note(u"label"_s); });
    connect(controller, &PlayerController::playbackIsStarted, this, [&] { note(u"started"_s); });
    VideoInfo next = PlayerFixture::video(u"urn:2"_s, 60, 7);
    controller->play(next);
    const QString command = u"play file:///v/urn-2.mp4 7"_s;
    QCOMPARE(
        order,
        (QStringList{u"icon "_s, u"indexed "_s, u"label fill "_s + command, u"started fill "_s + command}));
}

void TestPlayerController::theResumeRule_data()
{
    QTest::addColumn<quint32>("duration");
    QTest::addColumn<quint32>("position");
    QTest::addColumn<QString>("saved");
    QTest::newRow("in the middle") << 60u << 17u << u"urn:1 17"_s;
    QTest::newRow("three seconds before the end") << 60u << 57u << u"urn:1 57"_s;
    QTest::newRow("two seconds before the end") << 60u << 58u << u"urn:1 0"_s;
    QTest::newRow("at the end") << 60u << 60u << u"urn:1 0"_s;
    QTest::newRow("beyond the end") << 60u << 61u << u"urn:1 61"_s;
    QTest::newRow("at the beginning") << 60u << 0u << u"urn:1 0"_s;
    QTest::newRow("unknown length") << 0u << 17u << u"urn:1 17"_s;
    QTest::newRow("a short clip") << 2u << 1u << u"urn:1 0"_s;
}

void TestPlayerController::theResumeRule()
{
    QFETCH(quint32, duration);
    QFETCH(quint32, position);
    QFETCH(QString, saved);
    VideoInfo video = PlayerFixture::video(u"urn:1"_s, duration);
    f.controller->play(video);
    QImage frame(32, 18, QImage::Format_RGB32);
    frame.fill(Qt::red);
    QTemporaryDir folder;
    QVERIFY(frame.save(folder.filePath(u"frame.png"_s)));
    QVERIFY(ThumbnailHelper::instance()->createPauseThumbnail(video.url, folder.filePath(u"frame.png"_s)));
    f.controller->savePosition(position);
    QCOMPARE(f.savedPositions(), QStringList{saved});
    QCOMPARE(f.controller->lastVideo().playPosition, saved.section(u' ', 1).toUInt());
    QCOMPARE(QFileInfo::exists(stillPath(video.url)), !saved.endsWith(u" 0"_s));
}

void TestPlayerController::oncePlayedToItsEndNothingMoreIsSaved()
{
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    f.controller->savePosition(59);
    f.controller->savePosition(30);
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 0"_s});
    f.controller->play(video);
    f.controller->savePosition(30);
    QCOMPARE(f.savedPositions(), (QStringList{u"urn:1 0"_s, u"urn:1 30"_s}));
}

void TestPlayerController::theEndStopsAVideoThatIsBeingLeft()
{
    QVERIFY(f.playUntilItPlays(PlayerFixture::video()));
    QSignalSpy ended(f.controller.get(), &PlayerController::playbackEnded);
    f.controller->setStopAtEnd(true);
    f.backend->advance(60s);
    QTRY_COMPARE(f.savedPositions(), QStringList{u"urn:1 0"_s});
    QCOMPARE(ended.size(), 0);
    QCOMPARE(f.backend->commands().last(), u"stop"_s);
}

void TestPlayerController::theEndIsToldAndTheStillIsRemoved()
{
    VideoInfo video = PlayerFixture::video();
    QVERIFY(f.playUntilItPlays(video));
    f.backend->advance(5s);
    f.controller->pause();
    QTRY_VERIFY(QFileInfo::exists(stillPath(video.url)));
    QTRY_COMPARE(f.savedPositions().size(), 1);
    f.controller->resume();
    QVERIFY(f.waitFor(AvloRenderer::Playing));
    f.widget->setFrame(stillPath(video.url));
    QSignalSpy ended(f.controller.get(), &PlayerController::playbackEnded);
    QSignalSpy saved(f.controller.get(), &PlayerController::positionSaved);
    f.backend->advance(60s);
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(saved.size(), 1);
    QCOMPARE(f.savedPositions().last(), u"urn:1 0"_s);
    QVERIFY(!QFileInfo::exists(stillPath(video.url)));
    QVERIFY(f.widget->frame().isEmpty());
    QVERIFY(!f.backend->commands().contains(u"stop"_s));
}

void TestPlayerController::aPauseSavesPlaceAndStill()
{
    VideoInfo video = PlayerFixture::video();
    QVERIFY(f.playUntilItPlays(video));
    QSignalSpy saved(f.controller.get(), &PlayerController::positionSaved);
    QSignalSpy still(f.controller.get(), &PlayerController::pauseThumbnailUpdated);
    f.backend->advance(12500ms);
    f.controller->pause();
    QTRY_COMPARE(saved.size(), 1);
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 12"_s});
    QCOMPARE(still.size(), 1);
    QVERIFY(QFileInfo::exists(stillPath(video.url)));
    // A seek that ends while paused is a new place with a new still.
    f.widget->seekBy(10);
    QTRY_COMPARE(saved.size(), 2);
    QCOMPARE(f.savedPositions().last(), u"urn:1 22"_s);
    QCOMPARE(still.size(), 2);
}

void TestPlayerController::aStillOfWhatJustEndedIsNotKept()
{
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    f.controller->savePosition(60);
    QSignalSpy still(f.controller.get(), &PlayerController::pauseThumbnailUpdated);
    f.controller->handleMetadataChange(u"paused-thumbnail-uri"_s, {u"file:///x.mp4"_s, video.url});
    f.controller->handleMetadataChange(u"paused-thumbnail-uri"_s, {});
    QCOMPARE(still.size(), 0);
}

void TestPlayerController::aStillIsKeptAgainOncePlayedAgain()
{
    QTemporaryDir folder;
    VideoInfo video = PlayerFixture::video();
    video.url = folder.filePath(u"frame.png"_s); // an address that can be read as a picture
    QImage frame(32, 18, QImage::Format_RGB32);
    frame.fill(Qt::red);
    QVERIFY(frame.save(video.url));
    QSignalSpy still(f.controller.get(), &PlayerController::pauseThumbnailUpdated);
    f.controller->play(video);
    f.controller->savePosition(60);
    f.controller->handleMetadataChange(u"paused-thumbnail-uri"_s, {video.url, video.url});
    QCOMPARE(still.size(), 0);
    f.controller->play(video);
    f.controller->handleMetadataChange(u"paused-thumbnail-uri"_s, {video.url, video.url});
    QCOMPARE(still.size(), 1);
    QVERIFY(QFileInfo::exists(stillPath(video.url)));
}

void TestPlayerController::theEndRemovesAStillThatCameAfterTheLastSave()
{
    QTemporaryDir folder;
    QImage frame(32, 18, QImage::Format_RGB32);
    frame.fill(Qt::red);
    const QString file = folder.filePath(u"frame.png"_s);
    QVERIFY(frame.save(file));
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    f.controller->savePosition(59); // paused just before the end; its still comes behind it
    f.controller->handleMetadataChange(u"paused-thumbnail-uri"_s, {video.url, file});
    QVERIFY(QFileInfo::exists(stillPath(video.url)));
    f.controller->endReached();
    QVERIFY(!QFileInfo::exists(stillPath(video.url)));
    QCOMPARE(f.savedPositions(), QStringList{u"urn:1 0"_s});
}

void TestPlayerController::theLastVideoIsNeverAnother()
{
    VideoInfo first = PlayerFixture::video(u"urn:1"_s);
    f.controller->play(first);
    QCOMPARE(f.controller->lastVideo().urn, u"urn:1"_s);
    f.controller->savePosition(20);
    QCOMPARE(f.controller->lastVideo().playPosition, 20u);
    VideoInfo second = PlayerFixture::video(u"urn:2"_s, 60, 3);
    f.controller->play(second);
    QCOMPARE(f.controller->lastVideo().urn, u"urn:2"_s);
    QCOMPARE(f.controller->currentVideo().playPosition, 3u);
    // The saved place of the first is still known when it is played again.
    VideoInfo again = PlayerFixture::video(u"urn:1"_s);
    f.controller->play(again);
    QCOMPARE(again.playPosition, 20u);
}

void TestPlayerController::savingIsToldAfterTheCopyWasRefreshed()
{
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    quint32 seen = 0;
    connect(f.controller.get(), &PlayerController::positionSaved, this,
            [&] { seen = f.controller->lastVideo().playPosition; });
    f.controller->savePosition(33);
    QCOMPARE(seen, 33u);
}

void TestPlayerController::withoutAWidgetItOnlyLogs()
{
    PlayerController controller(nullptr, RendererRegistry::instance(), TrackerInterface::instance(),
                                ThumbnailHelper::instance(), nullptr);
    QTest::ignoreMessage(QtWarningMsg, "void PlayerController::pause() Videowidget missing");
    controller.pause();
    QTest::ignoreMessage(QtWarningMsg, "void PlayerController::resume() Videowidget missing");
    controller.resume();
    QTest::ignoreMessage(QtWarningMsg, "void PlayerController::stop() Videowidget missing");
    controller.stop();
    controller.handleEvent(3);
    controller.endReached();
    controller.setControlsVisible(true);
    controller.fetchRenderer();
    controller.paused();
}

void TestPlayerController::metadataOfAPictureIsNoted()
{
    QVERIFY(!f.controller->hasPicture());
    QVERIFY(f.playUntilItPlays(PlayerFixture::video()));
    QVERIFY(f.controller->hasPicture());
    VideoInfo video = PlayerFixture::video();
    f.controller->play(video);
    QVERIFY(!f.controller->hasPicture());
    f.controller->handleMetadataChange(u"title"_s, {u"x"_s});
    QVERIFY(!f.controller->hasPicture());
}

void TestPlayerController::bufferingIsPassedOn()
{
    f.media.stalls.append({1s, 4s});
    f.backend->setDefaultMedia(f.media);
    QVERIFY(f.playUntilItPlays(PlayerFixture::video()));
    QSignalSpy buffering(f.controller.get(), &PlayerController::buffering);
    f.backend->advance(6s);
    QList<float> percents;
    for (const QVariantList &arguments : buffering)
        percents.append(arguments.first().toFloat());
    QCOMPARE(percents, (QList<float>{0, 25, 50, 75, 100}));
}

void TestPlayerController::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = PlayerController::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    QCOMPARE(signatures.join('\n'),
             QByteArrayList({"error(QString)",
                             "positionSaved()",
                             "deleteBufferIconStatusLabel()",
                             "pauseThumbnailUpdated()",
                             "rendererError(QString)",
                             "isIndexedByTracker(bool)",
                             "buffering(float)",
                             "playbackEnded()",
                             "playbackIsStarted()",
                             "showBufferIconRequested()",
                             "hideBufferIconRequested()",
                             "criticalError()",
                             "deviceDisplayStatusOff()",
                             "resume()",
                             "pause()",
                             "stop()",
                             "togglePause()",
                             "deviceLockStatusChanged(bool)",
                             "disableOutputRectangle()",
                             "tvOutvalueChanged()",
                             "savePosition(uint)",
                             "paused()",
                             "fetchRenderer()",
                             "removeRenderer(QString,QString)",
                             "rendererStateChanged(AvloRenderer::State)",
                             "handleMetadataChange(QString,QVariantList)",
                             "error(AvloError)",
                             "endReached()"})
                 .join('\n'));
}

QTEST_MAIN(TestPlayerController)
#include "test_playercontroller.moc"
