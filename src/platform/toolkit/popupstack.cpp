// SPDX-License-Identifier: GPL-3.0-or-later
#include "popupstack.h"

#include "applicationpage.h"
#include "popup.h"

#include <QCoreApplication>

namespace toolkit {

void PopupStack::add(Popup *popup)
{
    m_popups.removeOne(popup);
    m_popups.append(popup);
}

void PopupStack::remove(Popup *popup)
{
    m_popups.removeOne(popup);
}

QList<QRectF> PopupStack::keptFree() const
{
    QList<QRectF> areas;
    for (const Popup *popup : m_popups) {
        if (const QRectF area = popup->keptFree(); !area.isEmpty())
            areas.append(area);
    }
    return areas;
}

bool PopupStack::escape()
{
    if (m_popups.isEmpty())
        return false;
    m_popups.last()->escape();
    return true;
}

void PopupStack::block(ApplicationPage *page)
{
    if (m_blocks++ > 0)
        return;
    m_blockedPage = page;
    if (m_blockedPage != nullptr) {
        QEvent event(QEvent::WindowBlocked);
        QCoreApplication::sendEvent(m_blockedPage, &event);
    }
}

void PopupStack::unblock()
{
    if (m_blocks == 0 || --m_blocks > 0)
        return;
    // The page that was told, also when another one is on top by now.
    if (m_blockedPage != nullptr) {
        QEvent event(QEvent::WindowUnblocked);
        QCoreApplication::sendEvent(m_blockedPage, &event);
    }
    m_blockedPage = nullptr;
}

void PopupStack::forget(const ApplicationPage *page)
{
    if (m_blockedPage == page)
        m_blockedPage = nullptr;
}

} // namespace toolkit
