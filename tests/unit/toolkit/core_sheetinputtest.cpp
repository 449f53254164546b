// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_sheetfixture.h"

#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::Button;
using toolkit::Sheet;
using toolkit::SheetHeader;
using toolkit::TextEdit;
using toolkit::Widget;
using Profile = toolkit::ApplicationWindow::Profile;

namespace {

// A sheet of two steps: back leads to the first.
class SteppedSheet : public Sheet
{
public:
    int step = 2;

protected:
    void escape() override
    {
        if (--step == 0)
            reject();
    }
};

} // namespace

// Notes the keys that go by.
class KeyListener : public QObject
{
public:
    QList<int> heard;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)
            heard.append(static_cast<QKeyEvent *>(event)->key());
        return QObject::eventFilter(watched, event);
    }
};

class SheetInputTest : public QObject, private SheetFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void tapBesideRejects();
    void tapThatBeginsOnTheSheetDoesNot();
    void tapOnTheSheetReachesItsContentOnly();
    void escapeBackKeyAndGestureReject_data();
    void escapeBackKeyAndGestureReject();
    void aSheetOfSeveralStepsGoesBackByOne();
    void keysDoNotReachThePage();
    void keysDoNotReachWhoListensAtTheWindow();
    void tabAndArrowsStayOnTheSheet();
    void focusIsGivenBack();
    void swipeDown_data();
    void swipeDown();
    void aPressThatBecomesASwipeIsNoTap();
    void sidewaysIsNoSwipe();
    void moreThanThereIsRoomForPans();
    void fullSheetHasItsActionsInABar();
    void actionThatIsDisabledDoesNothing();
    void anotherContentDeletesTheOldOne();
};

void SheetInputTest::tapBesideRejects()
{
    Sheet sheet;
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    open(&sheet);
    tap(panelOf(sheet).topLeft() + QPointF(40, -40));
    QCOMPARE(rejected.size(), 1);
    QVERIFY(!sheet.isDisplayed());
}

void SheetInputTest::tapThatBeginsOnTheSheetDoesNot()
{
    Sheet sheet;
    open(&sheet);
    const QRectF panel = panelOf(sheet);
    mouse(QEvent::MouseButtonPress, panel.topLeft() + QPointF(40, 30));
    mouse(QEvent::MouseButtonRelease, panel.topLeft() + QPointF(40, -60));
    QVERIFY(sheet.isOpen());
    mouse(QEvent::MouseButtonPress, panel.topLeft() + QPointF(40, -60));
    mouse(QEvent::MouseButtonRelease, panel.topLeft() + QPointF(40, 30));
    QVERIFY(sheet.isOpen());
}

void SheetInputTest::tapOnTheSheetReachesItsContentOnly()
{
    Sheet sheet;
    auto *below = new Button(m_page->centralWidget());
    below->setGeometry(QRectF(QPointF(), m_window->logicalSize()));
    QSignalSpy missed(below, &Button::clicked);
    Rows *rows = open(&sheet);
    QSignalSpy clicked(rows->buttons.at(1), &Button::clicked);
    tap(rows->buttons.at(1)->mapToScene(rows->buttons.at(1)->rect().center()));
    QCOMPARE(clicked.size(), 1);
    QVERIFY(sheet.isOpen());
    tap(panelOf(sheet).topLeft() + QPointF(40, 30)); // the head
    QVERIFY(sheet.isOpen());
    QCOMPARE(missed.size(), 0);
}

void SheetInputTest::escapeBackKeyAndGestureReject_data()
{
    QTest::addColumn<int>("key"); // 0: the back button of a mouse, 1: without the focus
    QTest::newRow("escape") << int(Qt::Key_Escape);
    QTest::newRow("back key") << int(Qt::Key_Back);
    QTest::newRow("back button") << 0;
    QTest::newRow("escape while nothing has the focus") << 1;
}

void SheetInputTest::escapeBackKeyAndGestureReject()
{
    QFETCH(int, key);
    Sheet sheet;
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    open(&sheet);
    if (key == 0) {
        QTest::mouseClick(m_window->viewport(), Qt::BackButton, {}, {200, 200});
    } else {
        if (key == 1)
            m_window->scene()->setFocusItem(nullptr);
        QTest::keyClick(m_window.get(), key == 1 ? Qt::Key_Escape : Qt::Key(key));
    }
    QCOMPARE(rejected.size(), 1);
    QVERIFY(m_window->isVisible()); // the page and its window did not hear of it
}

void SheetInputTest::aSheetOfSeveralStepsGoesBackByOne()
{
    SteppedSheet sheet;
    open(&sheet);
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(sheet.isOpen());
    QTest::mouseClick(m_window->viewport(), Qt::BackButton, {}, {200, 200});
    QVERIFY(!sheet.isDisplayed());
    sheet.step = 2;
    sheet.appear(m_window.get());
    tap(panelOf(sheet).topLeft() + QPointF(40, -40));
    QVERIFY(!sheet.isDisplayed()); // beside it is out of all its steps
}

