// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/media/avlorenderer.h>
#include <platform/media/controlslider.h>
#include <platform/media/nullmediabackend.h>
#include <platform/media/playercontrols.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/timetext.h>
#include <platform/media/videowidget.h>
#include <platform/toolkit/accessibility.h>
#include <platform/toolkit/button.h>

#include <QAccessible>
#include <QApplication>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

class PositionReceiver : public QObject
{
    Q_OBJECT

public:
    QList<uint> positions;

public Q_SLOTS:
    void receive(uint position) { positions.append(position); }
};

} // namespace

class VideoWidgetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void rendererComesThroughTheEventLoop();
    void aVideoAskedForBeforeTheRendererIsPlayed();
    void positionIsAnsweredInWholeSeconds();
    void noPositionOfTheVideoBefore();
    void stillIsMetadataWithTheAddressAsGiven();
    void pictureSizeIsMetadata();
    void relativeSeeksAddUp();
    void lostRendererIsReplaced();
    void resetUndoesTheRenderRectangle();
    void paintsTheFrame();
    void soundAloneHasAMark();
    void timeTexts_data();
    void timeTexts();
    void aTapShowsAndHidesTheControls();
    void aReaderTapsForTheControls();
    void controlsLeaveByThemselvesOnlyWhilePlaying();
    void aDoubleTapIsReportedOnce();
    void theMarkPausesResumesAndBeginsAnew();
    void draggingSeeksByKeyFramesAndReleasingExactly();
    void theTimesFollowTheDrag();
    void theSeekLineIsMirrored();
    void volumeAndMute();
    void hiddenControlsTakeNoTap();
    void optionsForThoseWhoHaveThem_data();
    void optionsForThoseWhoHaveThem();

private:
    void startPlaying();
    void showControls();
    [[nodiscard]] QPoint middleOf(const QGraphicsItem *item, qreal across = 0.5) const;
    QTemporaryDir m_home;
    std::unique_ptr<QGraphicsScene> m_scene;
    std::unique_ptr<QGraphicsView> m_view;
    VideoWidget *m_widget = nullptr;
    NullMediaBackend *m_backend = nullptr;
};

void VideoWidgetTest::initTestCase()
{
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    RendererRegistry::setBackendFactory([this] {
        auto backend = std::make_unique<NullMediaBackend>();
        m_backend = backend.get();
        return backend;
    });
}

void VideoWidgetTest::init()
{
    m_backend = nullptr;
    m_scene = std::make_unique<QGraphicsScene>(0, 0, 480, 270);
    m_view = std::make_unique<QGraphicsView>(m_scene.get());
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->resize(480, 270);
    m_widget = new VideoWidget;
    m_widget->setGeometry(0, 0, 480, 270);
    m_scene->addItem(m_widget);
}

void VideoWidgetTest::cleanup()
{
    m_view.reset();
    m_scene.reset();
}

void VideoWidgetTest::rendererComesThroughTheEventLoop()
{
    QSignalSpy ready(m_widget, &VideoWidget::rendererReady);
    QVERIFY(m_widget->renderer() == nullptr);
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(m_widget->renderer() != nullptr);
}

void VideoWidgetTest::aVideoAskedForBeforeTheRendererIsPlayed()
{
    m_widget->play(u"file:///early.mp4"_s, 4);
    QTRY_VERIFY(m_backend != nullptr);
    QCOMPARE(m_backend->commands(), QStringList{u"play file:///early.mp4 4"_s});
}

void VideoWidgetTest::positionIsAnsweredInWholeSeconds()
{
    QTRY_VERIFY(m_backend != nullptr);
    PositionReceiver receiver;
    m_widget->play(u"a"_s, 0);
    m_backend->advance(5900ms);
    m_widget->renderer()->getPosition(&receiver, SLOT(receive(uint)));
    QCOMPARE(receiver.positions, QList<uint>());
    QTRY_COMPARE(receiver.positions, QList<uint>{5});
    QCOMPARE(m_widget->position(), 5u);
    QCOMPARE(m_widget->duration(), 60u);
}

void VideoWidgetTest::noPositionOfTheVideoBefore()
{
    QTRY_VERIFY(m_backend != nullptr);
    PositionReceiver receiver;
    m_widget->play(u"a"_s, 30);
    m_backend->advance(1s);
    m_widget->renderer()->getPosition(&receiver, SLOT(receive(uint)));
    m_widget->play(u"b"_s, 3);
    m_widget->renderer()->getPosition(&receiver, SLOT(receive(uint)));
    QTRY_COMPARE(receiver.positions, QList<uint>{3});
}

void VideoWidgetTest::stillIsMetadataWithTheAddressAsGiven()
{
    QTRY_VERIFY(m_backend != nullptr);
    QList<QVariant> values;
    connect(m_widget->renderer(), &AvloRenderer::metadataChanged, this,
            [&](const QString &name, const QList<QVariant> &given) {
                if (name == u"paused-thumbnail-uri"_s)
                    values = given;
            });
    m_widget->renderer()->setProperty(u"current-frame-on-pause"_s, true);
    m_widget->play(u"file:///tmp/A%20video.mp4"_s, 0);
    m_backend->advance(1s);
    m_widget->pause();
    QTRY_COMPARE(values.size(), 2);
    QCOMPARE(values.at(0).toString(), u"file:///tmp/A%20video.mp4"_s);
    QCOMPARE(QImage(values.at(1).toString()).size(), QSize(320, 180));
}

void VideoWidgetTest::pictureSizeIsMetadata()
{
    QTRY_VERIFY(m_backend != nullptr);
    NullMediaBackend::Media sound;
    sound.size = QSize();
    m_backend->setMedia(u"sound"_s, sound);
    QStringList seen;
    connect(m_widget->renderer(), &AvloRenderer::metadataChanged, this,
            [&](const QString &name, const QList<QVariant> &values) {
                seen.append(u"%1=%2"_s.arg(name, values.value(0).toString()));
            });
    m_widget->play(u"sound"_s, 0);
    m_backend->advance(1s);
    QCOMPARE(seen, QStringList());
    m_widget->play(u"picture"_s, 0);
    m_backend->advance(1s);
    QCOMPARE(seen, (QStringList{u"res-x=320"_s, u"res-y=180"_s}));
}

void VideoWidgetTest::relativeSeeksAddUp()
{
    QTRY_VERIFY(m_backend != nullptr);
    NullMediaBackend::Media media;
    media.seekDelay = 100ms;
    m_backend->setDefaultMedia(media);
    m_widget->play(u"a"_s, 10);
    m_backend->advance(0ms);
    m_widget->seekBy(10);
    m_widget->seekBy(10);
    m_backend->advance(100ms);
    QCOMPARE(m_widget->position(), 30u);
    m_widget->seekBy(-100);
    m_backend->advance(100ms);
    QCOMPARE(m_widget->position(), 0u);
}

void VideoWidgetTest::lostRendererIsReplaced()
{
    QTRY_VERIFY(m_backend != nullptr);
    QSignalSpy removed(RendererRegistry::instance(), &RendererRegistry::rendererRemoved);
    QSignalSpy ready(m_widget, &VideoWidget::rendererReady);
    m_backend->lose();
    QVERIFY(removed.wait(TestPatience));
    QCOMPARE(removed.first().first().toString(), u"avlo_gst_internal_video_renderer"_s);
    QVERIFY(m_widget->renderer() == nullptr);
    QVERIFY(ready.wait(TestPatience));
    QVERIFY(m_widget->renderer() != nullptr);
}

