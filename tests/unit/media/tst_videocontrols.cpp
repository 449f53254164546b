// SPDX-License-Identifier: GPL-3.0-or-later
#include "videostage.h"

#include <platform/media/linemarks.h>
#include <platform/media/controlslayout.h>
#include <platform/media/timebubble.h>
#include <platform/toolkit/sheet.h>

#include "unit/toolkit/accessevents.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

// A back end that knows chapters.
class ChapteredBackend : public NullMediaBackend
{
public:
    using NullMediaBackend::NullMediaBackend;
    [[nodiscard]] QList<MediaChapter> chapters() const override
    {
        return {{0s, 20s, u"Arrival"_s}, {20s, 45s, u"At sea"_s}, {45s, 0s, u"Home"_s}};
    }
};

} // namespace

// What stands over the picture: when it comes and goes, what keys and fingers do with it.
class VideoControlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void theyLeaveOnlyWhenNothingNeedsThem_data();
    void theyLeaveOnlyWhenNothingNeedsThem();
    void theReadersFocusKeepsThem();
    void thePointerBringsThem();
    void thePointerOfAHandsetDoesNot();
    void aPressInTheirFirstFrameIsTheirs();
    void theClickAfterThePointersWayKeepsThem();
    void theCursorGoesWithThem();
    void keys_data();
    void keys();
    void keysOfAnotherSheetDoNothing();
    void spaceAndReturnPressTheButtonWithTheFocus();
    void tabGoesThroughThemInTheirOrder();
    void theFullScreenButton();
    void everyTargetIsLargeEnough_data();
    void everyTargetIsLargeEnough();
    void theTimesStandAboveAShortLine();
    void draggingShowsTheTimeOverTheKnob();
    void chaptersPartTheLine();
    void draggingAwayFromTheLineIsFiner();
    void aDragThatIsTakenAwayIsUndone();
    void draggingWhilePlayingPausesNothing();
    void draggingWhilePausedEndsInOnePlace();
    void aReaderMovesTheLine();

private:
    void key(int key, QEvent::Type type = QEvent::KeyPress)
    {
        QKeyEvent event(type, key, Qt::NoModifier);
        f.widget->keyEvent(&event);
    }
    void movePointer(const QPoint &position) { QTest::mouseMove(f.window->windowHandle(), position); }
    [[nodiscard]] PlayerControls *controls() const { return f.widget->controls(); }
    VideoStage f;
};

void VideoControlsTest::cleanup()
{
    toolkit::Theme::instance()->setTextScale(1);
    f.close();
}

void VideoControlsTest::theyLeaveOnlyWhenNothingNeedsThem_data()
{
    QTest::addColumn<QString>("need");
    QTest::addColumn<bool>("stay");
    QTest::newRow("nothing") << QString() << false;
    for (const auto *need : {"paused", "line held", "button held", "gesture", "pointer", "sheet"})
        QTest::newRow(need) << QString::fromLatin1(need) << true;
}

void VideoControlsTest::theyLeaveOnlyWhenNothingNeedsThem()
{
    QFETCH(const QString, need);
    QFETCH(const bool, stay);
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    toolkit::Sheet sheet;
    if (need == u"paused")
        f.pause();
    else if (need == u"line held")
        f.fingers->down(0, f.middleOf(controls()->seekSlider()));
    else if (need == u"button held")
        f.fingers->down(0, f.middleOf(controls()->volumeButton()));
    else if (need == u"gesture") {
        f.fingers->down(0, f.at(0.75, 0.3));
        f.swipe({0, 60});
    } else if (need == u"pointer") {
        movePointer(f.at(0.2, 0.2));
        movePointer(f.middleOf(controls()->volumeSlider()));
    } else if (need == u"sheet")
        sheet.appear(f.window.get());
    QSignalSpy asked(f.widget, &VideoWidget::controlsVisibilityChangeRequested);
    if (need == u"paused") {
        QVERIFY(!runOut(f.timer("autoHide")));
    } else {
        QVERIFY(runOut(f.timer("autoHide")));
        QCOMPARE(f.timer("autoHide")->isActive(), stay); // asks again
    }
    QCOMPARE(f.widget->controlsVisible(), stay);
    QCOMPARE(asked.count(), stay ? 0 : 1);
    if (f.fingers->isDown(0))
        f.fingers->up(0);
    if (sheet.isOpen())
        sheet.dismiss();
}

void VideoControlsTest::theReadersFocusKeepsThem()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    QTRY_VERIFY(QAccessible::isActive());
    QTRY_VERIFY(f.window->scene()->isActive());
    controls()->volumeButton()->setFocus(Qt::OtherFocusReason);
    QVERIFY(controls()->volumeButton()->hasFocus());
    QVERIFY(runOut(f.timer("autoHide")));
    QVERIFY(f.widget->controlsVisible());
    controls()->volumeButton()->clearFocus();
    QVERIFY(runOut(f.timer("autoHide")));
    QVERIFY(!f.widget->controlsVisible());
}

void VideoControlsTest::thePointerBringsThem()
{
    QVERIFY(f.open());
    QSignalSpy asked(f.widget, &VideoWidget::controlsVisibilityChangeRequested);
    movePointer(f.at(0.2, 0.2)); // where it stood when the page came
    QVERIFY(!f.widget->controlsVisible());
    movePointer(f.at(0.2, 0.2) + QPoint(1, 1));
    QVERIFY(!f.widget->controlsVisible());
    movePointer(f.at(0.3, 0.2));
    QVERIFY(f.widget->controlsVisible());
    QCOMPARE(asked, (QList<QList<QVariant>>{{true}}));
}

void VideoControlsTest::thePointerOfAHandsetDoesNot()
{
    QVERIFY(f.open(VideoStage::Profile::Handset));
    movePointer(f.at(0.2, 0.2));
    movePointer(f.at(0.4, 0.2));
    QVERIFY(!f.widget->controlsVisible());
    QVERIFY(!controls()->fullScreenButton()->isVisible());
}

void VideoControlsTest::aPressInTheirFirstFrameIsTheirs()
{
    QVERIFY(f.open());
    toolkit::Theme::instance()->setReducedMotion(false);
    f.widget->setControlsVisible(true);
    QTest::mousePress(f.window->viewport(), Qt::LeftButton, {}, f.middleOf(controls()->seekSlider()));
    QVERIFY(controls()->seekSlider()->isHeld());
    QTest::mouseRelease(f.window->viewport(), Qt::LeftButton, {}, f.middleOf(controls()->seekSlider()));
    toolkit::Theme::instance()->setReducedMotion(true);
}

void VideoControlsTest::theClickAfterThePointersWayKeepsThem()
{
    QVERIFY(f.open());
    movePointer(f.at(0.2, 0.2));
    movePointer(f.at(0.3, 0.3));
    QVERIFY(f.widget->controlsVisible());
    QTest::mouseClick(f.window->viewport(), Qt::LeftButton, {}, f.at(0.3, 0.3));
    QVERIFY(f.widget->controlsVisible());
    QTest::mouseClick(f.window->viewport(), Qt::LeftButton, {}, f.at(0.3, 0.3));
    QVERIFY(!f.widget->controlsVisible());
}

void VideoControlsTest::theCursorGoesWithThem()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    QVERIFY(f.widget->cursor().shape() != Qt::BlankCursor);
    QVERIFY(runOut(f.timer("autoHide")));
    QCOMPARE(f.widget->cursor().shape(), Qt::BlankCursor);
    movePointer(f.at(0.2, 0.2));
    QCOMPARE(f.window->viewport()->cursor().shape(), Qt::BlankCursor);
    movePointer(f.at(0.4, 0.2));
    movePointer(f.at(0.5, 0.2));
    QVERIFY(f.window->viewport()->cursor().shape() != Qt::BlankCursor);
}

void VideoControlsTest::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("controls");
    QTest::addColumn<QString>("command");
    QTest::newRow("up") << int(Qt::Key_Up) << true << u"volume 0.55"_s;
    QTest::newRow("down") << int(Qt::Key_Down) << true << u"volume 0.45"_s;
    QTest::newRow("m") << int(Qt::Key_M) << true << u"volume 0"_s;
    QTest::newRow("home") << int(Qt::Key_Home) << true << u"seek 0"_s;
    QTest::newRow("space, which is the page's") << int(Qt::Key_Space) << true << QString();
    QTest::newRow("tab") << int(Qt::Key_Tab) << true << QString();
    QTest::newRow("any other") << int(Qt::Key_Q) << true << QString();
    QTest::newRow("shift alone") << int(Qt::Key_Shift) << false << QString();
}

void VideoControlsTest::keys()
{
    QFETCH(const int, key);
    QFETCH(const bool, controls);
    QFETCH(const QString, command);
    QVERIFY(f.open());
    f.backend->setVolume(0.52);
    f.backend->advance(0ms);
    f.backend->clearCommands();
    QSignalSpy asked(f.widget, &VideoWidget::controlsVisibilityChangeRequested);
    this->key(key, QEvent::KeyRelease);
    QVERIFY(!f.widget->controlsVisible());
    this->key(key);
    QCOMPARE(f.widget->controlsVisible(), controls);
    QCOMPARE(asked.count(), controls ? 1 : 0);
    QCOMPARE(f.backend->commands(), command.isEmpty() ? QStringList() : QStringList{command});
    if (key == Qt::Key_M) {
        f.backend->clearCommands();
        this->key(key);
        QCOMPARE(f.backend->commands(), QStringList{u"volume 0.52"_s});
    }
    // Only for a while.
    QCOMPARE(runOut(f.timer("autoHide")), controls);
    QVERIFY(!f.widget->controlsVisible());
}

void VideoControlsTest::keysOfAnotherSheetDoNothing()
{
    QVERIFY(f.open());
    toolkit::Sheet sheet;
    sheet.appear(f.window.get());
    key(Qt::Key_M);
    key(Qt::Key_F);
    QVERIFY(!f.widget->controlsVisible());
    QCOMPARE(f.backend->commands(), QStringList());
    QVERIFY(!f.window->isFullScreen());
    sheet.dismiss();
}

void VideoControlsTest::spaceAndReturnPressTheButtonWithTheFocus()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    controls()->volumeButton()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(f.window.get(), Qt::Key_Space);
    QCOMPARE(f.backend->commands(), QStringList{u"volume 0"_s});
    QTest::keyClick(f.window.get(), Qt::Key_Return);
    QCOMPARE(f.backend->commands(), (QStringList{u"volume 0"_s, u"volume 1"_s}));
}

void VideoControlsTest::tabGoesThroughThemInTheirOrder()
{
    QVERIFY(f.open());
    f.widget->setOptionsOffered(true);
    f.widget->setControlsVisible(true);
    QStringList order;
    for (int step = 0; step < 6; ++step) {
        QTest::keyClick(f.window.get(), Qt::Key_Tab);
        const QGraphicsItem *focus = f.window->scene()->focusItem();
        order.append(focus ? focus->toGraphicsObject()->objectName() : u"nothing"_s);
    }
    QCOMPARE(order,
             (QStringList{u"PlayPauseButton"_s, u"SeekSlider"_s, u"VolumeButton"_s, u"VolumeSlider"_s,
                          u"OptionsButton"_s, u"FullScreenButton"_s}));
    // What is hidden keeps no focus.
    f.widget->setControlsVisible(false);
    QVERIFY(!f.window->scene()->focusItem());
}

void VideoControlsTest::theFullScreenButton()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    toolkit::Button *button = controls()->fullScreenButton();
    QVERIFY(button->isVisible());
    const QString offered = button->iconId();
    button->click();
    QTRY_VERIFY(f.window->isFullScreen());
    QTRY_VERIFY(button->iconId() != offered);
    QTest::keyClick(f.window.get(), Qt::Key_Escape);
    QTRY_VERIFY(!f.window->isFullScreen());
    QTRY_COMPARE(button->iconId(), offered);
    key(Qt::Key_F);
    QTRY_VERIFY(f.window->isFullScreen());
    QTest::keyClick(f.window.get(), Qt::Key_F11);
    QTRY_VERIFY(!f.window->isFullScreen());
}

void VideoControlsTest::everyTargetIsLargeEnough_data()
{
    QTest::addColumn<QSizeF>("area");
    QTest::addColumn<qreal>("scale");
    for (const QSizeF area : {QSizeF(480, 854), QSizeF(854, 480), QSizeF(1280, 800), QSizeF(360, 640)}) {
        for (const qreal scale : {1.0, 2.0})
            QTest::addRow("%.0fx%.0f, %.0f", area.width(), area.height(), scale) << area << scale;
    }
}

