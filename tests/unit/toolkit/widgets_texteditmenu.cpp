// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/locale.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/textmenu.h"
#include "platform/toolkit/theme.h"
#include "support/driventimer.h"
#include "widgets_support.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QGraphicsSceneContextMenuEvent>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::TextEdit;
using toolkit::TextMenu;

// Cut, copy and paste without a keyboard: a finger rests on the text, and a row of commands stands above it.
class TextEditMenuTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void restingFingerSelectsAWordAndOffersWhatCanBeDone();
    void commandsFollowSelectionAndClipboard_data();
    void commandsFollowSelectionAndClipboard();
    void cutAndPasteByFinger();
    void selectAllKeepsTheMenu();
    void movingFingerSelectsAndOpensNothing();
    void pressThatIsTakenAwayOpensNothing();
    void whatClosesTheMenu_data();
    void whatClosesTheMenu();
    void tapOnTheMenuLeavesTheFocus();
    void keysChooseInTheMenu();
    void secondButtonOpensIt();
    void standsAboveTheFieldAndWithinTheScreen_data();
    void standsAboveTheFieldAndWithinTheScreen();
    void wordsThatDoNotFitStandInAColumn();
    void rightToLeftBeginsAtTheRight();
    void menuGoesWithItsField();

private:
    [[nodiscard]] QStringList commands() const
    {
        QStringList names;
        if (m_edit->menu() != nullptr) {
            for (const QAction *action : m_edit->menu()->actions())
                names.append(action->objectName().remove(u"Action"_s));
        }
        return names;
    }
    [[nodiscard]] QPoint at(qreal x, qreal y = 30) const
    {
        return m_stage->view.mapFromScene(m_edit->mapToScene(x, y));
    }
    void press(const QPoint &position)
    {
        QTest::mousePress(m_stage->view.viewport(), Qt::LeftButton, {}, position);
    }
    void release(const QPoint &position)
    {
        QTest::mouseRelease(m_stage->view.viewport(), Qt::LeftButton, {}, position);
    }
    // Whether the finger's rest was being waited for.
    bool rest()
    {
        auto *finger = m_edit->findChild<QTimer *>(u"longTap"_s);
        return finger != nullptr && runOut(finger);
    }
    void pressLong(qreal x = 30)
    {
        press(at(x));
        QVERIFY(rest());
        release(at(x));
    }
    void tap(const QString &command)
    {
        TextMenu *menu = m_edit->menu();
        const qsizetype index = commands().indexOf(command);
        QVERIFY2(index >= 0, qPrintable(commands().join(u' ')));
        const QPoint centre = m_stage->view.mapFromScene(menu->mapToScene(menu->cell(int(index)).center()));
        press(centre);
        release(centre);
    }

    toolkit::Locale m_locale;
    std::unique_ptr<Stage> m_stage;
    TextEdit *m_edit = nullptr;
    toolkit::Widget *m_other = nullptr;
};

void TextEditMenuTest::initTestCase()
{
    toolkit::Theme::instance()->setReducedMotion(true);
    m_locale.installTrCatalog(u"music"_s);
    toolkit::Locale::setDefault(&m_locale);
}

void TextEditMenuTest::init()
{
    m_stage = std::make_unique<Stage>();
    m_edit = new TextEdit;
    m_stage->scene.addItem(m_edit);
    m_edit->setGeometry(QRectF(16, 284, 448, 60));
    m_other = new toolkit::Widget;
    m_other->setFocusPolicy(Qt::StrongFocus);
    m_other->setGeometry(QRectF(0, 700, 480, 100));
    m_stage->scene.addItem(m_other);
    QGuiApplication::clipboard()->clear();
    m_edit->setText(u"one two"_s);
}

void TextEditMenuTest::cleanup()
{
    m_stage->scene.clear();
    m_stage.reset();
}

void TextEditMenuTest::restingFingerSelectsAWordAndOffersWhatCanBeDone()
{
    press(at(30));
    QVERIFY(m_edit->menu() == nullptr);
    QVERIFY(rest());
    QCOMPARE(m_edit->selectedText(), u"one"_s);
    QVERIFY(m_edit->hasFocus());
    QCOMPARE(commands().join(u' '), u"cut copy selectAll"_s);
    release(at(30));
    QVERIFY(m_edit->menu() != nullptr);
    QCOMPARE(m_edit->selectedText(), u"one"_s);
}

void TextEditMenuTest::commandsFollowSelectionAndClipboard_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("clipboard");
    QTest::addColumn<QString>("offered");
    QTest::newRow("nothing at all") << QString() << QString() << QString();
    QTest::newRow("only to paste") << QString() << u"x"_s << u"paste"_s;
    QTest::newRow("all of it is one word") << u"one"_s << QString() << u"cut copy"_s;
    QTest::newRow("everything") << u"one two"_s << u"x"_s << u"cut copy paste selectAll"_s;
    QTest::newRow("blanks") << u"     "_s << u"x"_s << u"paste selectAll"_s;
}

void TextEditMenuTest::commandsFollowSelectionAndClipboard()
{
    QFETCH(const QString, text);
    QFETCH(const QString, clipboard);
    m_edit->setText(text);
    if (!clipboard.isEmpty())
        QGuiApplication::clipboard()->setText(clipboard);
    pressLong(20);
    QTEST(commands().join(u' '), "offered");
}

void TextEditMenuTest::cutAndPasteByFinger()
{
    QSignalSpy changed(m_edit, &TextEdit::textChanged);
    bool byTheUser = false;
    connect(m_edit, &TextEdit::textChanged, m_edit, [&] { byTheUser = m_edit->isUserEdit(); });
    pressLong();
    tap(u"cut"_s);
    QCOMPARE(m_edit->text(), u" two"_s);
    QVERIFY(m_edit->menu() == nullptr);
    QVERIFY(byTheUser);
    pressLong(200); // behind the text
    QCOMPARE(m_edit->selectedText(), QString());
    tap(u"paste"_s);
    QCOMPARE(m_edit->text(), u" twoone"_s);
    QCOMPARE(changed.count(), 2);
    pressLong(50);
    tap(u"copy"_s);
    QCOMPARE(m_edit->text(), u" twoone"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"twoone"_s);
    pressLong(50);
    tap(u"paste"_s); // over the word under the finger
    QCOMPARE(m_edit->text(), u" twoone"_s);
    QCOMPARE(m_edit->cursorPosition(), 7);
}

void TextEditMenuTest::selectAllKeepsTheMenu()
{
    pressLong();
    tap(u"selectAll"_s);
    QCOMPARE(m_edit->selectedText(), u"one two"_s);
    QCOMPARE(commands().join(u' '), u"cut copy"_s);
    QVERIFY(m_edit->menu()->isVisible());
}

void TextEditMenuTest::movingFingerSelectsAndOpensNothing()
{
    press(at(20));
    m_stage->move(Qt::LeftButton, at(24)); // it only shakes
    QCOMPARE(m_edit->selectedText(), QString());
    m_stage->move(Qt::LeftButton, at(300));
    QVERIFY(!rest());
    release(at(300));
    QCOMPARE(m_edit->selectedText(), u"one two"_s);
    QVERIFY(m_edit->menu() == nullptr);
}

void TextEditMenuTest::pressThatIsTakenAwayOpensNothing()
{
    press(at(30));
    m_edit->ungrabMouse(); // the page is panned
    QVERIFY(!rest());
    QVERIFY(m_edit->menu() == nullptr);
}

