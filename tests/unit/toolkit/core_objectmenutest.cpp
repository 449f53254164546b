// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_sheetfixture.h"

#include "platform/toolkit/action.h"
#include "platform/toolkit/applicationmenu.h"
#include "platform/toolkit/objectmenu.h"

#include <QScopeGuard>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::Action;
using toolkit::ObjectMenu;
using State = toolkit::ObjectMenu::State;

// A finger rests on a cell: what can be done with it stands there.
class ObjectMenuTest : public QObject, private SheetFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void nothingWithoutAWindowOrActions();
    void offersTheActionsOfItsLocation();
    void standsAtTheFingerAndOnTheScreen_data();
    void standsAtTheFingerAndOnTheScreen();
    void mirroredItsRowsEndAtTheFinger();
    void appearsAndDisappears();
    void disappearsAtOnce();
    void theActionComesBeforeThePageIsFree();
    void aDisabledActionChoosesNothing();
    void aTapBesideClosesIt();
    void theFingerThatOpenedItChoosesNothing();
    void backClosesIt_data();
    void backClosesIt();
    void keysChoose();
    void keysDoNotReachThePage();
    void theFocusComesBackBeforeTheAction();
    void widensForItsWords();
    void rowsHaveRoomForLargeText();
    void appearsAgain();
    void theMenuOfAPageHasOtherActions();

private:
    Action *add(const QString &text, Action::Locations where = Action::ObjectMenuLocation);
    QStringList rows() const;
    QRectF panel() const { return m_menu->entryRect(0).united(m_menu->entryRect(m_menu->entryCount() - 1)); }

    std::unique_ptr<ObjectMenu> m_menu;
};

void ObjectMenuTest::init()
{
    setUp();
    m_menu = std::make_unique<ObjectMenu>();
}

void ObjectMenuTest::cleanup()
{
    m_menu.reset();
    tearDown();
}

Action *ObjectMenuTest::add(const QString &text, Action::Locations where)
{
    auto *action = new Action(m_menu.get());
    action->setText(text);
    action->setLocation(where);
    m_menu->addAction(action);
    return action;
}

QStringList ObjectMenuTest::rows() const
{
    QStringList texts;
    for (int index = 0; index < m_menu->entryCount(); ++index)
        texts.append(m_menu->entry(index)->text());
    return texts;
}

void ObjectMenuTest::nothingWithoutAWindowOrActions()
{
    m_menu->appear(m_window.get());
    QCOMPARE(m_menu->state(), State::Hidden);
    add(u"Details"_s);
    m_menu->appear(nullptr);
    QCOMPARE(m_menu->state(), State::Hidden);
    QVERIFY(m_page->events.isEmpty());
}

void ObjectMenuTest::offersTheActionsOfItsLocation()
{
    add(u"Details"_s);
    add(u"Settings"_s, Action::ApplicationMenuLocation);
    add(u"Both"_s, Action::ApplicationMenuLocation | Action::ObjectMenuLocation);
    add(u"Hidden"_s)->setVisible(false);
    add(u"Nowhere"_s, Action::NoLocation);
    m_menu->addAction(new QAction(u"Plain"_s, m_menu.get()));
    m_menu->appear(m_window.get());
    QCOMPARE(rows(), (QStringList{u"Details"_s, u"Both"_s, u"Plain"_s}));
}

void ObjectMenuTest::standsAtTheFingerAndOnTheScreen_data()
{
    QTest::addColumn<QPointF>("finger");
    QTest::addColumn<QPointF>("corner");
    QTest::newRow("room enough") << QPointF(100, 200) << QPointF(100, 200);
    QTest::newRow("at the upper left") << QPointF(0, 0) << QPointF(8, 8);
    QTest::newRow("at the right") << QPointF(470, 300) << QPointF(480 - 290 - 8, 300);
    QTest::newRow("at the foot") << QPointF(100, 850) << QPointF(100, 854 - 2 * 64 - 8);
}

void ObjectMenuTest::standsAtTheFingerAndOnTheScreen()
{
    QFETCH(QPointF, finger);
    QFETCH(QPointF, corner);
    m_window->resize(480, 854);
    QTRY_COMPARE(m_window->logicalSize(), QSizeF(480, 854));
    add(u"Details"_s);
    add(u"Share"_s);
    m_menu->setCursorPosition(finger);
    m_menu->appear(m_window.get());
    QCOMPARE(m_menu->cursorPosition(), finger);
    QCOMPARE(panel(), QRectF(corner, QSizeF(290, 2 * 64)));
}