void VideoControlsTest::everyTargetIsLargeEnough()
{
    QFETCH(const QSizeF, area);
    QFETCH(const qreal, scale);
    toolkit::Theme::instance()->setTextScale(scale);
    for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        PlayerControls bar;
        bar.setLayoutDirection(direction);
        bar.setFullScreen(PlayerControls::FullScreen::Off);
        bar.setOptionsOffered(true);
        bar.setTimes(1h, 2h + 45min, true);
        bar.resize(area);
        const QList<const toolkit::Widget *> targets{bar.playButton(),    bar.seekSlider(),
                                                     bar.volumeButton(),  bar.volumeSlider(),
                                                     bar.optionsButton(), bar.fullScreenButton()};
        const QRectF whole(QPointF(), area);
        for (const toolkit::Widget *target : targets) {
            const QRectF place = target->geometry();
            const QString name = target->objectName();
            QVERIFY2(place.width() >= 48 && place.height() >= 48, qPrintable(name));
            QVERIFY2(whole.contains(place), qPrintable(name));
            for (const toolkit::Widget *other : targets) {
                const QRectF common = place.intersected(other->geometry());
                QVERIFY2(other == target || common.height() < 8 || common.width() < 1,
                         qPrintable(name + u" and "_s + other->objectName()));
            }
        }
        QVERIFY(bar.seekSlider()->geometry().width() >= 200);
    }
}

void VideoControlsTest::theTimesStandAboveAShortLine()
{
    ControlsMetrics metrics;
    metrics.area = QSizeF(480, 854);
    metrics.mark = QSizeF(92, 92);
    metrics.text = QSizeF(80, 26);
    const ControlsLayout beside = controlsLayout(metrics);
    QVERIFY(beside.seek.left() > beside.elapsed.right());
    QCOMPARE(beside.elapsed.center().y(), beside.seek.center().y());
    metrics.text = QSizeF(130, 39);
    const ControlsLayout above = controlsLayout(metrics);
    QCOMPARE(above.seek.left(), metrics.margin);
    QVERIFY(above.elapsed.center().y() + 39 / 2.0 < above.seek.center().y());
    QVERIFY(above.remaining.left() > above.elapsed.right());
    QVERIFY(above.scrimHeight > beside.scrimHeight);
    metrics.direction = Qt::RightToLeft;
    const ControlsLayout mirrored = controlsLayout(metrics);
    QCOMPARE(mirrored.elapsed, above.remaining);
    QCOMPARE(mirrored.volumeButton, above.options);
}

void VideoControlsTest::draggingShowsTheTimeOverTheKnob()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    const ControlSlider *line = controls()->seekSlider();
    const TimeBubble *bubble = controls()->timeBubble();
    QVERIFY(!bubble->isVisible());
    f.fingers->down(0, f.middleOf(line, 0.5));
    QVERIFY(bubble->isVisible());
    QCOMPARE(bubble->time(), u"00:30"_s);
    QCOMPARE(bubble->time(), controls()->elapsedText());
    QVERIFY(qAbs(bubble->geometry().center().x() - (line->geometry().x() + line->knobPosition())) < 2);
    QVERIFY(bubble->geometry().bottom() < line->geometry().center().y());
    f.swipe({-400, 0});
    QCOMPARE(bubble->time(), u"00:00"_s);
    QVERIFY(f.widget->rect().contains(bubble->geometry()));
    f.fingers->up(0);
    QVERIFY(!bubble->isVisible());
}

