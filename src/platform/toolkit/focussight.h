// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

class QGraphicsItem;
class QGraphicsObject;
class QGraphicsWidget;
class QKeyEvent;
class QRectF;

namespace toolkit {

class PannableViewport;

// The keyboard on a page that is read and has this and that to tap in it, whosever widget that is: what the
// focus moves to comes into sight, and the arrow keys go to what is in sight or next to it. A list does all
// that itself.
class FocusSight : public QObject
{
    Q_OBJECT

public:
    explicit FocusSight(PannableViewport *viewport);

    // Up and down; false where there is nothing to go to, so that the page can scroll.
    bool moveByKey(const QKeyEvent *event);

private:
    void follow();
    void focusMoved(QGraphicsItem *item, QGraphicsItem *before, Qt::FocusReason reason);
    void show(const QGraphicsObject *item);
    // Of what can have the focus, from top to bottom.
    [[nodiscard]] QList<QGraphicsWidget *> stops() const;
    [[nodiscard]] QRectF inViewport(const QGraphicsWidget *stop) const;
    [[nodiscard]] bool isInSight(const QGraphicsWidget *stop) const;

    PannableViewport *m_viewport;
    QPointer<QGraphicsObject> m_wanted;
};

} // namespace toolkit