void ObjectMenuTest::mirroredItsRowsEndAtTheFinger()
{
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    add(u"Details"_s);
    m_menu->setCursorPosition({400, 200});
    m_menu->appear(m_window.get());
    QTRY_COMPARE(panel().right(), 400);
}

void ObjectMenuTest::appearsAndDisappears()
{
    setReducedMotion(false);
    add(u"Details"_s);
    QSignalSpy appeared(m_menu.get(), &ObjectMenu::appeared);
    QSignalSpy disappeared(m_menu.get(), &ObjectMenu::disappeared);
    m_menu->appear(m_window.get());
    QCOMPARE(m_menu->state(), State::Appearing);
    QCOMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowBlocked});
    QTRY_COMPARE(m_menu->state(), State::Shown);
    QCOMPARE(appeared.size(), 1);
    m_menu->disappear();
    QCOMPARE(m_menu->state(), State::Disappearing);
    QTRY_COMPARE(m_menu->state(), State::Hidden);
    QCOMPARE(disappeared.size(), 1);
    QCOMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
}

void ObjectMenuTest::disappearsAtOnce()
{
    setReducedMotion(false);
    add(u"Details"_s);
    m_menu->appear(m_window.get());
    QCOMPARE(m_menu->state(), State::Appearing);
    m_menu->disappear(toolkit::Appearance::Immediate);
    QCOMPARE(m_menu->state(), State::Hidden);
    QVERIFY(!m_window->sceneManager()->isBlocked());
}

void ObjectMenuTest::theActionComesBeforeThePageIsFree()
{
    QStringList story;
    connect(add(u"Details"_s), &QAction::triggered, this, [&] {
        story.append(m_page->events.contains(QEvent::WindowUnblocked) ? u"too late"_s : u"triggered"_s);
    });
    connect(m_menu.get(), &ObjectMenu::closed, this, [&] {
        story.append(m_page->events.contains(QEvent::WindowUnblocked) ? u"too late"_s : u"closed"_s);
    });
    m_menu->appear(m_window.get());
    tap(m_menu->entryRect(0).center());
    QCOMPARE(story, (QStringList{u"triggered"_s, u"closed"_s}));
    QCOMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
    QCOMPARE(m_menu->state(), State::Hidden);
}

void ObjectMenuTest::aDisabledActionChoosesNothing()
{
    Action *action = add(u"Details"_s);
    QSignalSpy triggered(action, &QAction::triggered);
    action->setEnabled(false);
    m_menu->appear(m_window.get());
    tap(m_menu->entryRect(0).center());
    QCOMPARE(triggered.size(), 0);
    QCOMPARE(m_menu->state(), State::Shown);
}

void ObjectMenuTest::aTapBesideClosesIt()
{
    QSignalSpy triggered(add(u"Details"_s), &QAction::triggered);
    m_menu->setCursorPosition({100, 300});
    m_menu->appear(m_window.get());
    tap({20, 700});
    QCOMPARE(m_menu->state(), State::Hidden);
    QCOMPARE(triggered.size(), 0);
}

// The menu comes up beneath a finger that is still down: what it does next is no choice.
void ObjectMenuTest::theFingerThatOpenedItChoosesNothing()
{
    QSignalSpy triggered(add(u"Details"_s), &QAction::triggered);
    mouse(QEvent::MouseButtonPress, {150, 320});
    m_menu->setCursorPosition({100, 300});
    m_menu->appear(m_window.get());
    mouse(QEvent::MouseMove, {160, 330});
    mouse(QEvent::MouseButtonRelease, {160, 330});
    QCOMPARE(triggered.size(), 0);
    QCOMPARE(m_menu->state(), State::Shown);
    tap(m_menu->entryRect(0).center());
    QCOMPARE(triggered.size(), 1);
}

void ObjectMenuTest::backClosesIt_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("escape") << int(Qt::Key_Escape);
    QTest::newRow("the back key") << int(Qt::Key_Back);
    QTest::newRow("the menu key") << int(Qt::Key_Menu);
    QTest::newRow("the mouse's back button") << 0;
}

