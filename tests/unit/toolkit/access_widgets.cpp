// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessevents.h"
#include "core_support.h"
#include "platform/toolkit/accessiblevalue.h"
#include "platform/toolkit/action.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using namespace toolkit;
using Actions = QAccessibleActionInterface;

namespace {

// A page of a title, a field, two buttons, a text with mark-up, a picture and what is not to be told.
class Page : public ApplicationPage
{
public:
    explicit Page(const QString &title)
    {
        setTitle(title);
        auto *policy = new LinearLayoutPolicy(new Layout(centralWidget()), Qt::Vertical);
        policy->addItem(field = new TextEdit);
        field->setPrompt(u"Filter"_s);
        policy->addItem(button = new Button(u"Play"_s));
        policy->addItem(icon = new IconButton(u"icon-m-input-clear"_s));
        icon->setAccessibleName(u"Clear"_s);
        policy->addItem(label = new Label(u"<style>b{color:red}</style>Tom &amp; <b>Jerry</b>"_s));
        policy->addItem(picture = new ImageWidget);
        policy->addItem(hidden = new Label(u"hidden"_s));
        hidden->hide();
    }

    TextEdit *field;
    Button *button;
    IconButton *icon;
    Label *label;
    ImageWidget *picture;
    Label *hidden;
};

// From 0 to 10 in steps of 2.
class Level : public Widget, public ValueControl
{
public:
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::Slider; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override
    {
        return new AccessibleValue(this, this);
    }
    [[nodiscard]] qreal currentValue() const override { return m_value; }
    [[nodiscard]] qreal maximumValue() const override { return 10; }
    [[nodiscard]] qreal valueStep() const override { return 2; }
    [[nodiscard]] QString valueText() const override { return u"level %1"_s.arg(m_value); }
    void changeValue(qreal value) override
    {
        m_value = value;
        AccessibleValue::valueChanged(this, value);
    }

private:
    qreal m_value = 4;
};

void act(QObject *object, const QString &action)
{
    access(object)->actionInterface()->doAction(action);
}

} // namespace

class AccessWidgets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void theTreeIsWhatAPersonSees();
    void everythingIsFoundAgain();
    void buttonsArePressed();
    void anotherPageIsTold();
    void theBackMarkIsAButton();
    void aBannerIsAnAlert();
    void aSheetIsADialog();
    void aMenuHasItsRows();
    void aQuestionIsADialog();
    void theFocusIsTold();
    void aTextChangesAndIsTold();
    void theFieldIsRead();
    void theFieldIsEditedAsByTheUser();
    void charactersHavePlaces();
    void aValueIsReadAndSet();
    void namesThatChangeAreTold();
    void whatIsDisabledIsTold();
    void whatIsBlockedTakesNoAction();
    void interfacesEndWithTheirWidgets();

private:
    Locale m_locale;
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<Page> m_page;
};

void AccessWidgets::initTestCase()
{
    QTRY_VERIFY(QAccessible::isActive());
    setReducedMotion(true);
    m_locale.installTrCatalog(u"music"_s);
    Locale::setDefault(&m_locale);
}

void AccessWidgets::cleanupTestCase()
{
    Locale::setDefault(nullptr);
}

void AccessWidgets::init()
{
    m_window = shownWindow(ApplicationWindow::Profile::Desktop);
    m_page = std::make_unique<Page>(u"Videos"_s);
    m_page->appear(m_window.get(), Appearance::Immediate);
    QCoreApplication::processEvents();
}

void AccessWidgets::cleanup()
{
    m_page.reset();
    m_window.reset();
}

void AccessWidgets::theTreeIsWhatAPersonSees()
{
    QCOMPARE(accessTree(access(m_window.get())),
             u"Window Videos\n"
             u"  Pane Videos\n"
             u"    Heading Videos\n"
             u"    EditableText Filter\n"
             u"    Button Play\n"
             u"    Button Clear\n"
             u"    StaticText Tom & Jerry\n"_s);
    m_page->hidden->show();
    m_page->picture->setAccessibleName(u"A cat"_s);
    m_page->button->hide();
    QCoreApplication::processEvents();
    QCOMPARE(accessTree(access(m_window.get())),
             u"Window Videos\n"
             u"  Pane Videos\n"
             u"    Heading Videos\n"
             u"    EditableText Filter\n"
             u"    Button Clear\n"
             u"    StaticText Tom & Jerry\n"
             u"    Graphic A cat\n"
             u"    StaticText hidden\n"_s);
}

