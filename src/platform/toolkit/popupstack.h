// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPointer>
#include <QRectF>

namespace toolkit {

class ApplicationPage;
class Popup;

// The popups over the pages, the newest on top, and the page that is blocked by them and by menus.
class PopupStack
{
public:
    void add(Popup *popup);
    void remove(Popup *popup);
    [[nodiscard]] QList<Popup *> popups() const { return m_popups; }
    [[nodiscard]] QList<QRectF> keptFree() const; // by all of them
    // False when there is none that could hear it.
    bool escape();

    // Counted: `page` hears of the first, the page that was told hears of the last.
    void block(ApplicationPage *page);
    void unblock();
    // It is being destroyed, perhaps with the popup that blocks it.
    void forget(const ApplicationPage *page);
    [[nodiscard]] bool isBlocked() const { return m_blocks > 0; }

private:
    QList<Popup *> m_popups;
    QPointer<ApplicationPage> m_blockedPage;
    int m_blocks = 0;
};

} // namespace toolkit
