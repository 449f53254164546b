// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_sheetfixture.h"

#include "platform/toolkit/action.h"
#include "platform/toolkit/objectmenu.h"

#include <QPointingDevice>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;

// The compositor takes the finger for a gesture of its own: it cancels the touch, and what comes then as a
// release is none of the person's.
class TouchCancelTest : public QObject, private SheetFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }
    void buttonIsNotClicked();
    void edgeSwipeGoesNowhere();
    void sheetStaysOpen_data();
    void sheetStaysOpen();
    void menuChoosesNothing();

private:
    void cancel(const QPointF &scene)
    {
        QTouchEvent event(QEvent::TouchCancel, m_screen.get());
        QCoreApplication::sendEvent(m_window->windowHandle(), &event);
        mouse(QEvent::MouseButtonRelease, scene);
    }

    std::unique_ptr<QPointingDevice> m_screen{QTest::createTouchDevice()};
};

void TouchCancelTest::buttonIsNotClicked()
{
    auto *button = new Button(u"Play"_s, m_page->centralWidget());
    button->setGeometry(QRectF(100, 100, 200, 60));
    QSignalSpy clicked(button, &Button::clicked);
    const QPointF at = button->mapToScene(button->rect().center());
    mouse(QEvent::MouseButtonPress, at);
    cancel(at);
    QCOMPARE(clicked.size(), 0);
    tap(at);
    QCOMPARE(clicked.size(), 1);
}

void TouchCancelTest::edgeSwipeGoesNowhere()
{
    QSignalSpy back(m_page.get(), &ApplicationPage::backButtonClicked);
    mouse(QEvent::MouseButtonPress, QPointF(4, 400));
    mouse(QEvent::MouseMove, QPointF(30, 400));
    QTouchEvent event(QEvent::TouchCancel, m_screen.get());
    QCoreApplication::sendEvent(m_window->windowHandle(), &event);
    mouse(QEvent::MouseMove, QPointF(200, 400));
    mouse(QEvent::MouseButtonRelease, QPointF(200, 400));
    QCOMPARE(back.size(), 0);
}

void TouchCancelTest::sheetStaysOpen_data()
{
    QTest::addColumn<QPointF>("from"); // the sheet's corner
    QTest::addColumn<QPointF>("way");
    QTest::newRow("beside it") << QPointF(40, -60) << QPointF();
    QTest::newRow("on its action") << QPointF(30, 36) << QPointF();
    QTest::newRow("pulled far down") << QPointF(60, 20) << QPointF(0, 260);
}

void TouchCancelTest::sheetStaysOpen()
{
    QFETCH(const QPointF, from);
    QFETCH(const QPointF, way);
    Sheet sheet;
    sheet.setNegativeAction(u"Cancel"_s);
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    open(&sheet);
    const QRectF up = panelOf(sheet);
    const QPointF at = up.topLeft() + from;
    mouse(QEvent::MouseButtonPress, at);
    for (int step = 1; step <= 4 && !way.isNull(); ++step)
        mouse(QEvent::MouseMove, at + way * step / 4);
    cancel(at + way);
    QCOMPARE(rejected.size(), 0);
    QVERIFY(sheet.isOpen());
    QCOMPARE(panelOf(sheet), up); // sprung back
}

void TouchCancelTest::menuChoosesNothing()
{
    ObjectMenu menu;
    Action action;
    action.setText(u"Delete"_s);
    action.setLocation(Action::ObjectMenuLocation);
    menu.addAction(&action);
    menu.setCursorPosition({200, 300});
    menu.appear(m_window.get());
    QSignalSpy triggered(&action, &Action::triggered);
    const QPointF row = menu.mapToScene(menu.entryRect(0).center());
    mouse(QEvent::MouseButtonPress, row);
    cancel(row);
    mouse(QEvent::MouseButtonPress, QPointF(5, 5)); // beside it
    cancel(QPointF(5, 5));
    QCOMPARE(triggered.size(), 0);
    QCOMPARE(menu.state(), ObjectMenu::State::Shown);
    tap(row);
    QCOMPARE(triggered.size(), 1);
}

KESTREL_TOOLKIT_TEST_MAIN(TouchCancelTest)
#include "core_touchcanceltest.moc"
