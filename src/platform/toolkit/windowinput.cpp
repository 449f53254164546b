// SPDX-License-Identifier: GPL-3.0-or-later
#include "windowinput.h"

#include "applicationpage.h"
#include "applicationwindow.h"
#include "pannableviewport.h"
#include "scenemanager.h"
#include "scenepress.h"

#include <QGraphicsItem>
#include <QGraphicsScene>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

namespace toolkit {

bool WindowInput::key(QKeyEvent *event)
{
    if (offeredToPage(event))
        return true;
    switch (event->key()) {
    case Qt::Key_Escape:
        if (!event->isAutoRepeat() && !leaveFullScreen())
            back();
        return true;
    case Qt::Key_Back:
        if (!event->isAutoRepeat())
            back();
        return true;
    case Qt::Key_F11:
        if (m_window->profile() == ApplicationWindow::Profile::Desktop)
            m_window->setFullScreen(!m_window->isFullScreen());
        return true;
    default:
        break;
    }
    const QGraphicsItem *focus = m_window->scene()->focusItem();
    const bool inTextField = focus != nullptr && (focus->flags() & QGraphicsItem::ItemAcceptsInputMethod);
    ApplicationPage *page = m_window->sceneManager()->visiblePage();
    return !inTextField && page != nullptr && !m_window->sceneManager()->isBlocked()
        && page->pannableViewport()->scrollByKey(event);
}

// While nothing on the page has the focus, the page itself hears the keys.
bool WindowInput::offeredToPage(QKeyEvent *event)
{
    ApplicationPage *page = m_window->sceneManager()->visiblePage();
    if (page == nullptr || m_window->scene()->focusItem() != nullptr || m_window->isMenuOpen()
        || m_window->sceneManager()->isBlocked())
        return false;
    event->accept();
    m_window->scene()->sendEvent(page, event);
    return event->isAccepted();
}

bool WindowInput::press(QMouseEvent *event, const QPointF &position)
{
    if (event->button() == Qt::BackButton) {
        back();
        return true;
    }
    if (!m_window->sceneManager()->takesPress(position))
        return true;
    if (event->button() == Qt::LeftButton)
        m_edgeSwipe.press(position, m_window->logicalSize(), QGuiApplication::layoutDirection());
    return false;
}

bool WindowInput::move(const QPointF &position)
{
    if (!m_edgeSwipe.move(position))
        return false;
    cancelScenePress(m_window->scene());
    back();
    return true;
}

void WindowInput::release()
{
    m_edgeSwipe.release();
}

void WindowInput::cancel()
{
    m_edgeSwipe.release();
    cancelScenePress(m_window->scene());
}

// Whoever made the window fill the screen gets out by the same key everywhere; a menu or a dialog goes first.
bool WindowInput::leaveFullScreen()
{
    if (m_window->profile() != ApplicationWindow::Profile::Desktop || !m_window->isFullScreen()
        || m_window->isMenuOpen() || m_window->sceneManager()->isBlocked())
        return false;
    m_window->setFullScreen(false);
    return true;
}

void WindowInput::back()
{
    m_window->sceneManager()->escape();
}

} // namespace toolkit
