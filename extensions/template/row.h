// SPDX-License-Identifier: MIT
#pragma once

#include <QGraphicsWidget>
#include <QString>

// A line of text that can be tapped. It is as high as the person's text size asks for, and looks as the
// program does, since font, colours and direction come to it from the page.
class Row : public QGraphicsWidget
{
    Q_OBJECT
    Q_PROPERTY(QString accessibleName READ text NOTIFY textChanged)

public:
    Row();

    [[nodiscard]] QString text() const { return m_text; }
    void setText(const QString &text);

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

Q_SIGNALS:
    void tapped();
    void textChanged();

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void setPressed(bool pressed);

    QString m_text;
    bool m_isPressed = false;
    bool m_isMarked = false; // the keyboard is on it
};
