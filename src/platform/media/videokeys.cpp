// SPDX-License-Identifier: GPL-3.0-or-later
#include "videokeys.h"

VideoKey videoKey(const QKeyEvent *event)
{
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return VideoKey::Silent;
    switch (event->key()) {
    case Qt::Key_Up:
        return VideoKey::Louder;
    case Qt::Key_Down:
        return VideoKey::Quieter;
    case Qt::Key_M:
        return event->isAutoRepeat() ? VideoKey::None : VideoKey::Mute;
    case Qt::Key_F:
        return event->isAutoRepeat() ? VideoKey::None : VideoKey::FullScreen;
    case Qt::Key_Home:
        return VideoKey::Start;
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
        return VideoKey::Silent;
    default:
        return VideoKey::None;
    }
}
