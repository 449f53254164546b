// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/trackerinterface.h"
#include "fileops/editmanager.h"
#include "fileopsfixture.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"
#include "support/driventimer.h"
#include "support/loglines.h"

#include <QMetaMethod>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::Sheet;
using toolkit::TextEdit;

// A video gets another title, in a sheet with one field.
class TestEditManager : public QObject
{
    Q_OBJECT

public:
    explicit TestEditManager(FileOpsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void signalsAndSlotsStandInTheirOrder();
    void theSheetAsItIsShown();
    void theHeadingStandsWhereItsTextBegins();
    void saveWritesTheTitle_data();
    void saveWritesTheTitle();
    void whatIsBeingComposedIsSaved_data();
    void whatIsBeingComposedIsSaved();
    void cancelWritesNothing_data();
    void cancelWritesNothing();
    void anUnchangedTitleIsNotWritten_data();
    void anUnchangedTitleIsNotWritten();
    void everyTitleIsWrittenAsItWasTyped_data();
    void everyTitleIsWrittenAsItWasTyped();
    void blanksDisableSave();
    void returnOverBlanksWritesNothing();
    void theMarkOutlivesTheSheetBy1200ms_data();
    void theMarkOutlivesTheSheetBy1200ms();
    void theMarkOfTheTimeBeforeDoesNotEndThisOne();
    void closedFromOutside();
    void closedBeforeTheTitleIsThere();
    void aStaleTitleIsIgnored();
    void aFailedLookupOnlyLogs();
    void withoutAWindow();
    void itsWindowGoes();
    void theSaveIsTheOwnersBeforeThePageIsFree();

private:
    Sheet *open(EditManager &manager, const QString &title = u"Birthday"_s)
    {
        f.store.answerWith({{title, u"clip.mp4"_s}});
        manager.showEditSheet(u"urn:uuid:7"_s);
        Sheet *sheet = nullptr;
        (void)QTest::qWaitFor([&] { return (sheet = f.popup<Sheet>()) != nullptr; });
        return sheet;
    }
    template <typename Kind> static Kind *partOf(const QGraphicsItem *item)
    {
        for (QGraphicsItem *child : item->childItems()) {
            if (auto *found = qobject_cast<Kind *>(child->toGraphicsObject()))
                return found;
        }
        return nullptr;
    }
    static TextEdit *field(const Sheet *sheet) { return partOf<TextEdit>(sheet->centralWidget()); }
    static QVariant actionKey(const TextEdit *edit, const QString &attribute)
    {
        return edit->inputMethodAttribute(u"/keys"_s, u"actionKey"_s, attribute);
    }
    QStringList written() const { return f.store.texts(SparqlQuery::UpdateStatement); }
    static QTimer *clock(const EditManager &manager)
    {
        return manager.findChild<QTimer *>(u"displayedTimer"_s);
    }

    FileOpsFixture &f;
    QObject m_owner;
};

void TestEditManager::init()
{
    f.store.clear();
    QVERIFY(f.show());
}

void TestEditManager::cleanup()
{
    f.hide();
}

void TestEditManager::signalsAndSlotsStandInTheirOrder()
{
    QStringList members;
    const QMetaObject &meta = EditManager::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        members.append(QString::fromLatin1(meta.method(i).methodSignature()));
    QCOMPARE(members,
             (QStringList{u"editDone()"_s, u"sheetRejected()"_s, u"sheetAccepted()"_s,
                          u"titleReady(QString,int)"_s, u"editDisplayedTimeout()"_s, u"textChanged()"_s}));
}

void TestEditManager::theSheetAsItIsShown()
{
    EditManager manager(&m_owner);
    QVERIFY(!manager.isSheetDisplayed());
    const Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QVERIFY(manager.isSheetDisplayed());
    QCOMPARE(sheet->styleName(), u"Inverted"_s);
    QCOMPARE(sheet->header()->styleName(), u"Inverted"_s);
    QCOMPARE(sheet->header()->negativeButton()->text(), qtTrId("qtn_comm_cancel"));
    QCOMPARE(sheet->header()->positiveButton()->text(), qtTrId("qtn_comm_save"));
    QVERIFY(sheet->header()->positiveButton()->isEnabled());
    const auto *heading = partOf<toolkit::Label>(sheet->centralWidget());
    QCOMPARE(heading->text(), qtTrId("qtn_vide_rename_title"));
    QCOMPARE(heading->styleName(), u"CommonHeaderInverted"_s);
    const TextEdit *edit = field(sheet);
    QCOMPARE(edit->text(), u"Birthday"_s);
    QCOMPARE(edit->styleName(), u"VideoSheetTextEditInverted"_s);
    QCOMPARE(sheet->accessibleName(), qtTrId("qtn_vide_rename_title"));
    QCOMPARE(edit->accessibleName(), qtTrId("qtn_vide_access_title"));
    QVERIFY(edit->hasFocus());
    QVERIFY(heading->geometry().bottom() <= edit->geometry().top());
    QCOMPARE(actionKey(edit, u"label"_s), QVariant(qtTrId("qtn_comm_save")));
    QCOMPARE(actionKey(edit, u"highlighted"_s), QVariant(true));
    QCOMPARE(actionKey(edit, u"enabled"_s), QVariant(true));
}

void TestEditManager::theHeadingStandsWhereItsTextBegins()
{
    EditManager manager(&m_owner);
    const Sheet *sheet = open(manager);
    QVERIFY(sheet);
    const auto *heading = partOf<toolkit::Label>(sheet->centralWidget());
    QCOMPARE(heading->alignment() & Qt::AlignHorizontal_Mask, Qt::AlignLeft | Qt::AlignAbsolute);
}

void TestEditManager::saveWritesTheTitle_data()
{
    QTest::addColumn<bool>("byReturn");
    QTest::newRow("save") << false;
    QTest::newRow("return") << true;
}

void TestEditManager::saveWritesTheTitle()
{
    QFETCH(bool, byReturn);
    EditManager manager(&m_owner);
    QSignalSpy done(&manager, &EditManager::editDone);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QTest::keyClicks(f.window.get(), u" party"_s);
    if (byReturn)
        QTest::keyClick(f.window.get(), Qt::Key_Return);
    else
        sheet->header()->positiveButton()->click();
    QCOMPARE(written().size(), 1);
    QVERIFY2(written().first().contains(u"<urn:uuid:7>"_s), qPrintable(written().first()));
    QVERIFY2(written().first().contains(u"\"Birthday party\""_s), qPrintable(written().first()));
    QVERIFY(written().first().contains(u"nie:title"_s));
    QCOMPARE(done.size(), 1);
    QVERIFY(!sheet->isDisplayed());
}

void TestEditManager::whatIsBeingComposedIsSaved_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"finger", "keyboard", "from outside"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

// Japanese is typed letter by letter before it is chosen; Save may come first.
void TestEditManager::whatIsBeingComposedIsSaved()
{
    QFETCH(QString, way);
    EditManager manager(&m_owner);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QTRY_VERIFY(sheet->isOpen());
    QInputMethodEvent composing(u"\u305F\u3093"_s, {});
    QCoreApplication::sendEvent(f.window.get(), &composing);
    QVERIFY(!field(sheet)->text().contains(u'\u305F'));
    toolkit::Button *save = sheet->header()->positiveButton();
    if (way == u"finger"_s)
        QTest::mouseClick(f.window->viewport(), Qt::LeftButton, {},
                          f.window->viewportTransform().map(save->sceneBoundingRect().center()).toPoint());
    else if (way == u"keyboard"_s)
        save->click();
    else
        sheet->accept();
    QCOMPARE(written().size(), 1);
    QVERIFY2(written().first().contains(u"\"Birthday\u305F\u3093\""_s), qPrintable(written().first()));
}

void TestEditManager::cancelWritesNothing_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("cancel") << 0;
    QTest::newRow("escape") << int(Qt::Key_Escape);
    QTest::newRow("back") << int(Qt::Key_Back);
}

