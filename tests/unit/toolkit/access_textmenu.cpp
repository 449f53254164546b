// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessevents.h"
#include "core_support.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/textmenu.h"

#include <QClipboard>

using namespace Qt::Literals::StringLiterals;
using namespace toolkit;
using Actions = QAccessibleActionInterface;

// Cut, copy and paste by whoever does not see the menu above the text: with a reader's gestures, and with its
// keys.
class AccessTextMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void theFieldOffersItsMenu();
    void anEmptyFieldHasNoMenu();
    void theMenuHasItsCommands();
    void aCommandIsPressed();
    void selectAllBringsTheMenuForWhatIsSelected();
    void theArrowsAreTold();
    void theFocusGoesBackToTheField();
    void nothingIsPressedOnAMenuThatClosed();

private:
    [[nodiscard]] static QAccessibleInterface *interfaceOf(QObject *object)
    {
        return QAccessible::queryAccessibleInterface(object);
    }
    [[nodiscard]] QStringList commands() const
    {
        QStringList names;
        const QAccessibleInterface *menu = interfaceOf(m_field->menu());
        for (int index = 0; menu != nullptr && index < menu->childCount(); ++index)
            names.append(menu->child(index)->text(QAccessible::Name));
        return names;
    }
    void showMenu() { interfaceOf(m_field)->actionInterface()->doAction(Actions::showMenuAction()); }
    void press(const QString &command)
    {
        QAccessibleInterface *entry = interfaceOf(m_field->menu())->child(int(commands().indexOf(command)));
        QVERIFY2(entry != nullptr, qPrintable(command));
        entry->actionInterface()->doAction(Actions::pressAction());
    }
    void key(Qt::Key key) { QTest::keyClick(m_window->viewport(), key); }

    Locale m_locale;
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<ApplicationPage> m_page;
    TextEdit *m_field = nullptr;
};

void AccessTextMenu::initTestCase()
{
    QTRY_VERIFY(QAccessible::isActive());
    setReducedMotion(true);
    m_locale.installTrCatalog(u"music"_s);
    Locale::setDefault(&m_locale);
}

void AccessTextMenu::cleanupTestCase()
{
    Locale::setDefault(nullptr);
}

void AccessTextMenu::init()
{
    QGuiApplication::clipboard()->clear();
    m_window = shownWindow(ApplicationWindow::Profile::Desktop);
    m_page = std::make_unique<ApplicationPage>();
    m_page->setTitle(u"Videos"_s);
    auto *policy = new LinearLayoutPolicy(new Layout(m_page->centralWidget()), Qt::Vertical);
    policy->addItem(m_field = new TextEdit);
    m_field->setPrompt(u"Filter"_s);
    m_field->setText(u"one two"_s);
    m_page->appear(m_window.get(), Appearance::Immediate);
    QCoreApplication::processEvents();
}

void AccessTextMenu::cleanup()
{
    m_page.reset();
    m_window.reset();
}

void AccessTextMenu::theFieldOffersItsMenu()
{
    QCOMPARE(interfaceOf(m_field)->actionInterface()->actionNames(),
             QStringList({Actions::setFocusAction(), Actions::showMenuAction()}));
    AccessEvents events;
    showMenu();
    QVERIFY(m_field->menu() != nullptr);
    QVERIFY(m_field->hasFocus());
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"PopupMenuStart "_s), qPrintable(told.join(u'\n')));
    m_window->sceneManager()->block();
    m_field->setText(QString());
    showMenu();
    QVERIFY(m_field->menu() == nullptr); // it is beneath something
    m_window->sceneManager()->unblock();
}

void AccessTextMenu::anEmptyFieldHasNoMenu()
{
    m_field->setText(QString());
    showMenu();
    QVERIFY(m_field->menu() == nullptr);
    QVERIFY(m_field->hasFocus());
}

