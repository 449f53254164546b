// SPDX-License-Identifier: GPL-3.0-or-later
// The keyboard, input-method and clipboard side of the text field.
#include "textedit_p.h"

#include <QClipboard>
#include <QFontMetricsF>
#include <QGraphicsSceneMouseEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

void TextEdit::setHint(Qt::InputMethodHint hint, bool on)
{
    setInputMethodHints(inputMethodHints().setFlag(hint, on));
}

void TextEdit::setInputMethodCorrectionEnabled(bool enabled)
{
    d->correction = enabled;
    updatePredictiveHint();
}

void TextEdit::setInputMethodAutoCapitalizationEnabled(bool enabled)
{
    setHint(Qt::ImhNoAutoUppercase, !enabled);
}

void TextEdit::setWordPredictionEnabled(bool enabled)
{
    d->prediction = enabled;
    updatePredictiveHint();
}

// There is one hint for both: a keyboard that corrects also predicts, and neither may happen unwanted.
void TextEdit::updatePredictiveHint()
{
    setHint(Qt::ImhNoPredictiveText, !d->correction || !d->prediction);
}

void TextEdit::setInputMethodAttribute(const QString &target, const QString &item, const QString &attribute,
                                       const QVariant &value)
{
    const QString key = Private::attributeKey(target, item, attribute);
    if (d->attributes.contains(key) && d->attributes.value(key) == value)
        return;
    d->attributes.insert(key, value);
    if (hasFocus())
        QGuiApplication::inputMethod()->update(Qt::ImQueryAll);
    Q_EMIT inputMethodAttributeChanged(target, item, attribute);
}

QVariant TextEdit::inputMethodAttribute(const QString &target, const QString &item,
                                        const QString &attribute) const
{
    return d->attributes.value(Private::attributeKey(target, item, attribute));
}

void TextEdit::handleKeyPress(QKeyEvent *event)
{
    if (event != nullptr)
        keyPressEvent(event);
}

bool TextEdit::editByShortcut(QKeyEvent *event)
{
    LineEditor &editor = d->editor;
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::Cut)) {
        cut();
    } else if (event->matches(QKeySequence::Paste)) {
        paste();
    } else if (event->matches(QKeySequence::Undo)) {
        userEdited(editor.undo());
    } else if (event->matches(QKeySequence::Redo)) {
        userEdited(editor.redo());
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (event->matches(QKeySequence::DeleteStartOfWord)) {
        userEdited(editor.removeBackward(LineEditor::Move::Word));
    } else if (event->matches(QKeySequence::DeleteEndOfWord)) {
        userEdited(editor.removeForward(LineEditor::Move::Word));
    } else if (event->key() == Qt::Key_Backspace) {
        userEdited(editor.removeBackward(LineEditor::Move::Character));
    } else if (event->key() == Qt::Key_Delete) {
        userEdited(editor.removeForward(LineEditor::Move::Character));
    } else {
        return false;
    }
    return true;
}

bool TextEdit::moveByKey(QKeyEvent *event)
{
    const bool select = event->modifiers() & Qt::ShiftModifier;
    const auto by
        = event->modifiers() & Qt::ControlModifier ? LineEditor::Move::Word : LineEditor::Move::Character;
    // The arrows move as the eye sees it.
    const int right = d->isRightToLeft(layoutDirection()) ? -1 : 1;
    switch (event->key()) {
    case Qt::Key_Left:
        d->editor.move(-right, by, select);
        break;
    case Qt::Key_Right:
        d->editor.move(right, by, select);
        break;
    case Qt::Key_Home:
        d->editor.move(-1, LineEditor::Move::Line, select);
        break;
    case Qt::Key_End:
        d->editor.move(1, LineEditor::Move::Line, select);
        break;
    default:
        return false;
    }
    edited(false);
    return true;
}

