// SPDX-License-Identifier: GPL-3.0-or-later
#include "videostage.h"

#include <QStyleHints>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

// Fingers on the picture of a playing video.
class VideoGesturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { f.close(); }
    void gesture_data();
    void gesture();
    void theOverlaySaysHowFar_data();
    void theOverlaySaysHowFar();
    void theWholeWidthIsAPartOfALongFilm_data();
    void theWholeWidthIsAPartOfALongFilm();
    void aSwipePausesNothing();
    void aSwipeWhilePausedEndsInOnePlace();
    void aSwipeWithoutAnEndOfTheVideo();
    void aLongPressIsFastWhileItLasts_data();
    void aLongPressIsFastWhileItLasts();
    void aLongPressDoublesWhatIsFast();
    void noLongPress_data();
    void noLongPress();
    void brightnessIsForgottenAtTheNextVideo();
    void theDarkestPictureIsNotBlack();
    void twoTapsAreADoubleTap_data();
    void twoTapsAreADoubleTap();
    void aSlowDoubleTapIsTwoTaps();
    void aDoubleTapThatIsHeldIsNothingMore();
    void aTapAfterOneThatWasTakenAwayIsOne();
    void aLostRendererEndsTheGesture();

private:
    [[nodiscard]] QString outcome() const;
    VideoStage f;
};

// What is otherwise than before.
QString VideoGesturesTest::outcome() const
{
    QStringList parts;
    if (qAbs(f.second() - 15) > 0.05)
        parts.append(u"at %1"_s.arg(f.second(), 0, 'f', 1));
    if (f.backend->volume() != 0.5)
        parts.append(u"volume %1"_s.arg(qRound(f.backend->volume() * 100)));
    if (f.widget->brightness() != 1)
        parts.append(u"brightness %1"_s.arg(qRound(f.widget->brightness() * 100)));
    if (f.backend->rate() != 1)
        parts.append(u"rate %1"_s.arg(f.backend->rate()));
    if (f.widget->controlsVisible())
        parts.append(u"controls"_s);
    if (f.backend->state() != AvloRenderer::Playing)
        parts.append(u"not playing"_s);
    return parts.join(u", "_s);
}

