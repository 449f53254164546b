// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_sheetfixture.h"

#include "platform/toolkit/banner.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"

#include <QAction>
#include <QPainter>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QVariantAnimation>

using namespace Qt::Literals::StringLiterals;
using toolkit::Banner;
using toolkit::Button;
using toolkit::PannableViewport;
using toolkit::Sheet;
using toolkit::SheetHeader;
using toolkit::TextEdit;
using toolkit::Widget;
using Profile = toolkit::ApplicationWindow::Profile;

namespace {

// A content that is higher than any window, of a colour that no theme has.
class Stripe : public Widget
{
public:
    Stripe() { setPreferredHeight(3000); }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        painter->fillRect(rect(), QColor(128, 128, 128));
    }
};

} // namespace

class SheetTest : public QObject, private SheetFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void nothingWithoutAWindow();
    void blockedBeforeItShowsAndUnblockedAfterItsResult_data();
    void blockedBeforeItShowsAndUnblockedAfterItsResult();
    void whatTheOwnerDoesAboutTheResultComesBeforeTheUnblocking();
    void dismissedWithoutAResult();
    void closesOnce();
    void isAsHighAsItsContent();
    void growsWithItsContent();
    void stretchedToAReadableMeasure_data();
    void stretchedToAReadableMeasure();
    void followsTheShapeOfTheWindow();
    void mirrored();
    void theWayBackPointsToWhereLinesBegin();
    void invertedIsLightOnDarkInBothSchemes();
    void contentRunsOutWhereItGoesOn_data();
    void contentRunsOutWhereItGoesOn();
    void theRowWithTheFocusIsWhole();
    void risesAndFalls();
    void interruptedWhileItRises();
    void tapBesideWhileItRisesTakesItBack();
    void popupsMoveForAQuarterOfASecond();
    void appearsAgainWhileItFalls();
    void reducedMotionIsObeyed();
    void ownerDeletesItOnItsResult();
    void deletedWhileItIsUp();
    void outlivesItsWindow();
    void twoSheetsBlockOnce();
    void aSheetFromAMenuBlocksOnToo();
    void bannersStandAboveIt();
};

void SheetTest::nothingWithoutAWindow()
{
    Sheet sheet;
    QSignalSpy appeared(&sheet, &Sheet::appeared);
    sheet.appear(nullptr);
    QVERIFY(!sheet.isDisplayed());
    sheet.dismiss();
    sheet.reject();
    QCOMPARE(appeared.size(), 0);
}

void SheetTest::blockedBeforeItShowsAndUnblockedAfterItsResult_data()
{
    QTest::addColumn<bool>("accepts");
    QTest::newRow("accepted") << true;
    QTest::newRow("rejected") << false;
}

void SheetTest::blockedBeforeItShowsAndUnblockedAfterItsResult()
{
    QFETCH(bool, accepts);
    QStringList story;
    Sheet sheet;
    const auto tell = [&](const QString &what) {
        story.append(what
                     + u" blocked %1 unblocked %2"_s.arg(m_page->events.count(QEvent::WindowBlocked))
                           .arg(m_page->events.count(QEvent::WindowUnblocked)));
    };
    connect(&sheet, &Widget::displayEntered, this, [&] { tell(u"shows"_s); });
    connect(&sheet, &Sheet::appeared, this, [&] { tell(u"appeared"_s); });
    connect(&sheet, &Sheet::accepted, this, [&] { tell(u"accepted"_s); });
    connect(&sheet, &Sheet::rejected, this, [&] { tell(u"rejected"_s); });
    connect(&sheet, &Sheet::disappeared, this, [&] { tell(u"disappeared"_s); });
    open(&sheet);
    if (accepts)
        sheet.accept();
    else
        sheet.reject();
    QTRY_COMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
    const QString result = accepts ? u"accepted"_s : u"rejected"_s;
    QCOMPARE(story,
             (QStringList{u"shows blocked 1 unblocked 0"_s, u"appeared blocked 1 unblocked 0"_s,
                          result + u" blocked 1 unblocked 0"_s, u"disappeared blocked 1 unblocked 0"_s}));
    QVERIFY(!m_window->sceneManager()->isBlocked());
}

// The owner of a title editor dismisses it on Return, writes the title and says that it is done: the page
// must hear that first, and only then that it is free.
void SheetTest::whatTheOwnerDoesAboutTheResultComesBeforeTheUnblocking()
{
    Sheet sheet;
    open(&sheet);
    sheet.dismiss();
    QVERIFY(!m_page->events.contains(QEvent::WindowUnblocked));
    QTRY_VERIFY(m_page->events.contains(QEvent::WindowUnblocked));
}