void AccessTextMenu::theMenuHasItsCommands()
{
    m_field->setSelection(0, 3);
    showMenu();
    const QAccessibleInterface *menu = interfaceOf(m_field->menu());
    QCOMPARE(menu->role(), QAccessible::PopupMenu);
    QCOMPARE(menu->parent(), interfaceOf(m_window.get()));
    QCOMPARE(accessTree(interfaceOf(m_window.get())),
             u"Window Videos\n"
             u"  Pane Videos\n"
             u"    Heading Videos\n"
             u"    EditableText Filter\n"
             u"  PopupMenu\n"
             u"    MenuItem Cut\n"
             u"    MenuItem Copy\n"
             u"    MenuItem Select all\n"_s);
    for (int index = 0; index < 3; ++index) {
        const QAccessibleInterface *command = menu->child(index);
        QVERIFY(menu->rect().contains(command->rect()));
        QVERIFY(!command->state().disabled);
        QVERIFY(!command->state().focused);
        const QPoint middle = command->rect().center();
        QCOMPARE(interfaceOf(m_window.get())->childAt(middle.x(), middle.y()), command);
    }
    QVERIFY(!menu->child(0)->rect().intersects(menu->child(1)->rect()));
    QVERIFY(menu->child(3) == nullptr);
}

void AccessTextMenu::aCommandIsPressed()
{
    m_field->setSelection(0, 4);
    showMenu();
    press(u"Cut"_s);
    QCOMPARE(m_field->text(), u"two"_s);
    QVERIFY(m_field->menu() == nullptr);
    showMenu();
    QCOMPARE(commands(), QStringList({u"Paste"_s, u"Select all"_s}));
    press(u"Paste"_s);
    QCOMPARE(m_field->text(), u"one two"_s);
}

void AccessTextMenu::selectAllBringsTheMenuForWhatIsSelected()
{
    showMenu();
    QCOMPARE(commands(), QStringList{u"Select all"_s});
    press(u"Select all"_s);
    QCOMPARE(m_field->selectedText(), u"one two"_s);
    QCOMPARE(commands(), QStringList({u"Cut"_s, u"Copy"_s}));
}

void AccessTextMenu::theArrowsAreTold()
{
    m_field->setSelection(0, 3);
    showMenu();
    AccessEvents events;
    key(Qt::Key_Right);
    QCOMPARE(events.take(), QStringList{u"Focus Cut"_s});
    key(Qt::Key_Right);
    QCOMPARE(events.take(), QStringList{u"Focus Copy"_s});
    const QAccessibleInterface *copy = interfaceOf(m_field->menu())->child(1);
    QVERIFY(copy->state().focused);
    QVERIFY(!interfaceOf(m_field->menu())->child(0)->state().focused);
    QCOMPARE(interfaceOf(m_window.get())->focusChild(), copy);
}

void AccessTextMenu::theFocusGoesBackToTheField()
{
    m_field->setSelection(0, 3);
    showMenu();
    key(Qt::Key_Right);
    AccessEvents events;
    key(Qt::Key_Escape);
    QVERIFY(m_field->menu() == nullptr);
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"ObjectHide "_s) && told.contains(u"Focus Filter"_s),
             qPrintable(told.join(u'\n')));
    QCOMPARE(interfaceOf(m_window.get())->focusChild(), interfaceOf(m_field));
}

// A reader may hold on to what has gone from the screen but not yet from memory.
void AccessTextMenu::nothingIsPressedOnAMenuThatClosed()
{
    m_field->setSelection(0, 3);
    showMenu();
    QAccessibleInterface *cut = interfaceOf(m_field->menu())->child(0);
    const QAccessible::Id id = QAccessible::uniqueId(cut);
    key(Qt::Key_Escape);
    cut->actionInterface()->doAction(Actions::pressAction());
    QCOMPARE(m_field->text(), u"one two"_s);
    QTRY_VERIFY(QAccessible::accessibleInterface(id) == nullptr);
}

int main(int argc, char **argv)
{
    letAssistiveTechnologyListen();
    qunsetenv("KESTREL_PROFILE");
    QApplication application(argc, argv);
    AccessTextMenu test;
    return QTest::qExec(&test, argc, argv);
}

#include "access_textmenu.moc"