void VideoWidgetTest::resetUndoesTheRenderRectangle()
{
    QTRY_VERIFY(m_backend != nullptr);
    m_view->show();
    m_widget->play(u"a"_s, 0);
    m_backend->advance(1s);
    const auto middle = [this] { return m_view->viewport()->grab().toImage().pixelColor(240, 135); };
    QVERIFY(middle() != QColor(Qt::black));
    m_widget->renderer()->setProperty(u"render-rectangle"_s, u"0,270,480,270"_s);
    QCOMPARE(middle(), QColor(Qt::black));
    m_widget->setOutputRectangleOverride(true);
    QVERIFY(middle() != QColor(Qt::black));
    m_widget->setOutputRectangleOverride(false);
    QCOMPARE(middle(), QColor(Qt::black));
    m_widget->reset();
    QVERIFY(!m_widget->renderer()->property("render-rectangle").isValid());
    m_widget->play(u"a"_s, 0);
    m_backend->advance(0ms);
    QVERIFY(middle() != QColor(Qt::black));
}

void VideoWidgetTest::paintsTheFrame()
{
    QTRY_VERIFY(m_backend != nullptr);
    m_view->show();
    m_widget->play(u"a"_s, 20);
    m_backend->advance(0ms);
    const QImage shown = m_view->viewport()->grab().toImage();
    QCOMPARE(shown.pixelColor(240, 135), m_backend->frame().image.pixelColor(10, 10));
}

void VideoWidgetTest::startPlaying()
{
    QTRY_VERIFY(m_backend != nullptr);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_widget->play(u"a"_s, 0);
    m_backend->advance(15s);
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
    m_backend->clearCommands();
}

void VideoWidgetTest::showControls()
{
    m_widget->setControlsVisible(true);
    QTRY_COMPARE(m_widget->controls()->opacity(), 1.0);
}

QPoint VideoWidgetTest::middleOf(const QGraphicsItem *item, qreal across) const
{
    const QRectF rect = item->sceneBoundingRect();
    return m_view->mapFromScene(QPointF(rect.left() + rect.width() * across, rect.center().y()));
}

void VideoWidgetTest::soundAloneHasAMark()
{
    QTRY_VERIFY(m_backend != nullptr);
    m_view->show();
    NullMediaBackend::Media sound;
    sound.size = QSize();
    m_backend->setDefaultMedia(sound);
    m_widget->play(u"sound"_s, 0);
    m_backend->advance(1s);
    const QImage shown = m_view->viewport()->grab().toImage();
    const QColor ground = shown.pixelColor(240 - 80, 135);
    QVERIFY(ground != QColor(Qt::black));
    QCOMPARE(shown.pixelColor(5, 5), QColor(Qt::black));
    // The note makes room for the mark of the controls; what it stood on stays.
    const QPoint note(240 + 45, 135 - 20);
    QVERIFY(shown.pixelColor(note) != ground);
    m_widget->setControlsVisible(true);
    m_widget->controls()->setVisible(false);
    QCOMPARE(m_view->viewport()->grab().toImage().pixelColor(note), ground);
    m_widget->setControlsVisible(false);
    m_widget->controls()->setVisible(false);
    QVERIFY(m_view->viewport()->grab().toImage().pixelColor(note) != ground);
}

void VideoWidgetTest::timeTexts_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<bool>("negative");
    QTest::addColumn<QString>("text");
    const QLocale english(QLocale::English);
    QTest::newRow("nothing") << 0 << english << false << u"00:00"_s;
    QTest::newRow("a minute") << 65 << english << false << u"01:05"_s;
    QTest::newRow("hours") << 3725 << english << false << u"1:02:05"_s;
    QTest::newRow("many hours") << 3600 * 1234 << english << false << u"1234:00:00"_s;
    QTest::newRow("remaining") << 3175 << english << true << u"-52:55"_s;
    QTest::newRow("before the start") << -3 << english << false << u"00:00"_s;
    QTest::newRow("other digits") << 65 << QLocale(QLocale::Arabic, QLocale::Egypt) << false
                                  << u"\u0660\u0661:\u0660\u0665"_s;
}

