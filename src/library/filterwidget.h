// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widgetcontroller.h"

#include <QString>

namespace toolkit {
class IconButton;
class ImageWidget;
class TextEdit;
} // namespace toolkit

// The style object of the field; it has no attributes of its own.
class FilterWidgetStyle : public toolkit::WidgetStyle
{
    Q_OBJECT

public:
    using toolkit::WidgetStyle::WidgetStyle;
};

// The field above the list: what is typed into it filters the list at once. A magnifier stands in it while it
// is empty, a clear button while it is not. Made by name as "FilterWidget" of the catalogue "kestrel".
class FilterWidget : public toolkit::WidgetController
{
    Q_OBJECT

public:
    explicit FilterWidget(QGraphicsItem *parent = nullptr);
    ~FilterWidget() override;

    [[nodiscard]] toolkit::TextEdit *textEdit() const { return m_textEdit; }
    void setText(const QString &text);
    [[nodiscard]] QString text() const;
    // Gives the field the focus with the cursor at the end, once the event that is being handled is through.
    void focusLater();

Q_SIGNALS:
    void textChanged();
    void clearClicked();

public Q_SLOTS:
    void handleTextChanged();
    void clearTextField();
    void closeTheVKB();

protected:
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void setUpTextEdit();
    void translate();
    void setActionKey(const QString &attribute, const QVariant &value); // of the keyboard on the screen
    [[nodiscard]] qreal inset() const;
    void placeField();
    void placeIcons();
    void takeFocus();

    toolkit::TextEdit *m_textEdit;
    toolkit::ImageWidget *m_magnifier;
    toolkit::IconButton *m_clearButton;
    bool m_clearing = false;
};
