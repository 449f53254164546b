// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <QVariant>

#include <memory>

class QAction;

namespace toolkit {

class TextMenu;

// A one-line text field with prompt, cursor, selection, clipboard and input-method support. A finger that
// rests on it, or the second mouse button, brings a menu to cut, copy and paste.
class TextEdit : public Widget
{
    Q_OBJECT

public:
    explicit TextEdit(QGraphicsItem *parent = nullptr);
    ~TextEdit() override;

    void setText(const QString &text); // textChanged() when it is another; the cursor goes to the end
    [[nodiscard]] QString text() const;
    // The way in which its text is written; without any, that of the field.
    [[nodiscard]] Qt::LayoutDirection textDirection() const;
    void setPrompt(const QString &prompt);
    [[nodiscard]] QString prompt() const;
    void setInputMethodCorrectionEnabled(bool enabled);
    void setInputMethodAutoCapitalizationEnabled(bool enabled);
    void setWordPredictionEnabled(bool enabled);
    [[nodiscard]] QString selectedText() const;
    void selectAll();
    [[nodiscard]] int cursorPosition() const;
    void setCursorPosition(int position);
    void cut();
    void copy() const;
    void paste();
    // The menu to cut, copy and paste, beside the cursor or selection; without a command there is none.
    void openMenu();
    [[nodiscard]] TextMenu *menu() const; // null unless it is open
    // Where the selection began; the cursor is at its other end.
    [[nodiscard]] int selectionAnchor() const;
    void setSelection(int anchor, int cursor);
    // An edit as by the user.
    void replaceText(int from, int length, const QString &text);
    // The cell of a character, in the field's coordinates; and the position that is nearest to a point.
    [[nodiscard]] QRectF characterRect(int position) const;
    [[nodiscard]] int positionAt(const QPointF &point) const;
    // Passes a key press on to the field as if it had the focus.
    void handleKeyPress(QKeyEvent *event);
    // True while the text changes because of the user's own editing (a key, an input method, the clipboard).
    [[nodiscard]] bool isUserEdit() const;

    // Attributes for the on-screen keyboard: target "/keys", item "actionKey", attributes "label",
    // "highlighted", "enabled". Qt's enter key is "done" while the action key is highlighted and not
    // disabled, and the default one otherwise.
    void setInputMethodAttribute(const QString &target, const QString &item, const QString &attribute,
                                 const QVariant &value);
    [[nodiscard]] QVariant inputMethodAttribute(const QString &target, const QString &item,
                                                const QString &attribute) const;

    // The prompt, unless another name was set.
    [[nodiscard]] QString accessibleName() const override;
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::EditableText; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;

Q_SIGNALS:
    void textChanged();
    void cursorPositionChanged(); // or the selection
    void returnPressed();
    void gainedFocus(Qt::FocusReason reason);
    void lostFocus(Qt::FocusReason reason);
    // It has another value than before.
    void inputMethodAttributeChanged(const QString &target, const QString &item, const QString &attribute);

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event) override;
    void contextMenuEvent(QGraphicsSceneContextMenuEvent *event) override;
    bool sceneEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

private:
    void setHint(Qt::InputMethodHint hint, bool on);
    void updatePredictiveHint();
    [[nodiscard]] Qt::EnterKeyType enterKeyType() const;
    void edited(bool textChanged);
    void userEdited(bool textChanged);
    void restartBlinking();
    void fadeEnds(QPainter *painter, const QRectF &content) const;
    bool editByShortcut(QKeyEvent *event);
    bool moveByKey(QKeyEvent *event);
    [[nodiscard]] QList<QAction *> commands();
    void placeMenu();
    void closeMenu();
    void pressedLong(const QPointF &position);

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit
