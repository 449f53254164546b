// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "accessibleparts.h"
#include "popup.h"

#include <QList>
#include <QPointer>

class QAction;

namespace toolkit {

// Actions in rows over the page on top, which is dimmed and blocked meanwhile. A tap beside it, or back,
// closes it; so does an action, which is triggered before the page is told that it is free. The menu grows
// from a point and stays within the scene.
class Menu : public Popup, public PartedWidget
{
    Q_OBJECT

public:
    explicit Menu(QGraphicsItem *parent = nullptr);

    // Of the scene; the corner where lines begin stands there, as far as there is room.
    void setPoint(const QPointF &point);
    [[nodiscard]] QPointF point() const { return m_point; }
    // At once: without its way out.
    void disappear(Appearance appearance = Appearance::Normal);

    // The actions that it offers, top to bottom; read when it appears.
    [[nodiscard]] int entryCount() const { return int(m_entries.size()); }
    [[nodiscard]] QAction *entry(int index) const; // null when there is none, or none any more
    [[nodiscard]] QRectF entryRect(int index) const; // in its own coordinates
    [[nodiscard]] int currentEntry() const
    {
        return m_current;
    } // pressed, or where the keyboard is; -1: none
    void setCurrentEntry(int index);
    // As a tap on the row: nothing when it is disabled.
    void chooseEntry(int index);

    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::PopupMenu; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;
    [[nodiscard]] int accessiblePartCount() const override { return entryCount(); }
    [[nodiscard]] AccessiblePart accessiblePart(int index) const override;
    [[nodiscard]] int currentAccessiblePart() const override { return m_current; }
    void activateAccessiblePart(int index) override { chooseEntry(index); }

Q_SIGNALS:
    // After the chosen action was triggered, if one was, and before the page is told that it is unblocked.
    void closed();
    void currentEntryChanged(int index);

protected:
    void setEntries(const QList<QAction *> &entries);
    void escape() override;
    [[nodiscard]] QRectF panelRect() const override;
    [[nodiscard]] int motionMilliseconds() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverMoveEvent(QGraphicsSceneHoverEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    [[nodiscard]] qreal rowHeight() const;
    [[nodiscard]] qreal panelWidth() const;
    [[nodiscard]] int rowAt(const QPointF &position) const;
    void moveCurrent(int by);
    void paintRow(QPainter *painter, int index) const;

    QList<QPointer<QAction>> m_entries;
    QPointF m_point;
    int m_current = -1;
    bool m_pressed = false; // since it appeared: a finger that was down before chooses nothing
};

} // namespace toolkit