void SheetInputTest::keysDoNotReachThePage()
{
    auto *field = new TextEdit(m_page->centralWidget());
    field->setFocus();
    Sheet sheet;
    open(&sheet);
    QTest::keyClicks(m_window.get(), u"abc"_s);
    QTest::keyClick(m_window.get(), Qt::Key_PageDown);
    QCOMPARE(field->text(), QString());
    QCOMPARE(m_page->pannableViewport()->position().y(), 0.0);
}

void SheetInputTest::keysDoNotReachWhoListensAtTheWindow()
{
    KeyListener listener;
    m_window->installEventFilter(&listener);
    m_window->viewport()->installEventFilter(&listener);
    Sheet sheet;
    const Rows *rows = open(&sheet, 2);
    QSignalSpy clicked(rows->buttons.at(1), &Button::clicked);
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Tab, Qt::Key_A, Qt::Key_Left, Qt::Key_Backspace})
        QTest::keyClick(m_window.get(), key);
    QTest::keyClick(m_window->viewport(), Qt::Key_A);
    QTest::keyClick(m_window.get(), Qt::Key_Space);
    QCOMPARE(clicked.size(), 1);
    QCOMPARE(listener.heard, QList<int>());
    // A key that closes the sheet is its own to the end.
    QObject::connect(rows->buttons.at(1), &Button::clicked, &sheet, &Sheet::accept);
    QTest::keyClick(m_window.get(), Qt::Key_Space);
    QVERIFY(!sheet.isDisplayed());
    QCOMPARE(listener.heard, QList<int>());
    QCoreApplication::processEvents();
    QTest::keyClick(m_window.get(), Qt::Key_A);
    QCOMPARE(listener.heard, (QList<int>{Qt::Key_A, Qt::Key_A}));
    // The second time it stands above whoever came meanwhile.
    m_window->installEventFilter(&listener);
    sheet.appear(m_window.get());
    QTest::keyClick(m_window.get(), Qt::Key_A);
    QCOMPARE(listener.heard.size(), 2);
}

void SheetInputTest::tabAndArrowsStayOnTheSheet()
{
    auto *below = new Button(u"Page"_s, m_page->centralWidget());
    below->setGeometry(0, 0, 100, 60);
    Sheet sheet;
    Rows *rows = open(&sheet, 3);
    const auto focused = [&] { return m_window->scene()->focusItem(); };
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QCOMPARE(focused(), rows->buttons.at(0));
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QCOMPARE(focused(), rows->buttons.at(1));
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QCOMPARE(focused(), rows->buttons.at(0)); // round
    QTest::keyClick(m_window.get(), Qt::Key_Up);
    QCOMPARE(focused(), rows->buttons.at(2));
    QSignalSpy clicked(rows->buttons.at(2), &Button::clicked);
    QTest::keyClick(m_window.get(), Qt::Key_Return);
    QCOMPARE(clicked.size(), 1);
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(!sheet.isDisplayed());
}

void SheetInputTest::focusIsGivenBack()
{
    auto *field = new TextEdit(m_page->centralWidget());
    field->setFocus();
    QVERIFY(field->hasFocus());
    Sheet sheet;
    auto *own = new TextEdit;
    sheet.setCentralWidget(own);
    sheet.appear(m_window.get());
    own->setFocus();
    QTest::keyClicks(m_window.get(), u"abc"_s);
    QCOMPARE(own->text(), u"abc"_s);
    sheet.reject();
    QVERIFY(field->hasFocus());
    sheet.appear(m_window.get());
    sheet.setCentralWidget(nullptr);
    sheet.dismiss();
    QVERIFY(field->hasFocus());
}

void SheetInputTest::swipeDown_data()
{
    QTest::addColumn<qreal>("way");
    QTest::addColumn<bool>("closes");
    QTest::newRow("a little way") << 60.0 << false;
    QTest::newRow("far") << 220.0 << true;
}

void SheetInputTest::swipeDown()
{
    QFETCH(qreal, way);
    QFETCH(bool, closes);
    Sheet sheet;
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    open(&sheet);
    const QRectF up = panelOf(sheet);
    const QPointF from = up.topLeft() + QPointF(60, 20);
    mouse(QEvent::MouseButtonPress, from);
    mouse(QEvent::MouseMove, from + QPointF(0, way / 2));
    mouse(QEvent::MouseMove, from + QPointF(0, way));
    QVERIFY(panelOf(sheet).top() > up.top()); // it goes with the finger
    QVERIFY(panelOf(sheet).top() <= up.top() + way);
    mouse(QEvent::MouseButtonRelease, from + QPointF(0, way));
    QCOMPARE(rejected.size(), closes ? 1 : 0);
    QCOMPARE(sheet.isDisplayed(), !closes);
    if (!closes)
        QCOMPARE(panelOf(sheet), up);
}