void VideoControlsTest::chaptersPartTheLine()
{
    const QList<MediaChapter> chapters = ChapteredBackend().chapters();
    QCOMPARE(chapterMarks(chapters, 60s), (QList<qreal>{20.0 / 60, 0.75}));
    QCOMPARE(chapterMarks(chapters, 0s), QList<qreal>());
    QCOMPARE(chapterTitle(chapters, 19s), u"Arrival"_s);
    QCOMPARE(chapterTitle(chapters, 20s), u"At sea"_s);
    QCOMPARE(chapterTitle(chapters, 59s), u"Home"_s);
    QCOMPARE(chapterTitle({{10s, 20s, u"Alone"_s}}, 25s), QString());

    RendererRegistry::setBackendFactory([this] {
        auto made = std::make_unique<ChapteredBackend>();
        f.backend = made.get();
        return made;
    });
    QVERIFY(f.open());
    RendererRegistry::setBackendFactory([this] {
        auto made = std::make_unique<NullMediaBackend>();
        f.backend = made.get();
        return made;
    });
    f.widget->setControlsVisible(true);
    QCOMPARE(controls()->seekSlider()->marks(), (QList<qreal>{20.0 / 60, 0.75}));
    f.fingers->down(0, f.middleOf(controls()->seekSlider(), 0.5));
    QCOMPARE(controls()->timeBubble()->chapter(), u"At sea"_s);
    f.fingers->up(0);
}

void VideoControlsTest::draggingAwayFromTheLineIsFiner()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    const ControlSlider *line = controls()->seekSlider();
    const auto wayOf = [&](int away) {
        f.fingers->down(0, f.middleOf(line, 0.4));
        f.fingers->moveBy(0, {0, -away});
        const qreal before = line->value();
        f.fingers->moveBy(0, {40, 0});
        const qreal way = line->value() - before;
        f.fingers->up(0);
        f.backend->advance(0ms);
        return way;
    };
    const qreal whole = wayOf(0);
    QVERIFY(qAbs(whole * (line->size().width() - 26) - 40) < 1);
    QVERIFY(qAbs(wayOf(100) - whole / 2) < 0.001);
    QVERIFY(qAbs(wayOf(170) - whole / 4) < 0.001);
    QVERIFY(qAbs(wayOf(300) - whole / 10) < 0.001);
}

void VideoControlsTest::aDragThatIsTakenAwayIsUndone()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    f.fingers->down(0, f.middleOf(controls()->seekSlider(), 0.7));
    f.backend->advance(1s);
    QVERIFY(f.second() > 40);
    f.fingers->taken();
    f.backend->advance(0ms);
    QCOMPARE(f.second(), 15.0);
    QVERIFY(!controls()->timeBubble()->isVisible());
    QVERIFY(!f.backend->isScrubbing());
    // What was heard while it changed stays.
    f.fingers->down(0, f.middleOf(controls()->volumeSlider(), 0.5));
    f.fingers->taken();
    QVERIFY(qAbs(f.backend->volume() - 0.5) < 0.02);
}

void VideoControlsTest::draggingWhilePlayingPausesNothing()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    QSignalSpy paused(f.widget, &VideoWidget::paused);
    QSignalSpy states(f.widget->renderer(), &AvloRenderer::stateChanged);
    const ControlSlider *line = controls()->seekSlider();
    f.fingers->down(0, f.middleOf(line, 0.3));
    f.swipe({60, 0});
    f.backend->advance(2s);
    const double held = f.second();
    f.fingers->up(0);
    f.backend->advance(0ms);
    QVERIFY(qAbs(f.second() - held) < 0.04); // the very frame
    f.backend->advance(1s);
    QVERIFY(qAbs(f.second() - held - 1) < 0.08);
    QCOMPARE(paused.count(), 0);
    QCOMPARE(states.count(), 0);
}

void VideoControlsTest::draggingWhilePausedEndsInOnePlace()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    f.pause();
    QSignalSpy paused(f.widget, &VideoWidget::paused);
    f.fingers->down(0, f.middleOf(controls()->seekSlider(), 0.3));
    f.swipe({60, 0});
    f.backend->advance(1s);
    f.swipe({30, 0});
    f.backend->advance(1s);
    QCOMPARE(paused.count(), 0);
    f.fingers->up(0);
    f.backend->advance(0ms);
    QCOMPARE(paused.count(), 1);
    QCOMPARE(f.backend->state(), AvloRenderer::Paused);
}

void VideoControlsTest::aReaderMovesTheLine()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    controls()->seekSlider()->changeValue(40);
    f.backend->advance(0ms);
    QCOMPARE(f.second(), 40.0);
    QVERIFY(!f.backend->isScrubbing());
}

int main(int argc, char **argv)
{
    letAssistiveTechnologyListen();
    QApplication application(argc, argv);
    VideoControlsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_videocontrols.moc"
