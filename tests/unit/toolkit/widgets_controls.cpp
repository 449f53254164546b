// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/spinner.h"
#include "platform/toolkit/theme.h"
#include "platform/toolkit/widgetcontroller.h"
#include "platform/toolkit/widgetfactory.h"
#include "widgets_support.h"

#include <QApplication>
#include <QSignalSpy>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace toolkit;

class WidgetsControls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Theme::instance()->setReducedMotion(false); }
    void aButtonIsClickedByPointerTouchAndKeys();
    void aButtonShowsThePressAtOnce();
    void aPressThatLeavesTheButtonIsNoClick();
    void aDisabledButtonDoesNothingAndLooksIt();
    void aButtonHasAnEdgeWithMoreContrast();
    void aButtonLosesItsPressWithTheGrab();
    void anIconButtonHasItsIconAndView();
    void aButtonHasANameForEverybody();
    void aPictureCoversItsPlaceWithRoundCorners();
    void aPictureIsScaledOnce();
    void anImageShowsAnIconOfTheTheme();
    void aSpinnerTurnsOnlyOnTheDisplay();
    void aSpinnerRestsWithReducedMotion();
    void aBannerGoesByItself();
    void aBannerGoesOnATapAndSaysSoOnce();
    void aBannerWrapsALongText();
    void aShortBannerKeepsItsMargins();
    void displayEnteredReachesWhatIsSeen();
    void whatBecomesVisibleOnAShownPageEnters();
    void stylesFollowTheWindowsOrientation();
    void theFactoryMakesWhatWasRegistered();
    void aControllerOwnsItsPartsAndPaintsThroughItsView();
};

void WidgetsControls::aButtonIsClickedByPointerTouchAndKeys()
{
    Stage stage;
    auto *button = new Button(u"Play"_s);
    stage.scene.addItem(button);
    button->setGeometry(QRectF(100, 100, 200, 60));
    QSignalSpy clicked(button, &Button::clicked);
    QTest::mouseClick(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 130));
    QCOMPARE(clicked.count(), 1);
    const std::unique_ptr<QPointingDevice> device(QTest::createTouchDevice());
    QTest::touchEvent(stage.view.viewport(), device.get()).press(0, QPoint(150, 130));
    QTest::touchEvent(stage.view.viewport(), device.get()).release(0, QPoint(150, 130));
    QTRY_COMPARE(clicked.count(), 2);
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(stage.view.viewport(), Qt::Key_Space);
    QTest::keyClick(stage.view.viewport(), Qt::Key_Return);
    QCOMPARE(clicked.count(), 4);
    button->click();
    QCOMPARE(clicked.count(), 5);
}

void WidgetsControls::aButtonShowsThePressAtOnce()
{
    Stage stage;
    auto *button = new Button;
    stage.scene.addItem(button);
    button->setGeometry(QRectF(100, 100, 200, 60));
    const QColor pressed = button->style().color(u"pressed"_s);
    QCOMPARE(pixelsLike(stage.picture(), {120, 110, 20, 20}, pressed, 4), 0);
    QSignalSpy pressedSpy(button, &Button::pressed);
    QSignalSpy releasedSpy(button, &Button::released);
    QTest::mousePress(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 130));
    QVERIFY(button->isDown());
    QCOMPARE(pixelsLike(stage.picture(), {120, 110, 20, 20}, pressed, 4), 400);
    QTest::mouseRelease(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 130));
    QVERIFY(!button->isDown());
    QCOMPARE(pressedSpy.count(), 1);
    QCOMPARE(releasedSpy.count(), 1);
}

void WidgetsControls::aPressThatLeavesTheButtonIsNoClick()
{
    Stage stage;
    auto *button = new Button(u"Play"_s);
    stage.scene.addItem(button);
    button->setGeometry(QRectF(100, 100, 200, 60));
    QSignalSpy clicked(button, &Button::clicked);
    QTest::mousePress(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 130));
    stage.move(Qt::LeftButton, QPoint(150, 400));
    QVERIFY(!button->isDown());
    QTest::mouseRelease(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 400));
    QCOMPARE(clicked.count(), 0);
}

void WidgetsControls::aDisabledButtonDoesNothingAndLooksIt()
{
    Stage stage;
    auto *button = new IconButton(u"icon-m-kestrel-play"_s);
    stage.scene.addItem(button);
    button->setStyleName(u"NavigationBarButton"_s);
    button->setGeometry(QRectF(100, 100, 76, 76));
    QSignalSpy clicked(button, &Button::clicked);
    const QImage enabled = stage.picture();
    button->setEnabled(false);
    QVERIFY(stage.picture() != enabled);
    QTest::mouseClick(stage.view.viewport(), Qt::LeftButton, {}, QPoint(130, 130));
    button->click();
    QCOMPARE(clicked.count(), 0);
}