void ObjectMenuTest::backClosesIt()
{
    QFETCH(int, key);
    QSignalSpy triggered(add(u"Details"_s), &QAction::triggered);
    m_menu->appear(m_window.get());
    if (key != 0)
        QTest::keyClick(m_window.get(), Qt::Key(key));
    else
        QTest::mouseClick(m_window->viewport(), Qt::BackButton, {}, {200, 200});
    QCOMPARE(m_menu->state(), State::Hidden);
    QCOMPARE(triggered.size(), 0);
    QVERIFY(m_window->isVisible());
}

void ObjectMenuTest::keysChoose()
{
    add(u"Details"_s);
    QSignalSpy triggered(add(u"Share"_s), &QAction::triggered);
    add(u"Delete"_s);
    m_menu->appear(m_window.get());
    QTest::keyClick(m_window.get(), Qt::Key_Return);
    QCOMPARE(m_menu->state(), State::Shown); // nothing is chosen yet
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QCOMPARE(m_menu->currentEntry(), 1);
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QTest::keyClick(m_window.get(), Qt::Key_Down);
    QCOMPARE(m_menu->currentEntry(), 0);
    QTest::keyClick(m_window.get(), Qt::Key_End);
    QTest::keyClick(m_window.get(), Qt::Key_Up);
    QTest::keyClick(m_window.get(), Qt::Key_Return);
    QCOMPARE(triggered.size(), 1);
}

// A program that watches the keys of its window acts for the page.
void ObjectMenuTest::keysDoNotReachThePage()
{
    struct Watcher : QObject
    {
        bool eventFilter(QObject *, QEvent *event) override
        {
            keys += event->type() == QEvent::KeyPress ? 1 : 0;
            return false;
        }
        int keys = 0;
    } watcher;
    m_window->installEventFilter(&watcher);
    add(u"Details"_s);
    m_menu->appear(m_window.get());
    QTest::keyClick(m_window.get(), Qt::Key_A);
    QCOMPARE(watcher.keys, 0);
    m_menu->disappear();
    QTest::keyClick(m_window.get(), Qt::Key_A);
    QCOMPARE(watcher.keys, 1);
}

void ObjectMenuTest::theFocusComesBackBeforeTheAction()
{
    toolkit::Button button(m_page->centralWidget());
    button.setFocus();
    QVERIFY(button.hasFocus());
    bool had = false;
    connect(add(u"Rename"_s), &QAction::triggered, this, [&] { had = button.hasFocus(); });
    m_menu->appear(m_window.get());
    QVERIFY(!button.hasFocus());
    tap(m_menu->entryRect(0).center());
    QVERIFY(had);
    QVERIFY(button.hasFocus());
}

void ObjectMenuTest::widensForItsWords()
{
    add(u"Informationen zur Wiedergabe"_s);
    m_menu->appear(m_window.get());
    QVERIFY(panel().width() > 290);
    QVERIFY(panel().right() <= m_window->logicalSize().width() - 8);
}

void ObjectMenuTest::rowsHaveRoomForLargeText()
{
    const auto ordinary = qScopeGuard([] { toolkit::Theme::instance()->setTextScale(1); });
    const auto open = [this] {
        ObjectMenu menu;
        QAction share(u"Share"_s);
        menu.addAction(&share);
        menu.appear(m_window.get());
        return menu.entryRect(0).height();
    };
    QCOMPARE(open(), 64.0);
    toolkit::Theme::instance()->setTextScale(2);
    QVERIFY(open() >= 2 * 22 * 1.2 + 28);
}

void ObjectMenuTest::appearsAgain()
{
    Action *details = add(u"Details"_s);
    m_menu->appear(m_window.get());
    tap(m_menu->entryRect(0).center());
    details->setText(u"About"_s);
    m_menu->appear(m_window.get());
    QCOMPARE(rows(), QStringList{u"About"_s});
    QCOMPARE(m_menu->currentEntry(), -1);
    QCOMPARE(m_menu->state(), State::Shown);
}

void ObjectMenuTest::theMenuOfAPageHasOtherActions()
{
    m_page->addAction(add(u"Rename"_s));
    m_window->openMenu();
    QVERIFY(!m_window->isMenuOpen()); // nothing of it is for this menu
    auto *settings = add(u"Settings"_s, Action::ApplicationMenuLocation);
    m_page->addAction(settings);
    m_window->openMenu();
    QVERIFY(m_window->isMenuOpen());
    m_window->closeMenu();
    QVERIFY(!m_window->isMenuOpen());
}

KESTREL_TOOLKIT_TEST_MAIN(ObjectMenuTest)
#include "core_objectmenutest.moc"
