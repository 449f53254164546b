// SPDX-License-Identifier: GPL-3.0-or-later
#include "controlbutton.h"

#include <QKeyEvent>

void ControlButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space)
        event->ignore();
    else
        IconButton::keyPressEvent(event);
}

void ControlButton::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space)
        event->ignore();
    else
        IconButton::keyReleaseEvent(event);
}
