// SPDX-License-Identifier: GPL-3.0-or-later
#include "scenepress.h"

#include <QCoreApplication>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QScopedValueRollback>

namespace toolkit {

namespace {

bool cancelling = false;

} // namespace

void cancelScenePress(QGraphicsScene *scene)
{
    if (scene == nullptr || scene->mouseGrabberItem() == nullptr)
        return;
    const QScopedValueRollback guard(cancelling, true);
    const QPointF away(-1e5, -1e5);
    QGraphicsSceneMouseEvent release(QEvent::GraphicsSceneMouseRelease);
    release.setScenePos(away);
    release.setLastScenePos(away);
    release.setScreenPos(away.toPoint());
    release.setLastScreenPos(away.toPoint());
    release.setButton(Qt::LeftButton);
    release.setButtons(Qt::NoButton);
    QCoreApplication::sendEvent(scene, &release);
}

bool isCancellingScenePress()
{
    return cancelling;
}

} // namespace toolkit