void VideoWidgetTest::timeTexts()
{
    QFETCH(int, seconds);
    QFETCH(QLocale, locale);
    QFETCH(bool, negative);
    QTEST(timeText(seconds, locale, negative), "text");
}

void VideoWidgetTest::aTapShowsAndHidesTheControls()
{
    startPlaying();
    QSignalSpy asked(m_widget, &VideoWidget::controlsVisibilityChangeRequested);
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, QPoint(60, 40));
    QVERIFY(m_widget->controlsVisible());
    QTRY_COMPARE(m_widget->controls()->opacity(), 1.0);
    QCOMPARE(m_widget->controls()->elapsedText(), u"00:15"_s);
    QCOMPARE(m_widget->controls()->remainingText(), u"-00:45"_s);
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, QPoint(60, 80),
                      QApplication::doubleClickInterval() + 1);
    QVERIFY(!m_widget->controlsVisible());
    QTRY_VERIFY(!m_widget->controls()->isVisible());
    QCOMPARE(asked, (QList<QList<QVariant>>{{true}, {false}}));
}

// Whoever does not see the picture finds the controls all the same.
void VideoWidgetTest::aReaderTapsForTheControls()
{
    toolkit::accessibility::install();
    startPlaying();
    m_widget->setAccessibleName(u"Holidays"_s);
    QAccessibleInterface *told = QAccessible::queryAccessibleInterface(m_widget);
    QVERIFY(told != nullptr);
    QCOMPARE(told->text(QAccessible::Name), u"Holidays"_s);
    QCOMPARE(told->childCount(), 0);
    QSignalSpy asked(m_widget, &VideoWidget::controlsVisibilityChangeRequested);
    told->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(m_widget->controlsVisible());
    QCOMPARE(told->childCount(), 4); // play, position, mute, volume
    told->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(!m_widget->controlsVisible());
    QCOMPARE(asked, (QList<QList<QVariant>>{{true}, {false}}));
}

void VideoWidgetTest::controlsLeaveByThemselvesOnlyWhilePlaying()
{
    startPlaying();
    QSignalSpy asked(m_widget, &VideoWidget::controlsVisibilityChangeRequested);
    m_widget->setControlsVisible(true);
    m_widget->pause();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    QVERIFY(!asked.wait(3500));
    QVERIFY(m_widget->controlsVisible());
    m_widget->resume();
    QVERIFY(asked.wait(5000));
    QCOMPARE(asked, (QList<QList<QVariant>>{{false}}));
    QVERIFY(!m_widget->controlsVisible());
}

void VideoWidgetTest::aDoubleTapIsReportedOnce()
{
    startPlaying();
    QSignalSpy twice(m_widget, &VideoWidget::doubleClick);
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, QPoint(60, 40));
    QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, QPoint(60, 40));
    QCOMPARE(twice.count(), 1);
    QVERIFY(m_widget->controlsVisible());
}

void VideoWidgetTest::theMarkPausesResumesAndBeginsAnew()
{
    startPlaying();
    showControls();
    m_widget->controls()->playButton()->click();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Paused);
    m_widget->controls()->playButton()->click();
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    m_backend->advance(60s);
    QCOMPARE(m_backend->state(), AvloRenderer::Stopped);
    m_widget->controls()->playButton()->click();
    QCOMPARE(m_backend->commands(), (QStringList{u"pause"_s, u"resume"_s, u"play a 0"_s}));
}

void VideoWidgetTest::draggingSeeksByKeyFramesAndReleasingExactly()
{
    startPlaying();
    showControls();
    const ControlSlider *slider = m_widget->controls()->seekSlider();
    QList<bool> last;
    connect(m_widget->controls(), &PlayerControls::seekRequested, this,
            [&](MediaTime, bool end) { last.append(end); });
    QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider, 0.3));
    QTest::mouseMove(m_view->viewport(), middleOf(slider, 0.4));
    QTest::mouseMove(m_view->viewport(), middleOf(slider, 0.5));
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider, 0.5));
    QVERIFY(last.size() >= 3);
    QCOMPARE(last.count(true), 1);
    QVERIFY(last.last());
    m_backend->advance(0ms);
    const double second = double(m_backend->position().count()) / 1e9;
    QVERIFY2(qAbs(second - 30) < 1, qPrintable(QString::number(second)));
    QVERIFY(m_widget->controlsVisible());
}

