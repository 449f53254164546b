// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>

class QGraphicsItem;
class QGraphicsScene;

namespace toolkit {

class Popup;

// Whether an item of the scene that takes text has the focus, as far as an on-screen keyboard cares: not
// while a finger is down, so that what turns because of it never moves away under the finger, and not in the
// middle of an event that only hands the focus on. A sheet with a field counts until it goes: what it asks or
// shows meanwhile does not lie on its side.
class TextFocus : public QObject
{
    Q_OBJECT

public:
    explicit TextFocus(QGraphicsScene *scene);

    [[nodiscard]] bool isHeld() const { return m_held; }
    void setPointerDown(bool down);

Q_SIGNALS:
    void changed(bool held);

private:
    void focusMoved(QGraphicsItem *item, Qt::FocusReason reason);
    void follow(Popup *form);
    void settle();

    QPointer<Popup> m_form; // in which the last field was that had the focus
    bool m_wanted = false;
    bool m_held = false;
    bool m_pointerDown = false;
};

} // namespace toolkit
