// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessiblewidget.h"

namespace toolkit {

class TextEdit;

// The text field: its text, cursor and selection, and edits as by the user.
class AccessibleTextEdit : public AccessibleWidget,
                           public QAccessibleTextInterface,
                           public QAccessibleEditableTextInterface
{
public:
    explicit AccessibleTextEdit(TextEdit *field);

    [[nodiscard]] QString text(QAccessible::Text kind) const override;
    void setText(QAccessible::Text kind, const QString &text) override;
    [[nodiscard]] QAccessible::State state() const override;
    // The command of its menu that the arrows are on, if there is one.
    [[nodiscard]] QAccessibleInterface *focusChild() const override;
    void *interface_cast(QAccessible::InterfaceType type) override;

    // Show menu: to cut, copy and paste.
    [[nodiscard]] QStringList actionNames() const override;
    void doAction(const QString &action) override;

    void selection(int index, int *start, int *end) const override;
    [[nodiscard]] int selectionCount() const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    [[nodiscard]] int cursorPosition() const override;
    void setCursorPosition(int position) override;
    [[nodiscard]] QString text(int start, int end) const override;
    [[nodiscard]] int characterCount() const override;
    [[nodiscard]] QRect characterRect(int offset) const override;
    [[nodiscard]] int offsetAtPoint(const QPoint &point) const override;
    void scrollToSubstring(int start, int end) override;
    [[nodiscard]] QString attributes(int offset, int *start, int *end) const override;

    void deleteText(int start, int end) override;
    void insertText(int offset, const QString &text) override;
    void replaceText(int start, int end, const QString &text) override;

private:
    [[nodiscard]] TextEdit *field() const;
    void tellText();
    void tellCursor();

    QString m_told;
};

} // namespace toolkit
