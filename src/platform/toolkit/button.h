// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <memory>

namespace toolkit {

// A push button with text and/or icon; press feedback within a frame; keyboard: Space and Return.
class Button : public Widget
{
    Q_OBJECT

public:
    explicit Button(QGraphicsItem *parent = nullptr);
    explicit Button(const QString &text, QGraphicsItem *parent = nullptr);
    ~Button() override;

    void setText(const QString &text);
    [[nodiscard]] QString text() const;
    void setIconId(const QString &iconId);
    [[nodiscard]] QString iconId() const;
    // What assistive technology says and the tool tip shows; the text when it was not set.
    void setAccessibleName(const QString &name) override;
    [[nodiscard]] QString accessibleName() const override;
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::Button; }
    [[nodiscard]] bool isDown() const;
    void click(); // as by the user; nothing while disabled

Q_SIGNALS:
    void clicked();
    void pressed();
    void released();

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool event(QEvent *event) override;

private:
    void setDown(bool down);

    class Private;
    std::unique_ptr<Private> d;
};

// A button with view type "icon".
class IconButton : public Button
{
    Q_OBJECT

public:
    explicit IconButton(const QString &iconId = QString(), QGraphicsItem *parent = nullptr);
};

} // namespace toolkit