void TextEdit::keyPressEvent(QKeyEvent *event)
{
    event->accept();
    if (d->menu != nullptr && d->menu->handleKey(event))
        return;
    closeMenu();
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        d->editor.endUndoStep();
        Q_EMIT returnPressed();
        return;
    }
    if (editByShortcut(event) || moveByKey(event))
        return;
    const QString text = event->text();
    const bool command = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    const auto characters = QStringView(text).left(2).toUcs4(); // of the first plane or beyond
    const bool typed = !characters.isEmpty()
        && (QChar::isPrint(characters.first()) || QChar::category(characters.first()) == QChar::Other_Format)
        && (!command || event->modifiers() & Qt::AltModifier || text.at(0).unicode() > 0x7f);
    if (typed)
        userEdited(d->editor.insert(text));
    else
        event->ignore();
}

void TextEdit::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    d->dragging = false;
    const bool held = !d->finger.isPressed() && event->button() == Qt::LeftButton && d->menu != nullptr;
    d->finger.release(event->scenePos());
    if (held)
        return; // the finger that opened the menu
    if (!rect().contains(event->pos()))
        return;
    const QClipboard *clipboard = QGuiApplication::clipboard();
    if (event->button() == Qt::MiddleButton && clipboard->supportsSelection())
        userEdited(d->editor.insert(clipboard->text(QClipboard::Selection)));
    else if (d->editor.hasSelection() && clipboard->supportsSelection())
        QGuiApplication::clipboard()->setText(d->editor.selectedText(), QClipboard::Selection);
    if (hasFocus())
        QGuiApplication::inputMethod()->show(); // it may have been closed over a field that kept the focus
}

void TextEdit::inputMethodEvent(QInputMethodEvent *event)
{
    event->accept();
    bool changed = false;
    const bool composes = !event->preeditString().isEmpty();
    if (d->editor.hasSelection() && (composes || !event->commitString().isEmpty()))
        changed = d->editor.removeSelection();
    d->preedit.clear();
    if (!event->commitString().isEmpty() || event->replacementLength() > 0) {
        if (event->replacementLength() > 0)
            changed = d->editor.replace(d->editor.cursor() + event->replacementStart(),
                                        event->replacementLength(), event->commitString())
                || changed;
        else
            changed = d->editor.insert(event->commitString()) || changed;
    }
    d->preedit = event->preeditString();
    d->preeditCursor = int(d->preedit.size());
    d->preeditCursorShown = true;
    d->preeditFormats.clear();
    for (const QInputMethodEvent::Attribute &attribute : event->attributes()) {
        if (attribute.type == QInputMethodEvent::Cursor) {
            d->preeditCursor = attribute.start;
            d->preeditCursorShown = attribute.length != 0;
        } else if (attribute.type == QInputMethodEvent::TextFormat) {
            const QTextCharFormat format = qvariant_cast<QTextFormat>(attribute.value).toCharFormat();
            d->preeditFormats.append({d->editor.cursor() + attribute.start, attribute.length, format});
        } else if (attribute.type == QInputMethodEvent::Selection) {
            d->editor.setCursor(attribute.start);
            d->editor.setCursor(attribute.start + attribute.length, true);
        }
    }
    userEdited(changed);
}

Qt::EnterKeyType TextEdit::enterKeyType() const
{
    const QVariant enabled = inputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"enabled"_s);
    const bool isEnabled = !enabled.isValid() || enabled.toBool();
    return isEnabled && inputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"highlighted"_s).toBool()
        ? Qt::EnterKeyDone
        : Qt::EnterKeyDefault;
}

QVariant TextEdit::inputMethodQuery(Qt::InputMethodQuery query) const
{
    switch (query) {
    case Qt::ImEnabled:
        return isEnabled();
    case Qt::ImCursorRectangle: {
        const QRectF content = contentsRect();
        const qreal height = QFontMetricsF(style().font).height();
        return QRectF(content.left() - d->scroll + d->cursorX(), content.center().y() - height / 2, 1,
                      height);
    }
    case Qt::ImFont:
        return style().font;
    case Qt::ImCursorPosition:
        return d->editor.cursor();
    case Qt::ImAnchorPosition:
        return d->editor.anchor();
    case Qt::ImSurroundingText:
        return d->editor.text();
    case Qt::ImCurrentSelection:
        return d->editor.selectedText();
    case Qt::ImHints:
        return int(inputMethodHints());
    case Qt::ImEnterKeyType:
        return enterKeyType();
    default:
        return Widget::inputMethodQuery(query);
    }
}

} // namespace toolkit
