// SPDX-License-Identifier: GPL-3.0-or-later
#include "textfocus.h"

#include "popup.h"

#include <QGraphicsItem>
#include <QGraphicsScene>

namespace toolkit {

namespace {

Popup *popupOf(const QGraphicsItem *item)
{
    for (QGraphicsItem *parent = item->parentItem(); parent != nullptr; parent = parent->parentItem()) {
        if (auto *popup = qobject_cast<Popup *>(parent->toGraphicsObject()))
            return popup;
    }
    return nullptr;
}

} // namespace

TextFocus::TextFocus(QGraphicsScene *scene) : QObject(scene)
{
    connect(
        scene, &QGraphicsScene::focusItemChanged, this,
        [this](QGraphicsItem *item, QGraphicsItem *, Qt::FocusReason reason) { focusMoved(item, reason); });
}

void TextFocus::focusMoved(QGraphicsItem *item, Qt::FocusReason reason)
{
    // With the window's own focus the item's goes and comes back: a shade that is drawn over the window for a
    // moment turns nothing.
    if (item == nullptr && reason == Qt::ActiveWindowFocusReason)
        return;
    const bool takesText = item != nullptr && item->flags().testFlag(QGraphicsItem::ItemAcceptsInputMethod);
    if (takesText)
        follow(popupOf(item));
    m_wanted = takesText || (m_form != nullptr && m_form->isActive());
    QMetaObject::invokeMethod(this, &TextFocus::settle, Qt::QueuedConnection);
}

void TextFocus::follow(Popup *form)
{
    if (form == m_form)
        return;
    if (m_form != nullptr)
        m_form->disconnect(this);
    m_form = form;
    if (form == nullptr)
        return;
    connect(form, &Popup::disappeared, this, [this] {
        focusMoved(static_cast<QGraphicsScene *>(parent())->focusItem(), Qt::OtherFocusReason);
    });
}

void TextFocus::setPointerDown(bool down)
{
    if (m_pointerDown == down)
        return;
    m_pointerDown = down;
    if (!down)
        QMetaObject::invokeMethod(this, &TextFocus::settle, Qt::QueuedConnection);
}

void TextFocus::settle()
{
    if (m_pointerDown || m_held == m_wanted)
        return;
    m_held = m_wanted;
    Q_EMIT changed(m_held);
}

} // namespace toolkit
