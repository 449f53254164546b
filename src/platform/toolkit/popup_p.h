// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "applicationwindow.h"
#include "popup.h"

#include <QPointer>
#include <QVariantAnimation>

namespace toolkit {

class Popup::Private
{
public:
    enum class State { Hidden, Coming, Up, Going };

    explicit Private(Popup *popup);
    void moveTo(qreal target, Appearance appearance = Appearance::Normal);
    void arrived();
    void release();
    void removeFromScene();
    void setTakesKeys(bool takes);
    [[nodiscard]] bool takeKey(const QObject *watched, QEvent *event);

    Popup *q;
    QPointer<ApplicationWindow> window;
    QPointer<QGraphicsObject> focusBefore;
    QVariantAnimation motion;
    State state = State::Hidden;
    qreal progress = 0;
    bool blocking = false;
    bool pressedBeside = false;
};

} // namespace toolkit
