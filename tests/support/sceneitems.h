// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/scenemanager.h>

#include <QGraphicsObject>

// The first child of this kind for which `fits` holds; null: there is none.
template <typename Kind, typename Fits> [[nodiscard]] Kind *childWhere(const QGraphicsItem *parent, Fits fits)
{
    const QList<QGraphicsItem *> children = parent->childItems();
    for (QGraphicsItem *child : children) {
        auto *found = qobject_cast<Kind *>(child->toGraphicsObject());
        if (found && fits(found))
            return found;
    }
    return nullptr;
}

template <typename Kind> [[nodiscard]] Kind *childOf(const QGraphicsItem *parent)
{
    return childWhere<Kind>(parent, [](const Kind *) { return true; });
}

// The dialog, sheet or menu over the page that a person can answer now, when it is of this kind; null: there
// is none.
template <typename Kind> [[nodiscard]] Kind *activePopup(const toolkit::ApplicationWindow &window)
{
    return childWhere<Kind>(window.sceneManager()->root(),
                            [](const Kind *popup) { return popup->isActive(); });
}