void SheetTest::dismissedWithoutAResult()
{
    Sheet sheet;
    QSignalSpy accepted(&sheet, &Sheet::accepted);
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    open(&sheet);
    QVERIFY(sheet.isDisplayed());
    sheet.dismiss();
    QVERIFY(!sheet.isDisplayed());
    QCOMPARE(accepted.size() + rejected.size(), 0);
    QCOMPARE(disappeared.size(), 1);
}

void SheetTest::closesOnce()
{
    Sheet sheet;
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    connect(&sheet, &Sheet::rejected, &sheet, &Sheet::dismiss); // as owners do
    connect(&sheet, &Sheet::rejected, &sheet, &Sheet::reject);
    open(&sheet);
    sheet.reject();
    sheet.accept();
    QCOMPARE(rejected.size(), 1);
    QCOMPARE(disappeared.size(), 1);
    QTRY_COMPARE(m_page->events.count(QEvent::WindowUnblocked), 1);
}

void SheetTest::isAsHighAsItsContent()
{
    Sheet sheet;
    open(&sheet, 3);
    const QSizeF scene = m_window->logicalSize();
    const QRectF panel = panelOf(sheet);
    QCOMPARE(panel.bottom(), scene.height());
    QCOMPARE(panel.width(), scene.width());
    QCOMPARE(panel.height(), sheet.header()->heightFor(scene.width()) + 3 * 72 + 16);
    QCOMPARE(sheet.geometry(), QRectF(QPointF(), scene)); // it dims the rest
}

void SheetTest::growsWithItsContent()
{
    Sheet sheet;
    Rows *rows = open(&sheet, 2);
    const qreal before = panelOf(sheet).height();
    rows->setMinimumHeight(72 * 3);
    rows->setPreferredHeight(72 * 3);
    QTRY_COMPARE(panelOf(sheet).height(), before + 72);
    QCOMPARE(panelOf(sheet).bottom(), m_window->logicalSize().height());
}

void SheetTest::stretchedToAReadableMeasure_data()
{
    QTest::addColumn<Sheet::Extent>("extent");
    QTest::addColumn<qreal>("width");
    QTest::newRow("content") << Sheet::Extent::Content << 560.0;
    QTest::newRow("full") << Sheet::Extent::Full << 0.0;
}

void SheetTest::stretchedToAReadableMeasure()
{
    QFETCH(Sheet::Extent, extent);
    QFETCH(qreal, width);
    m_window->resize(1200, 700);
    QTRY_VERIFY(m_window->logicalSize().width() > 700);
    const QSizeF scene = m_window->logicalSize();
    Sheet sheet(extent);
    open(&sheet);
    QCOMPARE(panelOf(sheet).width(), width > 0 ? width : scene.width());
    QCOMPARE(panelOf(sheet).center().x(), scene.width() / 2);
    if (extent == Sheet::Extent::Full)
        QCOMPARE(panelOf(sheet), QRectF(QPointF(), scene));
}

void SheetTest::followsTheShapeOfTheWindow()
{
    Sheet sheet;
    open(&sheet, 3);
    m_window->resize(800, 480);
    QTRY_COMPARE(sheet.size(), m_window->logicalSize());
    QVERIFY(m_window->logicalSize().width() > m_window->logicalSize().height());
    QCOMPARE(panelOf(sheet).bottom(), m_window->logicalSize().height());
    QVERIFY(panelOf(sheet).top() >= 48);
}

void SheetTest::invertedIsLightOnDarkInBothSchemes()
{
    Sheet sheet(Sheet::Extent::Full);
    sheet.setStyleName(u"Inverted"_s);
    sheet.header()->setStyleName(u"Inverted"_s);
    sheet.setTitle(u"Title"_s);
    sheet.setPositiveAction(u"Save"_s);
    sheet.appear(m_window.get());
    const auto picture = [&](bool dark) {
        toolkit::Theme::instance()->setDark(dark);
        return m_window->grab().toImage();
    };
    const QImage inLight = picture(false);
    const QImage inDark = picture(true);
    const QPoint ground(inDark.width() / 2, inDark.height() / 2);
    QCOMPARE(inLight.pixelColor(ground), inDark.pixelColor(ground));
    QVERIFY(inLight.pixelColor(ground).lightness() < 60);
    QCOMPARE(inLight.pixelColor(ground.x(), 4), inDark.pixelColor(ground.x(), 4)); // the bar
    QVERIFY(inLight.pixelColor(ground.x(), 4) != inLight.pixelColor(ground));
}

