// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "sheetdrag.h"
#include "widget.h"

#include <QElapsedTimer>

class QGraphicsSceneMouseEvent;

namespace toolkit {

// What is seen of a sheet: its ground, and the finger that drags it, wherever on the sheet it begins.
class SheetPanel : public Widget
{
    Q_OBJECT

public:
    explicit SheetPanel(QGraphicsItem *parent);

    // Rounded above, or filling the scene.
    void setRounded(bool rounded);
    [[nodiscard]] QColor ground() const;
    // From the head down to this height, or (negative) from anywhere, a finger can drag the sheet.
    void setDragArea(qreal height) { m_dragHeight = height; }
    void setDraggable(bool draggable) { m_draggable = draggable; }
    // On its way out it takes no touch, and neither does anything beneath.
    void setLeaving(bool leaving) { m_leaving = leaving; }

Q_SIGNALS:
    void dragged(qreal distance);
    void dragEnded(bool closes);
    void groundChanged();

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;
    void applyStyle() override;

private:
    bool mouse(QEvent *event);
    void press(const QGraphicsSceneMouseEvent *event);
    bool move(const QGraphicsSceneMouseEvent *event);
    bool release(const QGraphicsSceneMouseEvent *event);
    [[nodiscard]] qint64 time(const QGraphicsSceneMouseEvent *event) const;

    SheetDrag m_drag;
    QElapsedTimer m_clock;
    qreal m_dragHeight = -1;
    bool m_rounded = true;
    bool m_draggable = true;
    bool m_leaving = false;
};

} // namespace toolkit