void SheetInputTest::aPressThatBecomesASwipeIsNoTap()
{
    Sheet sheet;
    Rows *rows = open(&sheet);
    QSignalSpy clicked(rows->buttons.at(0), &Button::clicked);
    const QPointF from = rows->buttons.at(0)->mapToScene(rows->buttons.at(0)->rect().center());
    drag(from, {0, 30});
    QCOMPARE(clicked.size(), 0);
    QVERIFY(!rows->buttons.at(0)->isDown());
    QVERIFY(sheet.isOpen());
    tap(from);
    QCOMPARE(clicked.size(), 1);
    drag(from, {0, 260});
    QVERIFY(!sheet.isDisplayed());
    QCOMPARE(clicked.size(), 1);
}

void SheetInputTest::sidewaysIsNoSwipe()
{
    Sheet sheet;
    open(&sheet);
    const QRectF up = panelOf(sheet);
    const QPointF from = up.topLeft() + QPointF(200, 20);
    mouse(QEvent::MouseButtonPress, from);
    mouse(QEvent::MouseMove, from + QPointF(80, 10));
    mouse(QEvent::MouseMove, from + QPointF(80, 300));
    QCOMPARE(panelOf(sheet), up);
    mouse(QEvent::MouseButtonRelease, from + QPointF(80, 300));
    QVERIFY(sheet.isOpen());
}

void SheetInputTest::moreThanThereIsRoomForPans()
{
    Sheet sheet;
    Rows *rows = open(&sheet, 30);
    const QRectF panel = panelOf(sheet);
    QCOMPARE(panel.top(), 48.0); // the page stays in sight
    QVERIFY(rows->size().height() > panel.height());
    // Rows pan, the head still drags the sheet away.
    mouse(QEvent::MouseButtonPress, panel.center());
    mouse(QEvent::MouseMove, panel.center() - QPointF(0, 30));
    mouse(QEvent::MouseMove, panel.center() - QPointF(0, 200));
    QTRY_VERIFY(rows->y() < -100); // once a frame
    mouse(QEvent::MouseButtonRelease, panel.center() - QPointF(0, 200));
    QVERIFY(sheet.isOpen());
    // Keys bring the row into sight that they lead to.
    QTest::keyClick(m_window.get(), Qt::Key_Up);
    QTRY_VERIFY(panelOf(sheet).contains(rows->buttons.last()->mapRectToScene(rows->buttons.last()->rect())));
    drag(panel.topLeft() + QPointF(100, 12), {0, 500});
    QVERIFY(!sheet.isDisplayed());
}

void SheetInputTest::fullSheetHasItsActionsInABar()
{
    Sheet sheet(Sheet::Extent::Full);
    sheet.setStyleName(u"Inverted"_s);
    sheet.header()->setStyleName(u"Inverted"_s);
    QSignalSpy accepted(&sheet, &Sheet::accepted);
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    sheet.setNegativeAction(u"Cancel"_s);
    sheet.setPositiveAction(u"Save"_s);
    auto *content = new Widget;
    sheet.setCentralWidget(content);
    sheet.appear(m_window.get());
    QCOMPARE(sheet.header()->size().height(), 72.0);
    QCOMPARE(content->size(), m_window->logicalSize() - QSizeF(0, 72));
    const auto middle = [](const Button *button) { return button->mapToScene(button->rect().center()); };
    tap(middle(sheet.header()->negativeButton()));
    QCOMPARE(rejected.size(), 1);
    sheet.appear(m_window.get());
    tap(middle(sheet.header()->positiveButton()));
    QCOMPARE(accepted.size(), 1);
    // Nobody loses what was typed by a finger that slips.
    sheet.appear(m_window.get());
    drag({240, 30}, {0, 600});
    QVERIFY(sheet.isOpen());
}

void SheetInputTest::actionThatIsDisabledDoesNothing()
{
    Sheet sheet(Sheet::Extent::Full);
    QSignalSpy accepted(&sheet, &Sheet::accepted);
    sheet.setPositiveAction(u"Save"_s);
    sheet.setPositiveActionEnabled(false);
    sheet.appear(m_window.get());
    const Button *save = sheet.header()->positiveButton();
    tap(save->mapToScene(save->rect().center()));
    QCOMPARE(accepted.size(), 0);
    sheet.setPositiveActionEnabled(true);
    tap(save->mapToScene(save->rect().center()));
    QCOMPARE(accepted.size(), 1);
}

void SheetInputTest::anotherContentDeletesTheOldOne()
{
    Sheet sheet;
    const QPointer<Rows> first = open(&sheet);
    auto *second = new Rows(1);
    // By one of its own rows, as a sheet of several steps does.
    connect(first->buttons.at(0), &Button::clicked, this, [&] { sheet.setCentralWidget(second); });
    tap(first->buttons.at(0)->mapToScene(first->buttons.at(0)->rect().center()));
    QTRY_VERIFY(first == nullptr);
    QCOMPARE(sheet.centralWidget(), second);
    QVERIFY(sheet.isOpen());
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(!sheet.isDisplayed());
}

KESTREL_TOOLKIT_TEST_MAIN(SheetInputTest)
#include "core_sheetinputtest.moc"