void WidgetsControls::aButtonHasAnEdgeWithMoreContrast()
{
    Stage stage;
    auto *button = new Button(u"No"_s);
    button->setStyleName(u"DialogButton"_s);
    stage.scene.addItem(button);
    button->setGeometry(QRectF(20, 20, 200, 60));
    const QColor line = Theme::instance()->token(u"line"_s);
    QCOMPARE(pixelsLike(stage.picture(), {60, 20, 100, 2}, line, 6), 0);
    Theme::instance()->setHighContrast(true);
    const QColor strong = Theme::instance()->token(u"line"_s);
    QCOMPARE(pixelsLike(stage.picture(), {60, 20, 100, 2}, strong, 6), 200);
    Theme::instance()->setHighContrast(false);
    stage.scene.clear();
}

void WidgetsControls::aButtonLosesItsPressWithTheGrab()
{
    Stage stage;
    auto *button = new Button(u"Play"_s);
    stage.scene.addItem(button);
    button->setGeometry(QRectF(100, 100, 200, 60));
    QSignalSpy clicked(button, &Button::clicked);
    QTest::mousePress(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 130));
    button->ungrabMouse();
    QVERIFY(!button->isDown());
    QTest::mouseRelease(stage.view.viewport(), Qt::LeftButton, {}, QPoint(150, 130));
    QCOMPARE(clicked.count(), 0);
}

void WidgetsControls::anIconButtonHasItsIconAndView()
{
    IconButton button(u"icon-m-input-clear"_s);
    QCOMPARE(button.viewType(), u"icon"_s);
    QCOMPARE(button.iconId(), u"icon-m-input-clear"_s);
    button.setStyleName(u"ClearButton"_s);
    QCOMPARE(button.preferredSize(), Theme::instance()->style(u"ClearButton"_s).preferredSize);
    QVERIFY(button.preferredSize().width() >= 48 && button.preferredSize().height() >= 48); // a finger's size
}

void WidgetsControls::aButtonHasANameForEverybody()
{
    Button button(u"Play"_s);
    QCOMPARE(button.accessibleName(), u"Play"_s);
    button.setAccessibleName(u"Play the video"_s);
    QCOMPARE(button.accessibleName(), u"Play the video"_s);
    QCOMPARE(button.toolTip(), u"Play the video"_s);
}

void WidgetsControls::aPictureCoversItsPlaceWithRoundCorners()
{
    Stage stage;
    auto *image = new ImageWidget;
    stage.scene.addItem(image);
    image->setStyleName(u"KestrelGridCellThumbnail"_s);
    image->setGeometry(QRectF(16, 10, 206, 116));
    // A tall picture: green, with red ends that the cover cuts off.
    QImage tall(100, 300, QImage::Format_RGB32);
    tall.fill(Qt::red);
    QPainter painter(&tall);
    painter.fillRect(0, 120, 100, 60, Qt::green);
    painter.end();
    image->setPixmap(QPixmap::fromImage(tall));
    const QImage shown = stage.picture();
    QCOMPARE(pixelsLike(shown, {16, 10, 206, 116}, Qt::red), 0);
    QVERIFY(pixelsLike(shown, {16, 10, 206, 116}, Qt::green) > 206 * 116 - 200);
    QCOMPARE(shown.pixelColor(16, 10), QColor(0x0C, 0x0E, 0x12)); // the corner is round
    QCOMPARE(pixelsLike(shown, {222, 10, 10, 116}, Qt::green), 0);
}

void WidgetsControls::aPictureIsScaledOnce()
{
    Stage stage;
    auto *image = new ImageWidget;
    stage.scene.addItem(image);
    image->setGeometry(QRectF(0, 0, 206, 116));
    QPixmap first(640, 360);
    first.fill(Qt::red);
    image->setPixmap(first);
    QVERIFY(pixelsLike(stage.picture(), {50, 50, 10, 10}, Qt::red) == 100);
    QPixmap second(640, 360);
    second.fill(Qt::green);
    image->setPixmap(second);
    QVERIFY(pixelsLike(stage.picture(), {50, 50, 10, 10}, Qt::green) == 100);
    image->setPixmap(QPixmap());
    QVERIFY(pixelsLike(stage.picture(), {50, 50, 10, 10}, Qt::green) == 0);
}

void WidgetsControls::anImageShowsAnIconOfTheTheme()
{
    Stage stage;
    auto *image = new ImageWidget(u"icon-m-common-search"_s);
    stage.scene.addItem(image);
    image->setStyleName(u"SearchMagnifier"_s);
    image->setGeometry(QRectF(QPointF(0, 0), image->preferredSize()));
    QCOMPARE(image->contentsRect().size(), QSizeF(32, 32));
    const QColor color = image->style().color(u"icon"_s);
    QVERIFY(pixelsLike(stage.picture(), image->contentsRect().toRect(), color, 20) > 60);
    QCOMPARE(image->imageId(), u"icon-m-common-search"_s);
}