void VideoGesturesTest::gesture_data()
{
    QTest::addColumn<QPointF>("from"); // parts of the picture, which is 480 x 854
    QTest::addColumn<QList<QPoint>>("ways");
    QTest::addColumn<QString>("trouble");
    QTest::addColumn<QString>("outcome");
    const QPointF left(0.25, 0.5);
    const QPointF right(0.75, 0.5);
    using Ways = QList<QPoint>;

    QTest::newRow("a tap") << left << Ways{} << QString() << u"controls"_s;
    QTest::newRow("within the dead zone") << left << Ways{{20, 10}} << QString() << u"controls"_s;
    // Beyond the dead zone 480 pixels are the minute of this video.
    QTest::newRow("onwards") << left << Ways{{104, 0}} << QString() << u"at 25.0"_s;
    QTest::newRow("backwards") << right << Ways{{-104, 0}} << QString() << u"at 5.0"_s;
    QTest::newRow("before the beginning") << right << Ways{{-320, 0}} << QString() << u"at 0.0"_s;
    QTest::newRow("there and half back") << left << Ways{{184, 0}, {-80, 0}} << QString() << u"at 25.0"_s;
    QTest::newRow("back into the dead zone") << left << Ways{{104, 0}, {-100, 0}} << QString() << QString();
    QTest::newRow("through the dead zone") << left << Ways{{64, 0}, {-128, 0}} << QString() << u"at 10.0"_s;
    QTest::newRow("sideways, then up") << left << Ways{{104, 0}, {0, -300}} << QString() << u"at 25.0"_s;
    QTest::newRow("slanting") << left << Ways{{104, 60}} << QString() << u"at 25.0"_s;
    QTest::newRow("onwards, from right to left") << right << Ways{{-104, 0}} << u"mirrored"_s << u"at 25.0"_s;

    // 480 pixels are the whole of a level.
    QTest::newRow("up on the right") << right << Ways{{0, -120}} << QString() << u"volume 70"_s;
    QTest::newRow("down on the right") << right << Ways{{0, 120}} << QString() << u"volume 30"_s;
    QTest::newRow("far down on the right") << right << Ways{{0, 350}} << QString() << u"volume 0"_s;
    QTest::newRow("down on the left") << left << Ways{{0, 144}} << QString() << u"brightness 75"_s;
    QTest::newRow("up on the left") << left << Ways{{0, -144}} << QString() << QString();
    QTest::newRow("down, then sideways")
        << left << Ways{{0, 144}, {200, 0}} << QString() << u"brightness 75"_s;
    QTest::newRow("the halves stay, from right to left")
        << right << Ways{{0, -120}} << u"mirrored"_s << u"volume 70"_s;

    QTest::newRow("from the left edge") << QPointF(0.02, 0.5) << Ways{{80, 0}} << QString() << QString();
    QTest::newRow("from the right edge") << QPointF(0.98, 0.5) << Ways{{-200, 0}} << QString() << QString();
    QTest::newRow("from the foot") << QPointF(0.75, 0.99) << Ways{{0, -200}} << QString() << QString();
    QTest::newRow("from the top") << QPointF(0.25, 0.01) << Ways{{0, 200}} << QString() << QString();
    QTest::newRow("a tap at the edge") << QPointF(0.99, 0.5) << Ways{} << QString() << u"controls"_s;

    QTest::newRow("a seek with a second finger") << left << Ways{{104, 0}} << u"second finger"_s << QString();
    QTest::newRow("a volume with a second finger")
        << right << Ways{{0, -120}} << u"second finger"_s << u"volume 70"_s;
    QTest::newRow("a tap with a second finger") << left << Ways{} << u"second finger"_s << QString();
    QTest::newRow("a seek that is taken away") << left << Ways{{104, 0}} << u"taken away"_s << QString();
    QTest::newRow("a volume that is taken away")
        << right << Ways{{0, -120}} << u"taken away"_s << u"volume 70"_s;
    QTest::newRow("a tap that is taken away") << left << Ways{} << u"taken away"_s << QString();
    QTest::newRow("a seek under which the focus goes")
        << left << Ways{{104, 0}} << u"focus lost"_s << QString();
    QTest::newRow("a seek that cannot be") << left << Ways{{104, 0}} << u"not seekable"_s << QString();
    QTest::newRow("a volume where no seek can be")
        << right << Ways{{0, -120}} << u"not seekable"_s << u"volume 70"_s;
}

void VideoGesturesTest::gesture()
{
    QFETCH(const QPointF, from);
    QFETCH(const QList<QPoint>, ways);
    QFETCH(const QString, trouble);
    if (trouble == u"mirrored")
        QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    NullMediaBackend::Media media;
    media.seekable = trouble != u"not seekable";
    QVERIFY(f.open(VideoStage::Profile::Desktop, media));
    f.widget->setLayoutDirection(QGuiApplication::layoutDirection());
    f.backend->setVolume(0.5);

    f.fingers->down(0, f.at(from.x(), from.y()));
    for (const QPoint &way : ways)
        f.swipe(way);
    if (trouble == u"second finger") {
        f.fingers->down(1, f.at(0.5, 0.2));
        f.swipe({0, 60}, 1);
        f.fingers->up(1);
        f.swipe({30, -40});
    } else if (trouble == u"focus lost") {
        QEvent event(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(f.window.get(), &event);
    }
    if (trouble == u"taken away")
        f.fingers->taken();
    else
        f.fingers->up(0);
    f.backend->advance(0ms);
    QTEST(outcome(), "outcome");
    QVERIFY(!f.backend->isScrubbing());
}

void VideoGesturesTest::theOverlaySaysHowFar_data()
{
    QTest::addColumn<QPointF>("from");
    QTest::addColumn<QPoint>("way");
    QTest::addColumn<QString>("text");
    QTest::newRow("onwards") << QPointF(0.25, 0.5) << QPoint(104, 0) << u"00:25 +00:10"_s;
    QTest::newRow("backwards") << QPointF(0.75, 0.5) << QPoint(-104, 0) << u"00:05 -00:10"_s;
    QTest::newRow("volume") << QPointF(0.75, 0.5) << QPoint(0, 120) << u"80%"_s;
    QTest::newRow("brightness") << QPointF(0.25, 0.5) << QPoint(0, 144) << u"75%"_s;
}

void VideoGesturesTest::theOverlaySaysHowFar()
{
    QFETCH(const QPointF, from);
    QFETCH(const QPoint, way);
    QVERIFY(f.open());
    const GestureOverlay *overlay = f.widget->gestureOverlay();
    f.fingers->down(0, f.at(from.x(), from.y()));
    QVERIFY(!overlay->isShown());
    f.swipe(way);
    QVERIFY(overlay->isShown());
    QTEST(overlay->text(), "text");
    // In the picture, and not over the mark in its middle.
    QVERIFY(f.widget->rect().contains(overlay->geometry()));
    QVERIFY(!overlay->geometry().intersects(f.widget->controls()->playButton()->geometry()));
    f.fingers->up(0);
    QTRY_VERIFY(!overlay->isShown());
    QTRY_VERIFY(!overlay->isVisible());
}

void VideoGesturesTest::theWholeWidthIsAPartOfALongFilm_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("whole");
    QTest::newRow("a clip") << 20 << 20;
    QTest::newRow("some minutes") << 180 << 60;
    QTest::newRow("an hour") << 3600 << 900;
    QTest::newRow("three hours") << 3 * 3600 << 900;
}