void AccessWidgets::everythingIsFoundAgain()
{
    QAccessibleInterface *window = access(m_window.get());
    QAccessibleInterface *page = window->child(0);
    QCOMPARE(window->indexOfChild(page), 0);
    for (int index = 0; index < page->childCount(); ++index) {
        QAccessibleInterface *part = page->child(index);
        QCOMPARE(page->indexOfChild(part), index);
        QCOMPARE(part->parent(), page);
        QCOMPARE(part->window(), m_window->windowHandle());
        const QPoint middle = part->rect().center();
        QCOMPARE(window->childAt(middle.x(), middle.y()), part);
    }
    QCOMPARE(page->parent(), window);
    const QRect button = access(m_page->button)->rect();
    const QPoint corner = m_window->viewport()->mapToGlobal(
        m_window->mapFromScene(m_page->button->mapToScene(QPointF(0, 0))));
    QCOMPARE(button.topLeft(), corner);
}

void AccessWidgets::buttonsArePressed()
{
    QSignalSpy clicked(m_page->button, &Button::clicked);
    QCOMPARE(access(m_page->button)->actionInterface()->actionNames(),
             QStringList({Actions::pressAction(), Actions::setFocusAction()}));
    act(m_page->button, Actions::pressAction());
    QCOMPARE(clicked.count(), 1);
    m_page->button->setEnabled(false);
    QVERIFY(access(m_page->button)->state().disabled);
    act(m_page->button, Actions::pressAction());
    QCOMPARE(clicked.count(), 1);
}

void AccessWidgets::anotherPageIsTold()
{
    AccessEvents events;
    Page second(u"Details"_s);
    QVERIFY(access(m_window.get()) != nullptr);
    second.appear(m_window.get(), Appearance::Immediate);
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"ObjectShow Details"_s), qPrintable(told.join(u'\n')));
    QVERIFY(told.contains(u"ObjectHide Videos"_s));
    QVERIFY(told.contains(u"ObjectReorder Details"_s));
    QCOMPARE(access(m_window.get())->text(QAccessible::Name), u"Details"_s);
    QCOMPARE(access(m_window.get())->childCount(), 1);
}

void AccessWidgets::theBackMarkIsAButton()
{
    Page second(u"Details"_s);
    second.setEscapeMode(ApplicationPage::EscapeMode::Back);
    second.appear(m_window.get(), Appearance::Immediate);
    QSignalSpy back(&second, &ApplicationPage::backButtonClicked);
    QAccessibleInterface *heading = access(&second)->child(0);
    QCOMPARE(accessTree(heading), u"Heading Details\n  Button Back\n"_s);
    QAccessibleInterface *button = heading->child(0);
    QCOMPARE(heading->indexOfChild(button), 0);
    QCOMPARE(button->parent(), heading);
    QVERIFY(heading->rect().contains(button->rect()));
    button->actionInterface()->doAction(Actions::pressAction());
    QCOMPARE(back.count(), 1);
}

void AccessWidgets::aBannerIsAnAlert()
{
    AccessEvents events;
    auto *banner = new Banner;
    banner->setTitle(u"The <i>video</i> cannot be played."_s);
    banner->appear(m_window.get());
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"Alert The <i>video</i> cannot be played."_s), qPrintable(told.join(u'\n')));
    QCOMPARE(access(banner)->role(), QAccessible::AlertMessage);
    QSignalSpy dismissed(banner, &Banner::dismissed);
    act(banner, Actions::pressAction());
    QCOMPARE(dismissed.count(), 1);
}

void AccessWidgets::aSheetIsADialog()
{
    AccessEvents events;
    Sheet sheet;
    sheet.setTitle(u"Rename"_s);
    sheet.setPositiveAction(u"Save"_s);
    sheet.setNegativeAction(u"Cancel"_s);
    sheet.setCentralWidget(new TextEdit);
    sheet.appear(m_window.get());
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"DialogStart Rename"_s), qPrintable(told.join(u'\n')));
    const QAccessibleInterface *dialog = access(&sheet);
    QVERIFY(dialog->state().modal);
    QCOMPARE(access(m_window.get())->child(1), dialog);
    // The page's own button takes nothing meanwhile, the sheet's do.
    QSignalSpy clicked(m_page->button, &Button::clicked);
    QSignalSpy rejected(&sheet, &Sheet::rejected);
    act(m_page->button, Actions::pressAction());
    QCOMPARE(clicked.count(), 0);
    act(sheet.header()->negativeButton(), Actions::pressAction());
    QCOMPARE(rejected.count(), 1);
}

