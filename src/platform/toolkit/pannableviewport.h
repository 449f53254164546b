// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <memory>

class QKeyEvent;

namespace toolkit {

// A view onto a widget that may be higher than the viewport, panned by finger, pointer, wheel and keys,
// kinetic (QScroller), with over-shoot and a scroll indicator.
class PannableViewport : public Widget
{
    Q_OBJECT

public:
    explicit PannableViewport(QGraphicsItem *parent = nullptr);
    ~PannableViewport() override;

    void setWidget(Widget *widget);
    [[nodiscard]] Widget *widget() const;
    // Not pannable: the widget is exactly as high as the viewport.
    void setPannable(bool pannable);
    [[nodiscard]] bool isPannable() const;
    // What the content lies on: it runs out into it at the edges where it goes on. Invalid, as it is at
    // first: it is cut there.
    void setGround(const QColor &ground);

    // Logical pixels from the top of the content; negative y while pulled beyond the top. Also reported
    // (once, as a pull) by wheel at the top and with reduced motion.
    [[nodiscard]] QPointF position() const;
    void setPosition(const QPointF &position); // clamped, at once, stops kinetic movement
    [[nodiscard]] QRectF range() const;
    // Qt bounds a graphics widget at 16.7 million pixels. One inside the content that is higher folds the
    // rest away, at most one at a time: the viewport scrolls over that height too and tells how far the
    // widget has to move what is inside it up.
    void setFoldedHeight(QGraphicsWidget *widget, qreal height);
    [[nodiscard]] qreal foldedOffset(const QGraphicsWidget *widget) const;
    [[nodiscard]] bool isPanning() const;
    // Scrolls the least way that brings this rectangle of the widget into view, animated. Nothing counts as
    // folded.
    void ensureVisible(const QRectF &rectangle);
    // The arrow keys, Page Up and Down, Home and End; true when the key was one of them.
    bool scrollByKey(const QKeyEvent *event);

Q_SIGNALS:
    void positionChanged(QPointF position);
    void foldedOffsetChanged(qreal offset);
    void panningStarted();
    void panningStopped();

protected:
    bool event(QEvent *event) override;
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;
    void wheelEvent(QGraphicsSceneWheelEvent *event) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit
