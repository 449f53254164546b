// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/lineeditor.h"
#include "widgets_texteditfixture.h"

#include <QClipboard>
#include <QInputMethodEvent>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::LineEditor;

class WidgetsTextEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void editorEditsOneLine();
    void editorMovesByCharacterWordAndLine();
    void editorUndoes();
    void typingChangesTheTextAndIsTheUsers();
    void settingTheTextIsNotTheUsers();
    void keysEditAndMove();
    void clipboard();
    void pastedLinesBecomeOne();
    void returnIsReportedAndChangesNothing();
    void focusIsReportedWithItsReason();
    void aKeyHandedOnTypesWithoutFocus();
    void anEmojiIsTyped();
    void commandsAreNotTyped();
    void inputMethodComposesAndCommits();
    void whatWasComposedStaysWhenTheFocusGoes();
    void inputMethodReplaces();
    void hintsAndActionKey();
    void correctionAndPredictionAreOneHint();
    void theActionKeyIsObserved();
    void enterKeyFollowsTheActionKey_data();
    void enterKeyFollowsTheActionKey();
    void oddTextsStayOneLine_data();
    void oddTextsStayOneLine();
    void theCursorStaysInSightInALongText();
    void thePointerPlacesTheCursorAndSelects();
    void rightToLeft();
};

void WidgetsTextEdit::editorEditsOneLine()
{
    LineEditor editor;
    QVERIFY(editor.insert(u"a\nb\tc\x01"_s));
    QCOMPARE(editor.text(), u"a b c"_s);
    QVERIFY(!editor.insert(QString()));
    editor.setCursor(1);
    QVERIFY(editor.insert(u"X"_s));
    QCOMPARE(editor.text(), u"aX b c"_s);
    QVERIFY(editor.removeBackward(LineEditor::Move::Character));
    QVERIFY(editor.removeForward(LineEditor::Move::Character));
    QCOMPARE(editor.text(), u"ab c"_s);
    editor.selectAll();
    QVERIFY(editor.insert(u"new"_s));
    QCOMPARE(editor.text(), u"new"_s);
    editor.setCursor(0);
    QVERIFY(!editor.removeBackward(LineEditor::Move::Character));
    editor.setCursor(99);
    QCOMPARE(editor.cursor(), 3);
    QVERIFY(!editor.removeForward(LineEditor::Move::Word));
    // One visible character may be several code units.
    editor.reset(u"a👨‍👩‍👧"_s);
    QVERIFY(editor.removeBackward(LineEditor::Move::Character));
    QCOMPARE(editor.text(), u"a"_s);
}

void WidgetsTextEdit::editorMovesByCharacterWordAndLine()
{
    LineEditor editor;
    editor.reset(u"one two three"_s);
    editor.move(-1, LineEditor::Move::Word, false);
    QCOMPARE(editor.cursor(), 8);
    editor.move(-1, LineEditor::Move::Word, true);
    QCOMPARE(editor.selectedText(), u"two "_s);
    editor.move(-1, LineEditor::Move::Character, false);
    QCOMPARE(editor.cursor(), 4);
    editor.move(1, LineEditor::Move::Word, false);
    QCOMPARE(editor.cursor(), 8);
    editor.move(1, LineEditor::Move::Line, true);
    QCOMPARE(editor.selectedText(), u"three"_s);
    editor.selectWordAt(5);
    QCOMPARE(editor.selectedText(), u"two"_s);
    editor.move(-1, LineEditor::Move::Line, false);
    QCOMPARE(editor.cursor(), 0);
}

void WidgetsTextEdit::editorUndoes()
{
    LineEditor editor;
    for (QChar c : u"ab cd"_s)
        editor.insert(QString(c));
    editor.removeBackward(LineEditor::Move::Character);
    QVERIFY(editor.undo());
    QCOMPARE(editor.text(), u"ab cd"_s);
    QVERIFY(editor.undo());
    QCOMPARE(editor.text(), u"ab "_s); // typing is undone a word at a time
    QVERIFY(editor.undo());
    QCOMPARE(editor.text(), QString());
    QVERIFY(!editor.undo());
    QVERIFY(editor.redo());
    QCOMPARE(editor.text(), u"ab "_s);
    editor.insert(u"x"_s);
    QVERIFY(!editor.redo());
}

void WidgetsTextEdit::typingChangesTheTextAndIsTheUsers()
{
    Field f;
    f.edit->setFocus();
    QSignalSpy changed(f.edit, &TextEdit::textChanged);
    QList<bool> users;
    connect(f.edit, &TextEdit::textChanged, f.edit, [&] { users.append(f.edit->isUserEdit()); });
    f.type(u"con"_s);
    QCOMPARE(f.edit->text(), u"con"_s);
    QCOMPARE(changed.count(), 3);
    QCOMPARE(users, QList<bool>({true, true, true}));
    QVERIFY(!f.edit->isUserEdit());
}

void WidgetsTextEdit::settingTheTextIsNotTheUsers()
{
    Field f;
    QSignalSpy changed(f.edit, &TextEdit::textChanged);
    bool user = true;
    connect(f.edit, &TextEdit::textChanged, f.edit, [&] { user = f.edit->isUserEdit(); });
    f.edit->setText(u"abc"_s);
    QCOMPARE(changed.count(), 1);
    QVERIFY(!user);
    QCOMPARE(f.edit->cursorPosition(), 3);
    f.edit->setText(u"abc"_s);
    QCOMPARE(changed.count(), 1);
    f.edit->setText(QString());
    QCOMPARE(changed.count(), 2);
}