void TestEditManager::cancelWritesNothing()
{
    QFETCH(int, key);
    EditManager manager(&m_owner);
    QSignalSpy done(&manager, &EditManager::editDone);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QTest::keyClicks(f.window.get(), u" party"_s);
    if (key == 0)
        sheet->header()->negativeButton()->click();
    else
        QTest::keyClick(f.window.get(), Qt::Key(key));
    QVERIFY(written().isEmpty());
    QCOMPARE(done.size(), 1);
    QVERIFY(!sheet->isDisplayed());
    QVERIFY(f.window->isVisible());
}

void TestEditManager::anUnchangedTitleIsNotWritten_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("plain") << u"Birthday"_s;
    QTest::newRow("of two lines, which the field shows in one") << u"Birth\nday"_s;
    QTest::newRow("with a null") << u"Birth"_s + QChar(u'\0') + u"day"_s;
    QTest::newRow("of 10,000 characters") << QString(10000, u'x');
    QTest::newRow("with blanks around it") << u"  Birthday "_s;
}

void TestEditManager::anUnchangedTitleIsNotWritten()
{
    QFETCH(QString, title);
    EditManager manager(&m_owner);
    QSignalSpy done(&manager, &EditManager::editDone);
    Sheet *sheet = open(manager, title);
    QVERIFY(sheet);
    sheet->header()->positiveButton()->click();
    QVERIFY(written().isEmpty());
    QCOMPARE(done.size(), 1);
}

void TestEditManager::everyTitleIsWrittenAsItWasTyped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("literal");
    const auto same
        = [](const char *name, const QString &title) { QTest::newRow(name) << title << u'"' + title + u'"'; };
    same("a leading blank", u" party"_s);
    same("mark-up", u"<b>party</b> &amp; co"_s);
    same("10,000 characters", QString(10000, u'x'));
    same("emoji", u"\U0001F382"_s);
    same("combining marks", u"e\u0301\u0302"_s);
    same("both directions", u"abc \u05D0\u05D1 def"_s);
    QTest::newRow("quotes and a backslash") << u"a\"b\\c"_s << u"\"a\\\"b\\\\c\""_s;
    QTest::newRow("what closes a statement") << u"x\" } ; DELETE"_s << u"\"x\\\" } ; DELETE\""_s;
}

void TestEditManager::everyTitleIsWrittenAsItWasTyped()
{
    QFETCH(QString, typed);
    QFETCH(QString, literal);
    EditManager manager(&m_owner);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    field(sheet)->setText(typed);
    sheet->header()->positiveButton()->click();
    QCOMPARE(written().size(), 1);
    QVERIFY2(written().first().contains(literal), qPrintable(written().first()));
}

void TestEditManager::blanksDisableSave()
{
    EditManager manager(&m_owner);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    TextEdit *edit = field(sheet);
    for (const QString &text : {u"   "_s, QString(), u"\u00A0\u2003"_s}) {
        edit->setText(u"a"_s);
        QVERIFY(sheet->header()->positiveButton()->isEnabled());
        QCOMPARE(actionKey(edit, u"enabled"_s), QVariant(true));
        edit->setText(text);
        QVERIFY(!sheet->header()->positiveButton()->isEnabled());
        QCOMPARE(actionKey(edit, u"enabled"_s), QVariant(false));
    }
    sheet->reject();
    QVERIFY(open(manager));
    QVERIFY(sheet->header()->positiveButton()->isEnabled());
}

void TestEditManager::returnOverBlanksWritesNothing()
{
    EditManager manager(&m_owner);
    QSignalSpy done(&manager, &EditManager::editDone);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    field(sheet)->setText(u"   "_s);
    QTest::keyClick(f.window.get(), Qt::Key_Return);
    QVERIFY(written().isEmpty());
    QCOMPARE(done.size(), 1);
}

void TestEditManager::theMarkOutlivesTheSheetBy1200ms_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"save", "cancel", "outside"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void TestEditManager::theMarkOutlivesTheSheetBy1200ms()
{
    QFETCH(QString, way);
    EditManager manager(&m_owner);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QVERIFY(!clock(manager)->isActive());
    if (way == "save"_L1)
        sheet->accept();
    else if (way == "cancel"_L1)
        sheet->reject();
    else
        manager.closeSheet();
    QVERIFY(!sheet->isDisplayed());
    QVERIFY(manager.isSheetDisplayed());
    QCOMPARE(clock(manager)->interval(), 1200);
    QVERIFY(runOut(clock(manager)));
    QVERIFY(!manager.isSheetDisplayed());
}

