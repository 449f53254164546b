// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessibletextedit.h"

#include "accessibility.h"
#include "textedit.h"
#include "textmenu.h"

#include <QGraphicsScene>
#include <QGraphicsView>

#include <algorithm>

namespace toolkit {

AccessibleTextEdit::AccessibleTextEdit(TextEdit *field) : AccessibleWidget(field), m_told(field->text())
{
    QObject::connect(field, &TextEdit::textChanged, context(), [this] { tellText(); });
    QObject::connect(field, &TextEdit::cursorPositionChanged, context(), [this] { tellCursor(); });
}

TextEdit *AccessibleTextEdit::field() const
{
    return static_cast<TextEdit *>(object());
}

// What lies between the beginning and the end that the two texts share was exchanged.
void AccessibleTextEdit::tellText()
{
    const QString before = std::exchange(m_told, field()->text());
    const QString &now = m_told;
    const qsizetype common = std::min(before.size(), now.size());
    qsizetype head = 0;
    while (head < common && before.at(head) == now.at(head))
        ++head;
    qsizetype tail = 0;
    while (tail < common - head && before.at(before.size() - 1 - tail) == now.at(now.size() - 1 - tail))
        ++tail;
    const QString removed = before.sliced(head, before.size() - head - tail);
    const QString inserted = now.sliced(head, now.size() - head - tail);
    if (!removed.isEmpty()) {
        QAccessibleTextRemoveEvent event(field(), int(head), removed);
        event.setCursorPosition(cursorPosition());
        QAccessible::updateAccessibility(&event);
    }
    if (!inserted.isEmpty()) {
        QAccessibleTextInsertEvent event(field(), int(head), inserted);
        event.setCursorPosition(cursorPosition());
        QAccessible::updateAccessibility(&event);
    }
}

void AccessibleTextEdit::tellCursor()
{
    QAccessibleTextCursorEvent moved(field(), cursorPosition());
    QAccessible::updateAccessibility(&moved);
    const int anchor = field()->selectionAnchor();
    if (anchor == cursorPosition())
        return;
    QAccessibleTextSelectionEvent selected(field(), std::min(anchor, cursorPosition()),
                                           std::max(anchor, cursorPosition()));
    selected.setCursorPosition(cursorPosition());
    QAccessible::updateAccessibility(&selected);
}

QString AccessibleTextEdit::text(QAccessible::Text kind) const
{
    if (kind == QAccessible::Value)
        return field()->text();
    if (kind == QAccessible::Description && field()->prompt() != field()->accessibleName())
        return accessibility::spoken(field()->prompt());
    return AccessibleWidget::text(kind);
}

void AccessibleTextEdit::setText(QAccessible::Text kind, const QString &text)
{
    if (kind == QAccessible::Value)
        replaceText(0, characterCount(), text);
}

QAccessible::State AccessibleTextEdit::state() const
{
    QAccessible::State state = AccessibleWidget::state();
    state.editable = true;
    state.selectableText = true;
    return state;
}

QAccessibleInterface *AccessibleTextEdit::focusChild() const
{
    QAccessibleInterface *own = AccessibleWidget::focusChild();
    TextMenu *menu = field()->menu();
    const QAccessibleInterface *told
        = own != nullptr && menu != nullptr ? QAccessible::queryAccessibleInterface(menu) : nullptr;
    QAccessibleInterface *command = told != nullptr ? told->focusChild() : nullptr;
    return command != nullptr ? command : own;
}

QStringList AccessibleTextEdit::actionNames() const
{
    return AccessibleWidget::actionNames() << showMenuAction();
}

void AccessibleTextEdit::doAction(const QString &action)
{
    if (action != showMenuAction()) {
        AccessibleWidget::doAction(action);
    } else if (accessibility::isReachable(field())) {
        field()->setFocus(Qt::OtherFocusReason);
        field()->openMenu();
    }
}

void *AccessibleTextEdit::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface *>(this);
    if (type == QAccessible::EditableTextInterface)
        return static_cast<QAccessibleEditableTextInterface *>(this);
    return AccessibleWidget::interface_cast(type);
}

void AccessibleTextEdit::selection(int index, int *start, int *end) const
{
    const int anchor = field()->selectionAnchor();
    const bool any = index == 0 && selectionCount() > 0;
    *start = any ? std::min(anchor, cursorPosition()) : 0;
    *end = any ? std::max(anchor, cursorPosition()) : 0;
}

int AccessibleTextEdit::selectionCount() const
{
    return field()->selectionAnchor() != cursorPosition() ? 1 : 0;
}

void AccessibleTextEdit::addSelection(int start, int end)
{
    field()->setSelection(start, end);
}

void AccessibleTextEdit::removeSelection(int index)
{
    if (index == 0)
        field()->setCursorPosition(cursorPosition());
}

void AccessibleTextEdit::setSelection(int index, int start, int end)
{
    if (index == 0)
        field()->setSelection(start, end);
}

int AccessibleTextEdit::cursorPosition() const
{
    return field()->cursorPosition();
}

void AccessibleTextEdit::setCursorPosition(int position)
{
    field()->setCursorPosition(std::clamp(position, 0, characterCount()));
}

QString AccessibleTextEdit::text(int start, int end) const
{
    const int from = std::clamp(start, 0, characterCount());
    return field()->text().sliced(from, std::clamp(end, from, characterCount()) - from);
}

int AccessibleTextEdit::characterCount() const
{
    return int(field()->text().size());
}

QRect AccessibleTextEdit::characterRect(int offset) const
{
    if (offset < 0 || offset > characterCount())
        return {};
    return accessibility::screenRect(field(), field()->characterRect(offset));
}

int AccessibleTextEdit::offsetAtPoint(const QPoint &point) const
{
    if (!rect().contains(point) || field()->scene() == nullptr || field()->scene()->views().isEmpty())
        return -1;
    const QGraphicsView *view = field()->scene()->views().first();
    return field()->positionAt(
        field()->mapFromScene(view->mapToScene(view->viewport()->mapFromGlobal(point))));
}

// The field keeps its cursor in sight, and nothing else.
void AccessibleTextEdit::scrollToSubstring(int start, int end)
{
    Q_UNUSED(end)
    setCursorPosition(start);
}

QString AccessibleTextEdit::attributes(int offset, int *start, int *end) const
{
    Q_UNUSED(offset)
    *start = 0;
    *end = characterCount();
    return {};
}

void AccessibleTextEdit::deleteText(int start, int end)
{
    replaceText(start, end, QString());
}

void AccessibleTextEdit::insertText(int offset, const QString &text)
{
    replaceText(offset, offset, text);
}

void AccessibleTextEdit::replaceText(int start, int end, const QString &text)
{
    if (accessibility::isReachable(field()))
        field()->replaceText(start, end - start, text);
}

} // namespace toolkit