void WidgetsTextEdit::keysEditAndMove()
{
    Field f;
    f.edit->setFocus();
    f.edit->setText(u"one two"_s);
    f.key(Qt::Key_Left);
    f.key(Qt::Key_Backspace);
    QCOMPARE(f.edit->text(), u"one to"_s);
    f.key(Qt::Key_Home);
    f.key(Qt::Key_Delete);
    QCOMPARE(f.edit->text(), u"ne to"_s);
    f.key(Qt::Key_End, Qt::ShiftModifier);
    QCOMPARE(f.edit->selectedText(), u"ne to"_s);
    f.key(Qt::Key_Backspace);
    QCOMPARE(f.edit->text(), QString());
    f.key(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(f.edit->text(), u"ne to"_s);
    f.edit->setCursorPosition(5);
    f.key(Qt::Key_Backspace, Qt::ControlModifier);
    QCOMPARE(f.edit->text(), u"ne "_s);
    f.key(Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(f.edit->selectedText(), u"ne "_s);
}

void WidgetsTextEdit::clipboard()
{
    Field f;
    f.edit->setFocus();
    f.edit->setText(u"concert"_s);
    f.key(Qt::Key_C, Qt::ControlModifier); // nothing selected
    f.edit->selectAll();
    f.key(Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(f.edit->text(), QString());
    QCOMPARE(QGuiApplication::clipboard()->text(), u"concert"_s);
    f.key(Qt::Key_V, Qt::ControlModifier);
    f.key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(f.edit->text(), u"concertconcert"_s);
}

void WidgetsTextEdit::pastedLinesBecomeOne()
{
    Field f;
    f.edit->setFocus();
    QGuiApplication::clipboard()->setText(u"one\ntwo\r\nthree"_s);
    f.key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(f.edit->text(), u"one two  three"_s);
}

void WidgetsTextEdit::returnIsReportedAndChangesNothing()
{
    Field f;
    f.edit->setFocus();
    f.edit->setText(u"abc"_s);
    QSignalSpy returned(f.edit, &TextEdit::returnPressed);
    QSignalSpy changed(f.edit, &TextEdit::textChanged);
    f.key(Qt::Key_Return);
    f.key(Qt::Key_Enter);
    QCOMPARE(returned.count(), 2);
    QCOMPARE(changed.count(), 0);
    QCOMPARE(f.edit->text(), u"abc"_s);
}

void WidgetsTextEdit::focusIsReportedWithItsReason()
{
    Field f;
    QSignalSpy gained(f.edit, &TextEdit::gainedFocus);
    QSignalSpy lost(f.edit, &TextEdit::lostFocus);
    f.edit->setFocus(Qt::OtherFocusReason);
    QCOMPARE(gained.count(), 1);
    QCOMPARE(gained.first().first().value<Qt::FocusReason>(), Qt::OtherFocusReason);
    f.other->setFocus(Qt::TabFocusReason);
    QCOMPARE(lost.count(), 1);
    QCOMPARE(lost.first().first().value<Qt::FocusReason>(), Qt::TabFocusReason);
}

void WidgetsTextEdit::aKeyHandedOnTypesWithoutFocus()
{
    Field f;
    QKeyEvent event(QEvent::KeyPress, Qt::Key_B, Qt::NoModifier, u"b"_s);
    f.edit->setText(u"a"_s);
    f.edit->handleKeyPress(&event);
    QCOMPARE(f.edit->text(), u"ab"_s);
    f.edit->handleKeyPress(nullptr);
    QVERIFY(!f.edit->hasFocus());
}

void WidgetsTextEdit::anEmojiIsTyped()
{
    Field f;
    QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, u"🎬"_s);
    f.edit->handleKeyPress(&event);
    QCOMPARE(f.edit->text(), u"🎬"_s);
}

void WidgetsTextEdit::commandsAreNotTyped()
{
    Field f;
    f.edit->setFocus();
    f.key(Qt::Key_Q, Qt::ControlModifier);
    f.key(Qt::Key_F5);
    f.key(Qt::Key_Shift);
    QCOMPARE(f.edit->text(), QString());
    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, u"\x1b"_s);
    f.edit->handleKeyPress(&escape);
    QVERIFY(!escape.isAccepted()); // the page's
    QCOMPARE(f.edit->text(), QString());
}

void WidgetsTextEdit::inputMethodComposesAndCommits()
{
    Field f;
    f.edit->setFocus();
    QSignalSpy changed(f.edit, &TextEdit::textChanged);
    const auto send = [&f](QInputMethodEvent &event) { f.stage.scene.sendEvent(f.edit, &event); };
    QInputMethodEvent compose(u"にほ"_s, {});
    send(compose);
    QCOMPARE(f.edit->text(), QString());
    QCOMPARE(changed.count(), 0);
    QInputMethodEvent commit;
    commit.setCommitString(u"日本"_s);
    send(commit);
    QCOMPARE(f.edit->text(), u"日本"_s);
    QCOMPARE(changed.count(), 1);
}

void WidgetsTextEdit::whatWasComposedStaysWhenTheFocusGoes()
{
    Field f;
    f.edit->setFocus();
    QInputMethodEvent compose(u"conc"_s, {});
    f.stage.scene.sendEvent(f.edit, &compose);
    f.other->setFocus();
    QCOMPARE(f.edit->text(), u"conc"_s);
}

void WidgetsTextEdit::inputMethodReplaces()
{
    Field f;
    f.edit->setFocus();
    f.edit->setText(u"teh"_s);
    QInputMethodEvent event;
    event.setCommitString(u"the"_s, -3, 3);
    f.stage.scene.sendEvent(f.edit, &event);
    QCOMPARE(f.edit->text(), u"the"_s);
}

void WidgetsTextEdit::hintsAndActionKey()
{
    Field f;
    f.edit->setFocus();
    f.edit->setInputMethodCorrectionEnabled(false);
    f.edit->setInputMethodAutoCapitalizationEnabled(false);
    f.edit->setWordPredictionEnabled(false);
    const auto query = [&f](Qt::InputMethodQuery what) { return f.stage.scene.inputMethodQuery(what); };
    const auto hints = Qt::InputMethodHints(query(Qt::ImHints).toInt());
    QVERIFY(hints & Qt::ImhNoPredictiveText);
    QVERIFY(hints & Qt::ImhNoAutoUppercase);
    QCOMPARE(query(Qt::ImEnterKeyType).toInt(), int(Qt::EnterKeyDefault));
    f.edit->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"label"_s, u"Done"_s);
    f.edit->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"highlighted"_s, true);
    QCOMPARE(f.edit->inputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"label"_s).toString(), u"Done"_s);
    QCOMPARE(query(Qt::ImEnterKeyType).toInt(), int(Qt::EnterKeyDone));
    f.edit->setText(u"abc"_s);
    QCOMPARE(query(Qt::ImSurroundingText).toString(), u"abc"_s);
    QCOMPARE(query(Qt::ImCursorPosition).toInt(), 3);
    QVERIFY(query(Qt::ImCursorRectangle).toRectF().left() > 34);
}