namespace {

// A spinner on a page that is on the screen, in a view.
struct Turning
{
    Turning()
    {
        page = new ShownPage;
        stage.scene.addItem(page);
        page->resize(480, 854);
        spinner = new Spinner(page);
        spinner->setStyleName(u"CommonLargeSpinnerInverted"_s);
        spinner->setGeometry(QRectF(0, 0, 96, 96));
        spinner->setUnknownDuration(true);
    }
    [[nodiscard]] bool turnsFrom(const QImage &before) { return stage.picture() != before; }
    Stage stage;
    ShownPage *page;
    Spinner *spinner;
};

} // namespace

void WidgetsControls::aSpinnerTurnsOnlyOnTheDisplay()
{
    Turning t;
    QCOMPARE(t.spinner->preferredSize(), QSizeF(96, 96));
    QVERIFY(!t.spinner->isTurning());
    t.page->setOnDisplay(true);
    QVERIFY(t.spinner->isTurning());
    const QImage before = t.stage.picture();
    QTRY_VERIFY(t.turnsFrom(before));
    t.page->setOnDisplay(false);
    QVERIFY(!t.spinner->isTurning());
    t.page->setOnDisplay(true);
    t.spinner->setVisible(false);
    QVERIFY(!t.spinner->isTurning());
    t.spinner->setVisible(true);
    QVERIFY(t.spinner->isTurning());
    t.spinner->reset();
    QVERIFY(!t.spinner->isTurning());
    QVERIFY(!t.spinner->unknownDuration());
}

void WidgetsControls::aSpinnerRestsWithReducedMotion()
{
    Theme::instance()->setReducedMotion(true);
    QCOMPARE(Theme::instance()->motion(240), 0);
    Turning t;
    t.page->setOnDisplay(true);
    QVERIFY(!t.spinner->isTurning());
    // Switched while it is on the screen.
    Theme::instance()->setReducedMotion(false);
    QVERIFY(t.spinner->isTurning());
    Theme::instance()->setReducedMotion(true);
    QVERIFY(!t.spinner->isTurning());
    // It is there all the same.
    QVERIFY(pixelsLike(t.stage.picture(), {0, 0, 96, 96}, t.spinner->style().color(u"accent"_s)) > 100);
}

void WidgetsControls::aBannerGoesByItself()
{
    Stage stage;
    auto *banner = new Banner;
    stage.scene.addItem(banner);
    banner->setTitle(u"No"_s);
    QSignalSpy dismissed(banner, &Banner::dismissed);
    ShownPage page;
    stage.scene.addItem(&page);
    banner->setParentItem(&page);
    page.setOnDisplay(true);
    QVERIFY(dismissed.wait(5000));
    stage.scene.removeItem(&page);
}

void WidgetsControls::aBannerGoesOnATapAndSaysSoOnce()
{
    Stage stage;
    auto *banner = new Banner;
    stage.scene.addItem(banner);
    banner->setTitle(u"The video could not be deleted."_s);
    QCOMPARE(banner->title(), u"The video could not be deleted."_s);
    banner->setGeometry(QRectF(QPointF(16, 16), banner->effectiveSizeHint(Qt::PreferredSize)));
    QSignalSpy dismissed(banner, &Banner::dismissed);
    QTest::mouseClick(stage.view.viewport(), Qt::LeftButton, {}, QPoint(50, 40));
    QCOMPARE(dismissed.count(), 1);
    banner->dismiss();
    QCOMPARE(dismissed.count(), 1);
}

void WidgetsControls::aBannerWrapsALongText()
{
    Banner banner;
    banner.setTitle(
        u"Videos are not available while the device is connected to a computer as mass storage."_s);
    const QSizeF size = banner.effectiveSizeHint(Qt::PreferredSize, {448, -1});
    QVERIFY(size.width() <= 448);
    QVERIFY(size.height() >= 2 * 26 + 32);
    banner.setTitle(u"Short"_s);
    QVERIFY(banner.effectiveSizeHint(Qt::PreferredSize).width() < 300);
}

// "Address copied" touched the edge of a banner as small as banners get.
void WidgetsControls::aShortBannerKeepsItsMargins()
{
    auto *banner = new Banner;
    banner->setStyleName(u"SystemBanner"_s);
    banner->setTitle(u"Short"_s);
    banner->setGeometry({QPointF(40, 40), banner->style().minimumSize});
    const auto *label = qgraphicsitem_cast<QGraphicsWidget *>(banner->childItems().value(0));
    QVERIFY(label != nullptr);
    QCOMPARE(label->geometry(), banner->rect().marginsRemoved(banner->style().margins));
    delete banner;
}