void VideoGesturesTest::theWholeWidthIsAPartOfALongFilm()
{
    QFETCH(const int, seconds);
    QFETCH(const int, whole);
    NullMediaBackend::Media media;
    media.duration = std::chrono::seconds(seconds);
    QVERIFY(f.open(VideoStage::Profile::Desktop, media));
    f.widget->play(u"file:///a.mp4"_s, 0);
    f.backend->advance(0ms);
    f.fingers->down(0, f.at(0.25, 0.5));
    f.swipe({24 + 240, 0});
    QCOMPARE(f.second(), whole / 2.0);
    f.fingers->up(0);
}

// The video waits, and nobody who counts its pauses hears of one: the place is saved when it is left, not
// while somebody looks for another.
void VideoGesturesTest::aSwipePausesNothing()
{
    QVERIFY(f.open());
    QSignalSpy paused(f.widget, &VideoWidget::paused);
    QSignalSpy states(f.widget->renderer(), &AvloRenderer::stateChanged);
    f.fingers->down(0, f.at(0.25, 0.5));
    f.swipe({104, 0});
    f.backend->advance(1s);
    QCOMPARE(f.widget->position(), 25u); // waits there
    f.fingers->up(0);
    f.backend->advance(0ms);
    QCOMPARE(f.widget->position(), 25u);
    f.backend->advance(2s);
    QCOMPARE(f.widget->position(), 27u);
    QCOMPARE(paused.count(), 0);
    QCOMPARE(states.count(), 0);
    QStringList commands = f.backend->commands();
    commands.removeIf([](const QString &command) { return command.startsWith(u"seek"); });
    QCOMPARE(commands, (QStringList{u"begin scrub"_s, u"end scrub"_s}));
}

void VideoGesturesTest::aSwipeWhilePausedEndsInOnePlace()
{
    QVERIFY(f.open());
    f.pause();
    QSignalSpy paused(f.widget, &VideoWidget::paused);
    f.fingers->down(0, f.at(0.25, 0.5));
    f.swipe({104, 0});
    f.backend->advance(1s);
    QCOMPARE(paused.count(), 0);
    f.fingers->up(0);
    f.backend->advance(0ms);
    QCOMPARE(paused.count(), 1);
    QCOMPARE(f.widget->position(), 25u);
    f.backend->advance(2s);
    QCOMPARE(f.widget->position(), 25u);
}

void VideoGesturesTest::aSwipeWithoutAnEndOfTheVideo()
{
    NullMediaBackend::Media media;
    media.duration = 16s;
    QVERIFY(f.open(VideoStage::Profile::Desktop, media));
    f.fingers->down(0, f.at(0.25, 0.5));
    f.swipe({300, 0});
    QCOMPARE(f.second(), 16.0);
    f.swipe({-200, 0});
    f.fingers->up(0);
    f.backend->advance(0ms);
    QCOMPARE(f.backend->state(), AvloRenderer::Playing);
    QVERIFY(f.second() > 15 && f.second() < 19);
}