void WidgetsTextEdit::correctionAndPredictionAreOneHint()
{
    // Whichever is switched last: one that is off keeps the other's keyboard from changing what is typed.
    Field f;
    const auto foretold = [&f] { return !(f.edit->inputMethodHints() & Qt::ImhNoPredictiveText); };
    f.edit->setInputMethodCorrectionEnabled(false);
    f.edit->setWordPredictionEnabled(true);
    QVERIFY(!foretold());
    f.edit->setInputMethodCorrectionEnabled(true);
    QVERIFY(foretold());
    f.edit->setWordPredictionEnabled(false);
    f.edit->setInputMethodCorrectionEnabled(true);
    QVERIFY(!foretold());
}

void WidgetsTextEdit::theActionKeyIsObserved()
{
    Field f;
    QStringList heard;
    connect(f.edit, &TextEdit::inputMethodAttributeChanged, f.edit,
            [&](const QString &target, const QString &item, const QString &attribute) {
                heard.append(target + u' ' + item + u' ' + attribute + u' '
                             + f.edit->inputMethodAttribute(target, item, attribute).toString());
            });
    const auto set = [&f](const QString &attribute, const QVariant &value) {
        f.edit->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, attribute, value);
    };
    set(u"label"_s, u"Save"_s);
    set(u"highlighted"_s, true);
    set(u"highlighted"_s, true); // no news
    set(u"enabled"_s, false);
    set(u"enabled"_s, true);
    QCOMPARE(heard,
             QStringList({u"/keys actionKey label Save"_s, u"/keys actionKey highlighted true"_s,
                          u"/keys actionKey enabled false"_s, u"/keys actionKey enabled true"_s}));
    QVERIFY(!f.edit->inputMethodAttribute(u"/keys"_s, u"otherKey"_s, u"label"_s).isValid());
}

void WidgetsTextEdit::enterKeyFollowsTheActionKey_data()
{
    QTest::addColumn<QVariant>("highlighted");
    QTest::addColumn<QVariant>("enabled");
    QTest::addColumn<int>("key");
    QTest::newRow("nothing said") << QVariant() << QVariant() << int(Qt::EnterKeyDefault);
    QTest::newRow("plain") << QVariant(false) << QVariant(true) << int(Qt::EnterKeyDefault);
    QTest::newRow("highlighted") << QVariant(true) << QVariant() << int(Qt::EnterKeyDone);
    QTest::newRow("highlighted and enabled") << QVariant(true) << QVariant(true) << int(Qt::EnterKeyDone);
    QTest::newRow("highlighted, disabled") << QVariant(true) << QVariant(false) << int(Qt::EnterKeyDefault);
}

void WidgetsTextEdit::enterKeyFollowsTheActionKey()
{
    QFETCH(const QVariant, highlighted);
    QFETCH(const QVariant, enabled);
    Field f;
    f.edit->setFocus();
    if (highlighted.isValid())
        f.edit->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"highlighted"_s, highlighted);
    if (enabled.isValid())
        f.edit->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"enabled"_s, enabled);
    QTEST(f.stage.scene.inputMethodQuery(Qt::ImEnterKeyType).toInt(), "key");
}