void VideoWidgetTest::theTimesFollowTheDrag()
{
    startPlaying();
    showControls();
    const ControlSlider *slider = m_widget->controls()->seekSlider();
    QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider, 0.0) + QPoint(1, 0));
    QCOMPARE(m_widget->controls()->elapsedText(), u"00:00"_s);
    QCOMPARE(m_widget->controls()->remainingText(), u"-01:00"_s);
    m_backend->advance(2s); // does not take the knob away
    QCOMPARE(slider->value(), 0.0);
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider, 0.0) + QPoint(1, 0));
}

void VideoWidgetTest::theSeekLineIsMirrored()
{
    startPlaying();
    m_widget->setLayoutDirection(Qt::RightToLeft);
    showControls();
    const ControlSlider *slider = m_widget->controls()->seekSlider();
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider, 0.25));
    m_backend->advance(0ms);
    const double second = double(m_backend->position().count()) / 1e9;
    QVERIFY2(second > 42 && second < 50, qPrintable(QString::number(second)));
    const ControlSlider *volume = m_widget->controls()->volumeSlider();
    QVERIFY(volume->sceneBoundingRect().center().x() > 240);
}

void VideoWidgetTest::volumeAndMute()
{
    startPlaying();
    showControls();
    const ControlSlider *slider = m_widget->controls()->volumeSlider();
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider));
    QVERIFY(qAbs(m_backend->volume() - 0.5) < 0.02);
    const qreal before = m_backend->volume();
    m_widget->controls()->volumeButton()->click();
    QCOMPARE(m_backend->volume(), 0.0);
    m_widget->controls()->volumeButton()->click();
    QCOMPARE(m_backend->volume(), before);
}

void VideoWidgetTest::hiddenControlsTakeNoTap()
{
    startPlaying();
    const ControlSlider *slider = m_widget->controls()->seekSlider();
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middleOf(slider));
    QVERIFY(m_widget->controlsVisible());
    QCOMPARE(m_backend->commands(), QStringList());
}

void VideoWidgetTest::optionsForThoseWhoHaveThem_data()
{
    QTest::addColumn<Qt::LayoutDirection>("direction");
    QTest::newRow("left to right") << Qt::LeftToRight;
    QTest::newRow("right to left") << Qt::RightToLeft;
}

void VideoWidgetTest::optionsForThoseWhoHaveThem()
{
    QFETCH(const Qt::LayoutDirection, direction);
    m_widget->setLayoutDirection(direction);
    startPlaying();
    showControls();
    const toolkit::Button *button = m_widget->controls()->optionsButton();
    QCOMPARE(button->objectName(), u"OptionsButton"_s);
    QVERIFY(!button->isVisible());
    QSignalSpy asked(m_widget, &VideoWidget::optionsRequested);
    m_widget->setOptionsOffered(true);
    QVERIFY(button->size().width() >= 48 && button->size().height() >= 48);
    QVERIFY(!button->accessibleName().isEmpty());
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, middleOf(button));
    QCOMPARE(asked.count(), 1);
    // In the row of the volume, at the end of the lines.
    const QPointF middle = button->sceneBoundingRect().center();
    QCOMPARE(middle.y(), m_widget->controls()->volumeButton()->sceneBoundingRect().center().y());
    QCOMPARE(middle.x() > 240, direction == Qt::LeftToRight);
}

QTEST_MAIN(VideoWidgetTest)
#include "tst_videowidget.moc"