void VideoGesturesTest::aLongPressIsFastWhileItLasts_data()
{
    QTest::addColumn<QString>("end");
    for (const auto *end :
         {"released", "second finger", "taken away", "focus lost", "paused", "another video"})
        QTest::newRow(end) << QString::fromLatin1(end);
}

void VideoGesturesTest::aLongPressIsFastWhileItLasts()
{
    QFETCH(const QString, end);
    QVERIFY(f.open());
    f.fingers->down(0, f.at(0.6, 0.5));
    f.fingers->moveBy(0, {4, 3});
    QCOMPARE(f.backend->rate(), 1.0);
    QVERIFY(f.timer("longPress")->interval() >= 500);
    QVERIFY(runOut(f.timer("longPress")));
    QCOMPARE(f.backend->rate(), 2.0);
    QCOMPARE(f.widget->gestureOverlay()->text(), u"2\u00d7"_s);
    f.swipe({100, 100}); // a finger gets tired
    QCOMPARE(f.backend->rate(), 2.0);
    f.backend->advance(2s);
    QCOMPARE(f.widget->position(), 19u);
    if (end == u"second finger") {
        f.fingers->down(1, f.at(0.2, 0.2));
    } else if (end == u"taken away") {
        f.fingers->taken();
    } else if (end == u"focus lost") {
        QEvent event(QEvent::WindowDeactivate);
        QCoreApplication::sendEvent(f.window.get(), &event);
    } else if (end == u"paused") {
        f.pause();
    } else if (end == u"another video") {
        f.widget->play(u"file:///b.mp4"_s, 0);
        f.backend->advance(0ms);
    } else {
        f.fingers->up(0);
    }
    QTRY_COMPARE(f.backend->rate(), 1.0);
    QTRY_VERIFY(!f.widget->gestureOverlay()->isShown());
    for (const int finger : {0, 1}) {
        if (f.fingers->isDown(finger))
            f.fingers->up(finger);
    }
    QVERIFY(!f.widget->controlsVisible()); // it was no tap
}

void VideoGesturesTest::aLongPressDoublesWhatIsFast()
{
    QVERIFY(f.open());
    qreal place = 0.1; // far enough from the one before not to be its double
    for (const auto &[chosen, held] : {std::pair(0.5, 2.0), {1.5, 2.0}, {2.0, 4.0}, {3.0, 4.0}}) {
        f.backend->setRate(chosen);
        f.fingers->down(0, f.at(0.6, place += 0.15));
        QVERIFY(runOut(f.timer("longPress")));
        QCOMPARE(f.backend->rate(), held);
        f.fingers->up(0);
        QCOMPARE(f.backend->rate(), chosen);
    }
}

void VideoGesturesTest::noLongPress_data()
{
    QTest::addColumn<QString>("because");
    for (const auto *because : {"paused", "moved", "not seekable", "edge", "second finger"})
        QTest::newRow(because) << QString::fromLatin1(because);
}

void VideoGesturesTest::noLongPress()
{
    QFETCH(const QString, because);
    NullMediaBackend::Media media;
    media.seekable = because != u"not seekable";
    QVERIFY(f.open(VideoStage::Profile::Desktop, media));
    if (because == u"paused")
        f.pause();
    f.fingers->down(0, because == u"edge" ? f.at(0.99, 0.5) : f.at(0.6, 0.5));
    if (because == u"moved")
        f.fingers->moveBy(0, {16, 0});
    if (because == u"second finger")
        f.fingers->down(1, f.at(0.2, 0.2));
    runOut(f.timer("longPress"));
    QCOMPARE(f.backend->rate(), 1.0);
    QVERIFY(!f.widget->gestureOverlay()->isShown());
    f.fingers->up(0);
}

void VideoGesturesTest::brightnessIsForgottenAtTheNextVideo()
{
    QVERIFY(f.open());
    f.fingers->down(0, f.at(0.25, 0.5));
    f.swipe({0, 144});
    f.fingers->up(0);
    QCOMPARE(f.widget->brightness(), 0.75);
    f.widget->play(u"file:///a.mp4"_s, 20); // the same, after a dialog
    QCOMPARE(f.widget->brightness(), 0.75);
    f.widget->play(u"file:///b.mp4"_s, 0);
    QCOMPARE(f.widget->brightness(), 1.0);
}