void WidgetsControls::displayEnteredReachesWhatIsSeen()
{
    Stage stage;
    auto *page = new ShownPage;
    stage.scene.addItem(page);
    auto *plain = new QGraphicsWidget(page);
    auto *seen = new Widget(plain);
    auto *hidden = new Widget(page);
    hidden->setVisible(false);
    QSignalSpy entered(seen, &Widget::displayEntered);
    QSignalSpy exited(seen, &Widget::displayExited);
    QSignalSpy hiddenEntered(hidden, &Widget::displayEntered);
    page->setOnDisplay(true);
    page->setOnDisplay(true);
    QCOMPARE(entered.count(), 1);
    QVERIFY(seen->isOnDisplay());
    QCOMPARE(hiddenEntered.count(), 0);
    page->setVisible(false);
    QCOMPARE(exited.count(), 1);
    page->setVisible(true);
    QCOMPARE(entered.count(), 2);
    page->setOnDisplay(false);
    QCOMPARE(exited.count(), 2);
    QVERIFY(!seen->isOnDisplay());
}

void WidgetsControls::whatBecomesVisibleOnAShownPageEnters()
{
    Stage stage;
    auto *page = new ShownPage;
    stage.scene.addItem(page);
    page->setOnDisplay(true);
    auto *late = new Widget;
    QSignalSpy entered(late, &Widget::displayEntered);
    QSignalSpy exited(late, &Widget::displayExited);
    late->setParentItem(page);
    QCOMPARE(entered.count(), 1);
    late->setVisible(false);
    QCOMPARE(exited.count(), 1);
    late->setVisible(true);
    QCOMPARE(entered.count(), 2);
    late->setParentItem(nullptr);
    QCOMPARE(exited.count(), 2);
}

// The handset is turned: what stands in the window is styled for the new shape, and what comes in later too.
void WidgetsControls::stylesFollowTheWindowsOrientation()
{
    ApplicationWindow window;
    window.setProfile(ApplicationWindow::Profile::Handset);
    auto *bar = new Widget;
    bar->setStyleName(u"NavigationBarToolbar"_s);
    window.scene()->addItem(bar);
    window.showForProfile();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.setOrientationAngle(270, ApplicationWindow::Transition::Immediate);
    QTRY_COMPARE(window.orientation(), Qt::Vertical);
    QCOMPARE(bar->preferredSize().width(), 328.0);
    window.setOrientationAngle(0, ApplicationWindow::Transition::Immediate);
    QTRY_COMPARE(window.orientation(), Qt::Horizontal);
    QCOMPARE(bar->preferredSize().width(), 702.0);
    auto *late = new Widget;
    late->setStyleName(u"NavigationBarToolbar"_s);
    window.scene()->addItem(late);
    QCOMPARE(late->preferredSize().width(), 702.0);
}

void WidgetsControls::theFactoryMakesWhatWasRegistered()
{
    QVERIFY(!WidgetFactory::isRegistered(u"kestrel"_s, u"Test"_s));
    QCOMPARE(WidgetFactory::create(u"kestrel"_s, u"Test"_s), nullptr);
    WidgetFactory::registerType(u"kestrel"_s, u"Test"_s, [] { return new Button(u"made"_s); });
    QVERIFY(WidgetFactory::isRegistered(u"kestrel"_s, u"Test"_s));
    QVERIFY(!WidgetFactory::isRegistered(u"other"_s, u"Test"_s));
    const std::unique_ptr<Widget> made(WidgetFactory::create(u"kestrel"_s, u"Test"_s));
    QCOMPARE(qobject_cast<Button *>(made.get())->text(), u"made"_s);
}

void WidgetsControls::aControllerOwnsItsPartsAndPaintsThroughItsView()
{
    class View : public WidgetView
    {
    public:
        void drawBackground(QPainter *painter, const QRectF &rect) const override
        {
            painter->fillRect(rect, Qt::red);
        }
    };
    Stage stage;
    auto *model = new WidgetModel;
    QSignalSpy modelGone(model, &QObject::destroyed);
    auto *controller = new WidgetController(model, new View, new WidgetStyle);
    stage.scene.addItem(controller);
    controller->setGeometry(QRectF(10, 10, 20, 20));
    QCOMPARE(pixelsLike(stage.picture(), {0, 0, 100, 100}, Qt::red), 400);
    QCOMPARE(controller->model(), model);
    delete controller;
    QCOMPARE(modelGone.count(), 1);
}

QTEST_MAIN(WidgetsControls)
#include "widgets_controls.moc"
