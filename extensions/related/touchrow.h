// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QGraphicsWidget>
#include <QString>

// A part of a column that may be tapped, by finger and by key. It looks as the program does, since font,
// colours and direction come to it from the page.
class TouchRow : public QGraphicsWidget
{
    Q_OBJECT
    Q_PROPERTY(QString accessibleName READ spoken)
    Q_PROPERTY(QAccessible::Role accessibleRole READ accessibleRole)

public:
    // A row that cannot be tapped says something only.
    explicit TouchRow(bool canBeTapped, QGraphicsItem *parent = nullptr);

    // How high it wants to be at this width.
    [[nodiscard]] virtual qreal heightAt(qreal width) const = 0;
    // What a screen reader says.
    [[nodiscard]] virtual QString spoken() const = 0;
    [[nodiscard]] virtual QAccessible::Role accessibleRole() const;
    [[nodiscard]] bool canBeTapped() const { return m_canBeTapped; }

    // The keyboard is on it, and that is shown.
    [[nodiscard]] bool isMarked() const { return m_isMarked; }
    // As if the keyboard had been there all the time.
    void mark();

    static constexpr qreal Margin = 16; // as the lines of the details
    static constexpr qreal LowestTapped = 64; // what a finger hits

Q_SIGNALS:
    void tapped();

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    // What stands on the row; `rect` is the row without its margins at the sides.
    virtual void paintContent(QPainter *painter, const QRectF &rect) = 0;
    // A part of the row, given as if read from left to right.
    [[nodiscard]] QRectF mirrored(const QRectF &part) const;

    void changeEvent(QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void paintPlate(QPainter *painter) const;
    void setPressed(bool pressed);
    void setMarked(bool marked);

    bool m_canBeTapped;
    bool m_isPressed = false;
    bool m_isMarked = false;
    bool m_markComesBack = false;
};