void VideoGesturesTest::theDarkestPictureIsNotBlack()
{
    QVERIFY(f.open());
    const auto middle = [this] { return f.window->viewport()->grab().toImage().pixelColor(f.at(0.5, 0.5)); };
    const QColor before = middle();
    f.fingers->down(0, f.at(0.25, 0.3));
    f.swipe({0, 560});
    f.fingers->up(0);
    QCOMPARE(f.widget->brightness(), 0.0);
    QVERIFY2(middle().lightnessF() < before.lightnessF() / 4, qPrintable(middle().name()));
    QVERIFY2(middle().lightness() > 0, qPrintable(middle().name()));
}

void VideoGesturesTest::twoTapsAreADoubleTap_data()
{
    QTest::addColumn<QPoint>("apart");
    QTest::addColumn<int>("doubles");
    QTest::newRow("on one spot") << QPoint() << 1;
    QTest::newRow("as fingers do") << QPoint(28, -20) << 1;
    QTest::newRow("far apart") << QPoint(120, 0) << 0;
}

void VideoGesturesTest::twoTapsAreADoubleTap()
{
    QFETCH(const QPoint, apart);
    QVERIFY(f.open());
    QSignalSpy twice(f.widget, &VideoWidget::doubleClick);
    f.fingers->down(0, f.at(0.4, 0.3));
    f.fingers->up(0);
    f.fingers->down(0, f.at(0.4, 0.3) + apart);
    f.fingers->up(0);
    QTEST(int(twice.count()), "doubles");
    QCOMPARE(f.second(), 15.0);
    if (!twice.isEmpty())
        QVERIFY(f.widget->controlsVisible());
}

void VideoGesturesTest::aSlowDoubleTapIsTwoTaps()
{
    QVERIFY(f.open());
    QSignalSpy twice(f.widget, &VideoWidget::doubleClick);
    QSignalSpy asked(f.widget, &VideoWidget::controlsVisibilityChangeRequested);
    const QPoint place = f.at(0.4, 0.5);
    QTest::mouseClick(f.window->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseClick(f.window->viewport(), Qt::LeftButton, {}, place,
                      QGuiApplication::styleHints()->mouseDoubleClickInterval() + 1);
    QCOMPARE(twice.count(), 0);
    QCOMPARE(asked, (QList<QList<QVariant>>{{true}, {false}}));
    QCOMPARE(f.backend->commands(), QStringList());
}

void VideoGesturesTest::aDoubleTapThatIsHeldIsNothingMore()
{
    QVERIFY(f.open());
    QSignalSpy twice(f.widget, &VideoWidget::doubleClick);
    f.fingers->down(0, f.at(0.4, 0.3));
    f.fingers->up(0);
    f.fingers->down(0, f.at(0.4, 0.3));
    QVERIFY(!runOut(f.timer("longPress")));
    f.swipe({120, 0});
    f.fingers->up(0);
    QCOMPARE(twice.count(), 1);
    QCOMPARE(f.backend->commands(), QStringList());
}

void VideoGesturesTest::aTapAfterOneThatWasTakenAwayIsOne()
{
    QVERIFY(f.open());
    QSignalSpy twice(f.widget, &VideoWidget::doubleClick);
    f.fingers->down(0, f.at(0.4, 0.3));
    f.fingers->taken();
    f.fingers->down(0, f.at(0.4, 0.3));
    f.fingers->up(0);
    QCOMPARE(twice.count(), 0);
    QVERIFY(f.widget->controlsVisible());
}

void VideoGesturesTest::aLostRendererEndsTheGesture()
{
    QVERIFY(f.open());
    f.fingers->down(0, f.at(0.25, 0.5));
    f.swipe({104, 0});
    QSignalSpy ready(f.widget, &VideoWidget::rendererReady);
    f.backend->lose();
    QVERIFY(ready.wait(TestPatience));
    f.swipe({20, 0});
    f.fingers->up(0);
    QCOMPARE(f.backend->commands(), QStringList()); // of the new one
}

QTEST_MAIN(VideoGesturesTest)
#include "tst_videogestures.moc"