void TextEditMenuTest::whatClosesTheMenu_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what :
         {"tap in the field", "tap elsewhere", "typed", "Escape", "set", "focus", "hidden"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void TextEditMenuTest::whatClosesTheMenu()
{
    QFETCH(const QString, what);
    ShownPage page;
    page.resize(480, 854);
    m_stage->scene.addItem(&page);
    m_edit->setParentItem(&page);
    page.setOnDisplay(true);
    pressLong();
    QVERIFY(m_edit->menu() != nullptr);
    if (what == "tap in the field"_L1) {
        press(at(300));
        release(at(300));
    } else if (what == "tap elsewhere"_L1) {
        press(QPoint(240, 600));
        release(QPoint(240, 600));
    } else if (what == "typed"_L1) {
        QTest::keyClick(m_stage->view.viewport(), Qt::Key_A);
        QCOMPARE(m_edit->text(), u"a two"_s);
    } else if (what == "Escape"_L1) {
        QTest::keyClick(m_stage->view.viewport(), Qt::Key_Escape);
        QVERIFY(m_edit->hasFocus());
    } else if (what == "set"_L1) {
        m_edit->setText(u"other"_s);
    } else if (what == "focus"_L1) {
        m_other->setFocus();
    } else if (what == "hidden"_L1) {
        page.setOnDisplay(false);
    }
    const bool closed = m_edit->menu() == nullptr;
    m_stage->scene.removeItem(&page);
    m_edit->setParentItem(nullptr);
    m_stage->scene.addItem(m_edit);
    QVERIFY(closed);
}

void TextEditMenuTest::tapOnTheMenuLeavesTheFocus()
{
    pressLong();
    QSignalSpy lost(m_edit, &TextEdit::lostFocus);
    tap(u"copy"_s);
    QCOMPARE(lost.count(), 0);
    QVERIFY(m_edit->hasFocus());
}

void TextEditMenuTest::keysChooseInTheMenu()
{
    pressLong();
    QTest::keyClick(m_stage->view.viewport(), Qt::Key_Right); // cut
    QTest::keyClick(m_stage->view.viewport(), Qt::Key_Right); // copy
    QTest::keyClick(m_stage->view.viewport(), Qt::Key_Left); // cut
    QTest::keyClick(m_stage->view.viewport(), Qt::Key_Return);
    QCOMPARE(m_edit->text(), u" two"_s);
    QVERIFY(m_edit->menu() == nullptr);
    // Return with nothing chosen is the field's own.
    pressLong(200);
    QSignalSpy returned(m_edit, &TextEdit::returnPressed);
    QTest::keyClick(m_stage->view.viewport(), Qt::Key_Return);
    QCOMPARE(returned.count(), 1);
    QVERIFY(m_edit->menu() == nullptr);
}

void TextEditMenuTest::secondButtonOpensIt()
{
    QGuiApplication::clipboard()->setText(u"x"_s);
    QGraphicsSceneContextMenuEvent event(QEvent::GraphicsSceneContextMenu);
    event.setPos(QPointF(300, 30));
    event.setReason(QGraphicsSceneContextMenuEvent::Mouse);
    m_stage->scene.sendEvent(m_edit, &event);
    QCOMPARE(commands().join(u' '), u"paste selectAll"_s);
    QCOMPARE(m_edit->cursorPosition(), 7);
    QVERIFY(m_edit->hasFocus());
}

void TextEditMenuTest::standsAboveTheFieldAndWithinTheScreen_data()
{
    QTest::addColumn<QRectF>("field");
    QTest::addColumn<bool>("above");
    QTest::newRow("in the middle") << QRectF(16, 284, 448, 60) << true;
    QTest::newRow("at the top") << QRectF(16, 10, 448, 60) << false;
    QTest::newRow("at the right edge") << QRectF(380, 284, 100, 60) << true;
    QTest::newRow("at the left edge") << QRectF(0, 284, 100, 60) << true;
}

void TextEditMenuTest::standsAboveTheFieldAndWithinTheScreen()
{
    QFETCH(const QRectF, field);
    QFETCH(const bool, above);
    m_edit->setGeometry(field);
    pressLong(30);
    const QRectF menu = m_edit->menu()->geometry();
    QCOMPARE(menu.height(), 64.0);
    QVERIFY(QRectF(8, 8, 464, 838).contains(menu));
    QCOMPARE(above ? menu.bottom() : menu.top(), above ? field.top() - 8 : field.bottom() + 8);
}

void TextEditMenuTest::wordsThatDoNotFitStandInAColumn()
{
    m_stage->scene.setSceneRect(QRectF(0, 0, 240, 854));
    m_edit->setGeometry(QRectF(0, 484, 240, 60));
    QGuiApplication::clipboard()->setText(u"x"_s);
    pressLong();
    const TextMenu *menu = m_edit->menu();
    QCOMPARE(menu->geometry().height(), 4 * 64.0);
    QVERIFY(QRectF(8, 8, 224, 838).contains(menu->geometry()));
    QVERIFY(menu->cell(1).top() >= menu->cell(0).bottom());
    tap(u"cut"_s);
    QCOMPARE(m_edit->text(), u" two"_s);
}

void TextEditMenuTest::rightToLeftBeginsAtTheRight()
{
    m_edit->setLayoutDirection(Qt::RightToLeft);
    pressLong(m_edit->contentsRect().left() + 12);
    const TextMenu *menu = m_edit->menu();
    QVERIFY(menu != nullptr);
    QVERIFY(menu->cell(0).left() > menu->cell(1).left());
    QVERIFY(qAbs(menu->cell(0).right() - menu->size().width()) < 1);
}

void TextEditMenuTest::menuGoesWithItsField()
{
    pressLong();
    const QPointer<TextMenu> menu = m_edit->menu();
    delete m_edit;
    QVERIFY(menu == nullptr);
}

QTEST_MAIN(TextEditMenuTest)
#include "widgets_texteditmenu.moc"
