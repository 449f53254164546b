// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessibleparts.h"
#include "widget.h"

#include <QList>
#include <QPropertyAnimation>

class QAction;
class QKeyEvent;

namespace toolkit {

// The commands of a text field beside its cursor or selection: a row of words, or a column where the row
// would not fit. It covers nothing else and never takes the focus from the field, whose owner closes it.
class TextMenu : public Widget, public PartedWidget
{
    Q_OBJECT

public:
    // Takes the actions.
    explicit TextMenu(const QList<QAction *> &actions);
    ~TextMenu() override;

    // Above `anchor`, or below it where there is no room above. Both in the coordinates of the parent.
    void place(const QRectF &anchor, const QRectF &room);
    [[nodiscard]] QList<QAction *> actions() const { return m_actions; }
    [[nodiscard]] QRectF cell(int index) const; // in the menu's coordinates
    // A key for the field while the menu is open: the arrows choose, Return and Space trigger what was
    // chosen, Escape dismisses. False: it is the field's.
    bool handleKey(const QKeyEvent *event);

    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::PopupMenu; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;
    [[nodiscard]] int accessiblePartCount() const override { return int(m_actions.size()); }
    [[nodiscard]] AccessiblePart accessiblePart(int index) const override;
    [[nodiscard]] int currentAccessiblePart() const override { return m_current; }
    [[nodiscard]] bool borrowsKeys() const override { return isVisible(); }
    void activateAccessiblePart(int index) override;

Q_SIGNALS:
    // An action was triggered, or the person is done without one. The owner deletes the menu.
    void finished();
    void currentChanged(int index); // pressed, or where the keyboard is; -1: none

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;

private:
    [[nodiscard]] qreal cellWidth(int index) const;
    [[nodiscard]] QSizeF wanted(bool upright) const;
    [[nodiscard]] int cellAt(const QPointF &position) const;
    void setCurrent(int index);
    void step(int direction);
    void trigger(int index);

    QList<QAction *> m_actions;
    QPropertyAnimation m_fade;
    int m_current = -1;
    bool m_upright = false; // one below the other
};

} // namespace toolkit
