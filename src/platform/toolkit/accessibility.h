// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessible>
#include <QList>
#include <QRectF>
#include <QString>

class QGraphicsItem;
class QGraphicsWidget;
class QWindow;

namespace toolkit {

class ApplicationWindow;
class Widget;

// The bridge from the scene, of which assistive technology knows nothing by itself, to QAccessible. While
// nobody listens every report ends at its first line.
namespace accessibility {

// Makes the widgets known to QAccessible; once is enough.
void install();
// Also reports where the focus goes and which page is shown.
void follow(ApplicationWindow *window);

// The nearest widgets below an item that are told of, visible ones only, as a person reads them. They are the
// toolkit's, and those of others that have a name.
[[nodiscard]] QList<QGraphicsWidget *> toldWidgets(const QGraphicsItem *item);
[[nodiscard]] bool isTold(const QGraphicsWidget *widget);
// Its own, and that of a dialog for whatever else stands over the pages.
[[nodiscard]] QAccessible::Role roleOf(const QGraphicsWidget *widget);
// The nearest above; null directly below the window.
[[nodiscard]] QGraphicsWidget *toldAncestor(const QGraphicsItem *item);
[[nodiscard]] QAccessibleInterface *parentOf(const QGraphicsItem *item);
// False beneath a menu, a sheet or a dialog: what they block takes no action.
[[nodiscard]] bool isReachable(const QGraphicsWidget *widget);
// On a page that is shown, in a window on the display.
[[nodiscard]] bool isOnDisplay(const QGraphicsWidget *widget);
[[nodiscard]] QRect screenRect(const QGraphicsItem *item, const QRectF &rect);
// The deepest part of `whole` at a point of the screen; of parts that overlap the last, which is on top.
[[nodiscard]] QAccessibleInterface *partAt(const QAccessibleInterface *whole, int x, int y);
[[nodiscard]] QWindow *nativeWindow(const QGraphicsItem *item);
// A text as one line that any transport carries.
[[nodiscard]] QString spoken(QString text);

void visibilityChanged(Widget *widget);
void enabledChanged(Widget *widget);
// The focus is elsewhere within the widget: on another row.
void focusMoved(Widget *widget);

} // namespace accessibility

} // namespace toolkit
