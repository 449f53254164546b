// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core_support.h"

#include "platform/toolkit/applicationpage.h"

#include <QEvent>
#include <QList>

// Notes what it is told of the window's activation and of what blocks it.
class Page : public toolkit::ApplicationPage
{
public:
    QList<QEvent::Type> events;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate
            || event->type() == QEvent::WindowBlocked || event->type() == QEvent::WindowUnblocked)
            events.append(event->type());
        return toolkit::ApplicationPage::event(event);
    }
};

// A page and, once it is asked for, a window that shows it.
class WindowFixture
{
protected:
    void setUp() { m_page = std::make_unique<Page>(); }
    void tearDown()
    {
        m_page.reset();
        m_window.reset();
        setReducedMotion(false);
    }
    void show(toolkit::ApplicationWindow::Profile profile)
    {
        m_window = shownWindow(profile);
        m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    }

    std::unique_ptr<toolkit::ApplicationWindow> m_window;
    std::unique_ptr<Page> m_page;
};