void SheetTest::mirrored()
{
    Sheet sheet;
    sheet.setNegativeAction(u"Cancel"_s);
    sheet.setPositiveAction(u"Save"_s);
    const SheetHeader *header = sheet.header();
    open(&sheet);
    QVERIFY(header->negativeButton()->x() < header->positiveButton()->x());
    const qreal margin = header->negativeButton()->x();
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QTRY_VERIFY(header->negativeButton()->x() > header->positiveButton()->x());
    QCOMPARE(header->positiveButton()->x(), margin);
    QCOMPARE(header->negativeButton()->geometry().right(), header->size().width() - margin);
}

void SheetTest::theWayBackPointsToWhereLinesBegin()
{
    Sheet sheet;
    open(&sheet);
    sheet.header()->setBackVisible(true);
    const QList<QGraphicsItem *> parts = sheet.header()->childItems();
    const auto back = std::find_if(parts.begin(), parts.end(), [](const QGraphicsItem *part) {
        return dynamic_cast<const toolkit::IconButton *>(part) != nullptr;
    });
    QVERIFY(back != parts.end());
    const auto picture = [&] {
        const QRectF place = m_window->viewportTransform().mapRect((*back)->sceneBoundingRect());
        return m_window->viewport()->grab(place.toRect()).toImage();
    };
    // Of all pixels those that are others than in the second picture.
    const auto others = [](const QImage &a, const QImage &b) {
        int count = 0;
        for (int y = 0; y < a.height(); ++y) {
            for (int x = 0; x < a.width(); ++x)
                count += std::abs(qGray(a.pixel(x, y)) - qGray(b.pixel(x, y))) > 60 ? 1 : 0;
        }
        return count;
    };
    const QImage toTheLeft = picture();
    const QImage toTheRight = toTheLeft.mirrored(true, false);
    QVERIFY(others(toTheLeft, toTheRight) > 60);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QTRY_VERIFY((*back)->sceneBoundingRect().center().x() > sheet.header()->sceneBoundingRect().center().x());
    const QImage mirrored = picture();
    QCOMPARE(mirrored.size(), toTheRight.size());
    QVERIFY(others(mirrored, toTheRight) < 30);
}

void SheetTest::contentRunsOutWhereItGoesOn_data()
{
    QTest::addColumn<bool>("full");
    QTest::addColumn<bool>("dark");
    QTest::addRow("at the foot, dark") << false << true;
    QTest::addRow("at the foot, light") << false << false;
    QTest::addRow("full, dark") << true << true;
    QTest::addRow("full, light") << true << false;
}

// Nothing looks cut off, and one sees that there is more.
void SheetTest::contentRunsOutWhereItGoesOn()
{
    QFETCH(bool, full);
    QFETCH(bool, dark);
    toolkit::Theme::instance()->setDark(!dark);
    const auto asBefore = qScopeGuard([] { toolkit::Theme::instance()->setDark(true); });
    Sheet sheet(full ? Sheet::Extent::Full : Sheet::Extent::Content);
    auto *content = new Stripe;
    sheet.setCentralWidget(content);
    sheet.appear(m_window.get());
    toolkit::Theme::instance()->setDark(dark); // also while it is there
    auto *viewport = qobject_cast<PannableViewport *>(content->parentItem()->toGraphicsObject());
    QVERIFY(viewport && viewport->isPannable());
    const QRectF seen = viewport->mapRectToScene(viewport->rect());
    const QColor ground = sheetPanelOf(sheet)->ground();
    const auto isGround = [&](qreal y) {
        const QImage picture = m_window->grab().toImage();
        const QColor pixel = picture.pixelColor(viewPoint({seen.center().x(), y}));
        return std::abs(pixel.lightness() - ground.lightness()) < 24;
    };
    QVERIFY(!isGround(seen.top() + 2));
    QVERIFY(!isGround(seen.center().y()));
    QVERIFY(isGround(seen.bottom() - 2));
    viewport->setPosition({0, 300});
    QVERIFY(isGround(seen.top() + 2));
    QVERIFY(isGround(seen.bottom() - 2));
    viewport->setPosition({0, 4000});
    QVERIFY(isGround(seen.top() + 2));
    QVERIFY(!isGround(seen.bottom() - 2));
}