void AccessWidgets::aMenuHasItsRows()
{
    Action share;
    share.setText(u"Share"_s);
    Action remove;
    remove.setText(u"Delete"_s);
    remove.setEnabled(false);
    ObjectMenu menu;
    menu.addAction(&share);
    menu.addAction(&remove);
    AccessEvents events;
    menu.appear(m_window.get());
    QTRY_COMPARE(menu.state(), ObjectMenu::State::Shown);
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"PopupMenuStart "_s), qPrintable(told.join(u'\n')));
    QAccessibleInterface *shown = access(&menu);
    QCOMPARE(shown->role(), QAccessible::PopupMenu);
    QCOMPARE(shown->childCount(), 2);
    QCOMPARE(shown->child(0)->role(), QAccessible::MenuItem);
    QCOMPARE(shown->child(0)->text(QAccessible::Name), u"Share"_s);
    QVERIFY(!shown->child(0)->state().disabled);
    QVERIFY(shown->child(1)->state().disabled);
    QVERIFY(shown->child(0)->rect().isValid());
    QVERIFY(!shown->child(0)->rect().intersects(shown->child(1)->rect()));
    menu.setCurrentEntry(0);
    QCOMPARE(shown->focusChild(), shown->child(0));
    QSignalSpy shared(&share, &QAction::triggered);
    QSignalSpy removed(&remove, &QAction::triggered);
    shown->child(1)->actionInterface()->doAction(Actions::pressAction());
    QCOMPARE(removed.count(), 0);
    shown->child(0)->actionInterface()->doAction(Actions::pressAction());
    QTRY_COMPARE(shared.count(), 1);
}

void AccessWidgets::aQuestionIsADialog()
{
    AccessEvents events;
    QueryDialog question;
    question.setTitle(u"Delete?"_s);
    question.setText(u"Tom &amp; Jerry"_s);
    question.appear(m_window.get());
    const QStringList told = events.take();
    QVERIFY2(told.contains(u"DialogStart Delete?"_s), qPrintable(told.join(u'\n')));
    QSignalSpy accepted(&question, &QueryDialog::accepted);
    act(question.button(QueryDialog::Yes), Actions::pressAction());
    QCOMPARE(accepted.count(), 1);
}

void AccessWidgets::theFocusIsTold()
{
    AccessEvents events;
    act(m_page->field, Actions::setFocusAction());
    QVERIFY(m_page->field->hasFocus());
    QVERIFY(events.take().contains(u"Focus Filter"_s));
    QVERIFY(access(m_page->field)->state().focused);
    QCOMPARE(access(m_window.get())->focusChild(), access(m_page->field));
    m_page->button->setFocus(Qt::TabFocusReason);
    QVERIFY(events.take().contains(u"Focus Play"_s));
    QCOMPARE(access(m_window.get())->focusChild(), access(m_page->button));
}

