// SPDX-License-Identifier: GPL-3.0-or-later
// What comes to the window from the person and the window system, and its menu.
#include "applicationwindow_p.h"

#include "applicationpage.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWindow>

namespace toolkit {

namespace {

constexpr qreal menuTop = 76;

} // namespace

void ApplicationWindow::openMenu()
{
    ApplicationPage *page = d->manager->visiblePage();
    if (page == nullptr || !ApplicationMenu::hasEntries(page->actions()) || isMenuOpen())
        return;
    // Below the bar, at the end of the lines, where the menu button stands.
    const bool mirrored = page->layoutDirection() == Qt::RightToLeft;
    d->menu = new ApplicationMenu(page->actions());
    d->menu->open(this, QPointF(mirrored ? 0 : logicalSize().width(), menuTop));
}

void ApplicationWindow::closeMenu()
{
    if (d->menu != nullptr)
        d->menu->disappear();
}

bool ApplicationWindow::isMenuOpen() const
{
    return d->menu != nullptr && d->menu->isActive();
}

bool ApplicationWindow::event(QEvent *event)
{
    const bool handled = QGraphicsView::event(event);
    switch (event->type()) {
    case QEvent::Show:
        if (windowHandle() != nullptr)
            windowHandle()->installEventFilter(this);
        d->followScreen();
        break;
    case QEvent::ScreenChangeInternal:
        d->followScreen();
        break;
    case QEvent::WindowActivate:
        // On the desktop the page was active all the time; it still learns that the person is back.
        if (d->pageActive)
            d->manager->sendToPage(QEvent::WindowActivate);
        d->activationChanged();
        break;
    case QEvent::WindowDeactivate:
        d->activationChanged();
        break;
    default:
        break;
    }
    return handled;
}

// The compositor takes the fingers for a gesture of its own. A release follows that is none of theirs, and
// must be no tap.
bool ApplicationWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::TouchCancel && watched == windowHandle())
        d->input.cancel();
    return QGraphicsView::eventFilter(watched, event);
}

void ApplicationWindow::resizeEvent(QResizeEvent *event)
{
    QGraphicsView::resizeEvent(event);
    d->relayout();
}

void ApplicationWindow::keyPressEvent(QKeyEvent *event)
{
    // Straight to the scene: the view would take the arrow keys for scroll bars that are not there.
    QCoreApplication::sendEvent(scene(), event);
    if (!event->isAccepted())
        event->setAccepted(d->input.key(event));
}

void ApplicationWindow::mousePressEvent(QMouseEvent *event)
{
    d->textFocus.setPointerDown(true);
    if (d->input.press(event, mapToScene(event->position().toPoint())))
        return;
    QGraphicsView::mousePressEvent(event);
}

void ApplicationWindow::mouseDoubleClickEvent(QMouseEvent *event)
{
    d->textFocus.setPointerDown(true);
    if (d->input.press(event, mapToScene(event->position().toPoint())))
        return;
    QGraphicsView::mouseDoubleClickEvent(event);
}

void ApplicationWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (!d->input.move(mapToScene(event->position().toPoint())))
        QGraphicsView::mouseMoveEvent(event);
}

void ApplicationWindow::mouseReleaseEvent(QMouseEvent *event)
{
    d->input.release();
    QGraphicsView::mouseReleaseEvent(event);
    d->textFocus.setPointerDown(event->buttons() != Qt::NoButton);
}

} // namespace toolkit