void WidgetsTextEdit::oddTextsStayOneLine_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("held");
    QTest::newRow("mark-up") << u"<b>a</b> &amp; <img src=x>"_s << u"<b>a</b> &amp; <img src=x>"_s;
    QTest::newRow("long") << QString(10000, u'x') << QString(10000, u'x');
    QTest::newRow("blanks") << u"   "_s << u"   "_s;
    QTest::newRow("emoji") << u"🎬👨‍👩‍👧"_s << u"🎬👨‍👩‍👧"_s;
    QTest::newRow("combining") << u"éä"_s << u"éä"_s;
    QTest::newRow("mixed directions") << u"abc עברית 12 عربي"_s << u"abc עברית 12 عربي"_s;
    QTest::newRow("NUL") << u"a"_s + QChar(u'\0') + u"b"_s << u"ab"_s;
    QTest::newRow("line breaks") << u"a\nb\r\nc d e"_s << u"a b  c d e"_s;
    QTest::newRow("half a pair") << QString(QChar(0xd83c)) << QString(QChar(0xd83c));
}

void WidgetsTextEdit::oddTextsStayOneLine()
{
    QFETCH(const QString, given);
    QFETCH(const QString, held);
    Field f;
    f.edit->setFocus();
    f.edit->setText(given);
    QCOMPARE(f.edit->text(), held);
    QVERIFY(!f.stage.picture().isNull()); // it can be drawn
    f.edit->selectAll();
    QGuiApplication::clipboard()->setText(given);
    f.edit->paste();
    QCOMPARE(f.edit->text(), held);
    while (!f.edit->text().isEmpty() && f.edit->text().size() < 100)
        f.key(Qt::Key_Backspace);
    f.edit->setCursorPosition(0);
    f.key(Qt::Key_End);
    QCOMPARE(f.edit->cursorPosition(), int(f.edit->text().size()));
}

void WidgetsTextEdit::theCursorStaysInSightInALongText()
{
    Field f;
    f.edit->setFocus();
    f.edit->setText(
        u"a very long text that does not fit into the field of the filter, however hard it tries"_s);
    const auto cursorX
        = [&f] { return f.stage.scene.inputMethodQuery(Qt::ImCursorRectangle).toRectF().left(); };
    const QRectF content = f.edit->mapRectToScene(f.edit->contentsRect());
    QVERIFY(cursorX() > content.left() + 200 && cursorX() <= content.right());
    f.key(Qt::Key_Home);
    QVERIFY(std::abs(cursorX() - content.left()) < 4);
}

void WidgetsTextEdit::thePointerPlacesTheCursorAndSelects()
{
    Field f;
    f.edit->setText(u"one two"_s);
    QTest::mouseClick(f.stage.view.viewport(), Qt::LeftButton, {}, QPoint(36, 114));
    QVERIFY(f.edit->hasFocus());
    QCOMPARE(f.edit->cursorPosition(), 0);
    QTest::mousePress(f.stage.view.viewport(), Qt::LeftButton, {}, QPoint(36, 114));
    f.stage.move(Qt::LeftButton, QPoint(300, 114));
    QTest::mouseRelease(f.stage.view.viewport(), Qt::LeftButton, {}, QPoint(300, 114));
    QCOMPARE(f.edit->selectedText(), u"one two"_s);
    QTest::mouseDClick(f.stage.view.viewport(), Qt::LeftButton, {}, QPoint(46, 114));
    QCOMPARE(f.edit->selectedText(), u"one"_s);
}

void WidgetsTextEdit::rightToLeft()
{
    Field f;
    f.edit->setLayoutDirection(Qt::RightToLeft);
    f.edit->setFocus();
    f.edit->setText(u"عطلة"_s);
    f.key(Qt::Key_Left); // to the eye: further into the line's end
    QCOMPARE(f.edit->cursorPosition(), 4);
    f.key(Qt::Key_Right);
    QCOMPARE(f.edit->cursorPosition(), 3);
    const QRectF content = f.edit->mapRectToScene(f.edit->contentsRect());
    QVERIFY(f.stage.scene.inputMethodQuery(Qt::ImCursorRectangle).toRectF().left() > content.center().x());
    // The room for the button is on the other side.
    QCOMPARE(f.edit->contentsRect().left(), 72.0);
}

QTEST_MAIN(WidgetsTextEdit)
#include "widgets_textedit.moc"