void AccessWidgets::aTextChangesAndIsTold()
{
    AccessEvents events;
    QVERIFY(access(m_page->field) != nullptr);
    m_page->field->setFocus(Qt::OtherFocusReason);
    events.take();
    QTest::keyClicks(m_window->viewport(), u"ab"_s);
    QCOMPARE(events.take(),
             QStringList({u"TextInserted Filter +a"_s, u"TextCaretMoved Filter @1"_s,
                          u"TextInserted Filter +b"_s, u"TextCaretMoved Filter @2"_s}));
    m_page->field->setText(u"xb"_s);
    QCOMPARE(events.take(), QStringList({u"TextRemoved Filter -a"_s, u"TextInserted Filter +x"_s}));
    QTest::keyClick(m_window->viewport(), Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(events.take(), QStringList({u"TextCaretMoved Filter @1"_s, u"TextSelectionChanged Filter"_s}));
}

void AccessWidgets::theFieldIsRead()
{
    QAccessibleInterface *field = access(m_page->field);
    QVERIFY(field->state().editable);
    QCOMPARE(field->text(QAccessible::Name), u"Filter"_s);
    m_page->field->setText(u"two words"_s);
    QCOMPARE(field->text(QAccessible::Value), u"two words"_s);
    QAccessibleTextInterface *text = field->textInterface();
    QCOMPARE(text->characterCount(), 9);
    QCOMPARE(text->cursorPosition(), 9);
    QCOMPARE(text->text(4, 9), u"words"_s);
    QCOMPARE(text->text(4, 90), u"words"_s);
    QCOMPARE(text->text(7, 2), QString());
    int start = 0;
    int end = 0;
    QCOMPARE(text->textAtOffset(5, QAccessible::WordBoundary, &start, &end), u"words"_s);
    QCOMPARE(text->selectionCount(), 0);
    text->addSelection(0, 3);
    QCOMPARE(text->selectionCount(), 1);
    text->selection(0, &start, &end);
    QCOMPARE(QPoint(start, end), QPoint(0, 3));
    QCOMPARE(m_page->field->selectedText(), u"two"_s);
    text->removeSelection(0);
    QCOMPARE(text->selectionCount(), 0);
}

void AccessWidgets::theFieldIsEditedAsByTheUser()
{
    QStringList edits;
    connect(m_page->field, &TextEdit::textChanged, this, [this, &edits] {
        edits.append(m_page->field->text() + (m_page->field->isUserEdit() ? u" by the user"_s : QString()));
    });
    QAccessibleEditableTextInterface *text = access(m_page->field)->editableTextInterface();
    text->insertText(0, u"bird"_s);
    text->replaceText(0, 1, u"th"_s);
    text->deleteText(2, 99);
    text->insertText(-5, u"o\n"_s);
    QCOMPARE(edits,
             QStringList({u"bird by the user"_s, u"third by the user"_s, u"th by the user"_s,
                          u"o th by the user"_s}));
}

void AccessWidgets::charactersHavePlaces()
{
    m_page->field->setText(u"abc"_s);
    QAccessibleTextInterface *text = access(m_page->field)->textInterface();
    const QRect b = text->characterRect(1);
    QVERIFY(access(m_page->field)->rect().contains(b));
    QVERIFY(text->characterRect(0).left() < b.left() && b.left() < text->characterRect(2).left());
    QCOMPARE(text->offsetAtPoint({b.left() + 1, b.center().y()}), 1);
    QCOMPARE(text->offsetAtPoint({-1, -1}), -1);
    QVERIFY(text->characterRect(17).isNull());
}

void AccessWidgets::aValueIsReadAndSet()
{
    Level level;
    level.setParentItem(m_page.get());
    level.setAccessibleName(u"Volume"_s);
    AccessEvents events;
    QAccessibleInterface *slider = access(&level);
    QCOMPARE(slider->text(QAccessible::Value), u"level 4"_s);
    QCOMPARE(slider->text(QAccessible::Description), u"level 4"_s);
    QAccessibleValueInterface *value = slider->valueInterface();
    QCOMPARE(value->minimumStepSize().toInt(), 2);
    QCOMPARE(value->maximumValue().toInt(), 10);
    value->setCurrentValue(7);
    act(&level, Actions::increaseAction());
    act(&level, Actions::increaseAction()); // 11 is too many
    act(&level, Actions::decreaseAction());
    QCOMPARE(events.take(),
             QStringList({u"ValueChanged Volume 7"_s, u"ValueChanged Volume 9"_s, u"ValueChanged Volume 10"_s,
                          u"ValueChanged Volume 8"_s}));
    value->setCurrentValue(u"loud"_s);
    value->setCurrentValue(qQNaN());
    QCOMPARE(level.currentValue(), 8);
}

void AccessWidgets::namesThatChangeAreTold()
{
    AccessEvents events;
    QVERIFY(access(m_page->button) != nullptr && access(m_page->label) != nullptr);
    events.take();
    m_page->button->setText(u"Pause"_s);
    m_page->label->setText(u"3 videos"_s);
    QCOMPARE(events.take(), QStringList({u"NameChanged Pause"_s, u"NameChanged 3 videos"_s}));
}

// A reader keeps what it knows of a button until it is told.
void AccessWidgets::whatIsDisabledIsTold()
{
    AccessEvents events;
    m_page->button->setEnabled(false);
    QCOMPARE(events.take(), QStringList{u"StateChanged Play"_s});
    QVERIFY(access(m_page->button)->state().disabled);
    m_page->button->setEnabled(false);
    QCOMPARE(events.take(), QStringList());
    m_page->button->setEnabled(true);
    QCOMPARE(events.take(), QStringList{u"StateChanged Play"_s});
    QVERIFY(!access(m_page->button)->state().disabled);
}

void AccessWidgets::whatIsBlockedTakesNoAction()
{
    QSignalSpy clicked(m_page->button, &Button::clicked);
    m_window->sceneManager()->block();
    act(m_page->button, Actions::pressAction());
    access(m_page->field)->editableTextInterface()->insertText(0, u"x"_s);
    m_window->sceneManager()->unblock();
    QCOMPARE(clicked.count(), 0);
    QCOMPARE(m_page->field->text(), QString());
    act(m_page->button, Actions::pressAction());
    QCOMPARE(clicked.count(), 1);
}

void AccessWidgets::interfacesEndWithTheirWidgets()
{
    const QAccessible::Id window = QAccessible::uniqueId(access(m_window.get()));
    const QAccessible::Id button = QAccessible::uniqueId(access(m_page->button));
    m_page.reset();
    QVERIFY(QAccessible::accessibleInterface(button) == nullptr);
    QCOMPARE(accessTree(access(m_window.get())), u"Window Videos\n"_s);
    m_window.reset();
    QVERIFY(QAccessible::accessibleInterface(window) == nullptr);
}

int main(int argc, char **argv)
{
    letAssistiveTechnologyListen();
    qunsetenv("KESTREL_PROFILE");
    QApplication application(argc, argv);
    AccessWidgets test;
    return QTest::qExec(&test, argc, argv);
}

#include "access_widgets.moc"