void TestEditManager::theMarkOfTheTimeBeforeDoesNotEndThisOne()
{
    EditManager manager(&m_owner);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    sheet->reject();
    QVERIFY(open(manager));
    QVERIFY(!clock(manager)->isActive());
    QVERIFY(manager.isSheetDisplayed());
}

void TestEditManager::closedFromOutside()
{
    EditManager manager(&m_owner);
    QSignalSpy done(&manager, &EditManager::editDone);
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QTest::keyClicks(f.window.get(), u" party"_s);
    manager.closeSheet();
    QVERIFY(!sheet->isDisplayed());
    QVERIFY(written().isEmpty());
    QCOMPARE(done.size(), 0);
}

void TestEditManager::closedBeforeTheTitleIsThere()
{
    EditManager manager(&m_owner);
    f.store.answer(FakeSparqlAnswer::later());
    manager.showEditSheet(u"urn:uuid:7"_s);
    manager.closeSheet();
    f.store.finish(f.lastStatement(), {{u"Birthday"_s, u"clip.mp4"_s}});
    QVERIFY(!f.popup<Sheet>());
    QVERIFY(!manager.isSheetDisplayed());
}

void TestEditManager::aStaleTitleIsIgnored()
{
    EditManager manager(&m_owner);
    f.store.answer(FakeSparqlAnswer::later());
    manager.showEditSheet(u"urn:uuid:7"_s);
    const int first = f.lastStatement();
    manager.showEditSheet(u"urn:uuid:8"_s);
    const int second = f.lastStatement();
    manager.titleReady(u"Nobody asked"_s, 0);
    manager.titleReady(u"Nobody asked"_s, 1 << 20);
    f.store.finish(first, {{u"Seven"_s, u"clip.mp4"_s}});
    QVERIFY(!f.popup<Sheet>());
    f.store.finish(second, {{u"Eight"_s, u"clip.mp4"_s}});
    QVERIFY(f.popup<Sheet>());
    QCOMPARE(field(f.popup<Sheet>())->text(), u"Eight"_s);
}

void TestEditManager::aFailedLookupOnlyLogs()
{
    EditManager manager(&m_owner);
    f.store.answer(FakeSparqlAnswer::null());
    LogLines log("kestrel.fileops");
    manager.showEditSheet(u"urn:uuid:7"_s);
    QCOMPARE(log.all(),
             QStringList{u"void EditManager::showEditSheet(const QString&) Tracker query failed"_s});
    QVERIFY(!manager.isSheetDisplayed());
}

void TestEditManager::withoutAWindow()
{
    EditManager manager(&m_owner);
    f.hide();
    f.store.answerWith({{u"Birthday"_s, u"clip.mp4"_s}});
    LogLines log("kestrel.fileops");
    manager.showEditSheet(u"urn:uuid:7"_s);
    QTRY_COMPARE(log.all(), QStringList{u"Kestrel: Unable to get active window."_s});
    QVERIFY(runOut(clock(manager)));
    QVERIFY(!manager.isSheetDisplayed());
}

void TestEditManager::itsWindowGoes()
{
    EditManager manager(&m_owner);
    QVERIFY(open(manager));
    f.hide();
    QTRY_VERIFY(clock(manager)->isActive());
    QVERIFY(runOut(clock(manager)));
    QVERIFY(!manager.isSheetDisplayed());
    QVERIFY(written().isEmpty());
}

void TestEditManager::theSaveIsTheOwnersBeforeThePageIsFree()
{
    EditManager manager(&m_owner);
    bool blocked = false;
    connect(&manager, &EditManager::editDone, this, [&] { blocked = f.window->sceneManager()->isBlocked(); });
    Sheet *sheet = open(manager);
    QVERIFY(sheet);
    QTest::keyClick(f.window.get(), Qt::Key_Return);
    QVERIFY(blocked);
    QTRY_VERIFY(!f.window->sceneManager()->isBlocked());
}

KESTREL_FILEOPS_TEST_MAIN(TestEditManager)
#include "tst_editmanager.moc"