void SheetTest::theRowWithTheFocusIsWhole()
{
    Sheet sheet;
    Rows *content = open(&sheet, 30);
    auto *viewport = qobject_cast<PannableViewport *>(content->parentItem()->toGraphicsObject());
    QVERIFY(viewport && viewport->isPannable());
    for (int i = 0; i < 20; ++i)
        QTest::keyClick(m_window.get(), Qt::Key_Tab);
    const QGraphicsItem *row = m_window->scene()->focusItem();
    QVERIFY(row && content->isAncestorOf(row));
    const QRectF place = viewport->mapRectFromItem(row, row->boundingRect());
    QVERIFY(viewport->position().y() > 0);
    QVERIFY2(place.bottom() <= viewport->size().height() - 28, qPrintable(QString::number(place.bottom())));
    QVERIFY(place.top() >= 28);
}

void SheetTest::risesAndFalls()
{
    setReducedMotion(false);
    Sheet sheet;
    QSignalSpy appeared(&sheet, &Sheet::appeared);
    QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    open(&sheet);
    QVERIFY(sheet.isDisplayed());
    QVERIFY(!sheet.isOpen());
    QCOMPARE(panelOf(sheet).top(), m_window->logicalSize().height()); // still below the edge
    QVERIFY(appeared.wait(TestPatience));
    QVERIFY(sheet.isOpen());
    sheet.reject();
    QVERIFY(sheet.isDisplayed());
    QVERIFY(disappeared.wait(TestPatience));
    QVERIFY(!sheet.isDisplayed());
    QVERIFY(sheet.scene() == nullptr);
    QCOMPARE(appeared.size(), 1);
}

void SheetTest::interruptedWhileItRises()
{
    setReducedMotion(false);
    Sheet sheet;
    QSignalSpy appeared(&sheet, &Sheet::appeared);
    QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    open(&sheet);
    const qreal edge = m_window->logicalSize().height();
    QTRY_VERIFY(panelOf(sheet).top() < edge - 20);
    const qreal seen = panelOf(sheet).top();
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(qAbs(panelOf(sheet).top() - seen) < 1); // it goes on from where it is
    QVERIFY(disappeared.wait(TestPatience));
    QCOMPARE(appeared.size(), 0);
    QVERIFY(!m_window->sceneManager()->isBlocked());
}

void SheetTest::tapBesideWhileItRisesTakesItBack()
{
    setReducedMotion(false);
    Sheet sheet;
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    QSignalSpy appeared(&sheet, &Sheet::appeared);
    open(&sheet);
    QTRY_VERIFY(panelOf(sheet).top() < m_window->logicalSize().height() - 20);
    const qreal seen = panelOf(sheet).top();
    tap({100, 20});
    QVERIFY(qAbs(panelOf(sheet).top() - seen) < 1);
    QCOMPARE(rejected.size(), 1);
    QTRY_VERIFY(!sheet.isDisplayed());
    QCOMPARE(appeared.size(), 0);
}

void SheetTest::popupsMoveForAQuarterOfASecond()
{
    setReducedMotion(false);
    Sheet sheet;
    toolkit::QueryDialog dialog;
    toolkit::ObjectMenu menu;
    QAction action(u"Share"_s);
    menu.addAction(&action);
    open(&sheet);
    dialog.appear(m_window.get());
    menu.appear(m_window.get());
    for (const toolkit::Popup *popup : QList<toolkit::Popup *>{&sheet, &dialog, &menu}) {
        const auto *motion = popup->findChild<QVariantAnimation *>(u"motion"_s, Qt::FindDirectChildrenOnly);
        QVERIFY(motion != nullptr);
        QCOMPARE(motion->state(), QAbstractAnimation::Running);
        QVERIFY2(motion->totalDuration() >= 150 && motion->totalDuration() <= 250,
                 qPrintable(QString::number(motion->totalDuration())));
    }
    setReducedMotion(true); // from here on
    menu.disappear();
    QVERIFY(!menu.isDisplayed());
}

void SheetTest::appearsAgainWhileItFalls()
{
    setReducedMotion(false);
    Sheet sheet;
    QSignalSpy appeared(&sheet, &Sheet::appeared);
    QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    open(&sheet);
    QVERIFY(appeared.wait(TestPatience));
    sheet.dismiss();
    sheet.appear(m_window.get());
    QTRY_COMPARE(appeared.size(), 2);
    QCOMPARE(disappeared.size(), 0);
    QVERIFY(sheet.isOpen());
    QVERIFY(m_window->sceneManager()->isBlocked());
    QCOMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowBlocked}); // it never was free
    sheet.dismiss();
    QTRY_VERIFY(!m_window->sceneManager()->isBlocked()); // free while it still falls
    QVERIFY(sheet.isDisplayed());
    sheet.appear(m_window.get());
    QCOMPARE(m_page->events.count(QEvent::WindowBlocked), 2);
    QTRY_COMPARE(appeared.size(), 3);
}

void SheetTest::reducedMotionIsObeyed()
{
    Sheet sheet;
    QSignalSpy appeared(&sheet, &Sheet::appeared);
    open(&sheet);
    QCOMPARE(appeared.size(), 1);
    QVERIFY(sheet.isOpen());
    sheet.dismiss();
    QVERIFY(!sheet.isDisplayed());
}

void SheetTest::ownerDeletesItOnItsResult()
{
    auto *sheet = new Sheet;
    connect(sheet, &Sheet::rejected, this, [sheet] { delete sheet; });
    open(sheet);
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QTRY_COMPARE(m_page->events.count(QEvent::WindowUnblocked), 1);
}

void SheetTest::deletedWhileItIsUp()
{
    auto sheet = std::make_unique<Sheet>();
    open(sheet.get());
    sheet.reset();
    QVERIFY(!m_window->sceneManager()->isBlocked());
    QTest::keyClick(m_window.get(), Qt::Key_A); // nobody of the dead hears it
    QVERIFY(m_window->isVisible());
}

void SheetTest::outlivesItsWindow()
{
    Sheet sheet;
    QSignalSpy disappeared(&sheet, &Sheet::disappeared);
    open(&sheet);
    m_window.reset();
    QCOMPARE(disappeared.size(), 1);
    QVERIFY(!sheet.isDisplayed());
    QVERIFY(sheet.centralWidget() != nullptr);
    sheet.dismiss();
    show(Profile::Desktop);
    sheet.appear(m_window.get());
    QVERIFY(sheet.isOpen());
}

void SheetTest::twoSheetsBlockOnce()
{
    Sheet lower;
    Sheet upper;
    open(&lower, 5);
    open(&upper, 1);
    QVERIFY(upper.zValue() > lower.zValue());
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(!upper.isDisplayed());
    QVERIFY(lower.isOpen());
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(!lower.isDisplayed());
    QTRY_COMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
}

void SheetTest::aSheetFromAMenuBlocksOnToo()
{
    Sheet sheet;
    QAction share(u"Share"_s);
    m_page->addAction(&share);
    Rows *rows = nullptr;
    QObject::connect(&share, &QAction::triggered, this, [&] { rows = open(&sheet, 2); });
    m_window->openMenu();
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QTest::keyClick(m_window.get(), Qt::Key_Space);
    QVERIFY(!m_window->isMenuOpen());
    QVERIFY(sheet.isOpen());
    // The menu's end is no pause between the two, and leaves the keys to the sheet.
    QCoreApplication::processEvents();
    QCOMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowBlocked});
    QSignalSpy clicked(rows->buttons.at(0), &Button::clicked);
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QTest::keyClick(m_window.get(), Qt::Key_Space);
    QCOMPARE(clicked.size(), 1);
    sheet.reject();
    QTRY_COMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
}

void SheetTest::bannersStandAboveIt()
{
    auto *banner = new Banner;
    banner->setTitle(u"Sending to Desk"_s);
    banner->appear(m_window.get());
    const QRectF alone = banner->geometry();
    const qreal height = m_window->logicalSize().height();
    QVERIFY(alone.bottom() > height - 40);
    Sheet sheet;
    open(&sheet, 3);
    QVERIFY(banner->geometry().bottom() < panelOf(sheet).top());
    QVERIFY(banner->geometry().bottom() > panelOf(sheet).top() - 40);
    sheet.setCentralWidget(new Rows(1)); // it is lower now
    QVERIFY(banner->geometry().bottom() > panelOf(sheet).top() - 40);
    // A banner that comes later, too; and where the sheet leaves no room it does not leave the scene.
    auto *next = new Banner;
    next->setTitle(u"Sent"_s);
    next->appear(m_window.get());
    QVERIFY(next->geometry().bottom() < panelOf(sheet).top());
    sheet.setCentralWidget(new Rows(40));
    QVERIFY(next->geometry().top() >= 0);
    sheet.reject();
    QCOMPARE(next->geometry().bottom(), alone.bottom());
    Sheet full(Sheet::Extent::Full);
    open(&full, 3);
    QCOMPARE(next->geometry().bottom(), alone.bottom()); // its actions stand at the head
}

KESTREL_TOOLKIT_TEST_MAIN(SheetTest)
#include "core_sheettest.moc"
