// SPDX-License-Identifier: GPL-3.0-or-later
// What comes to the player page from outside: the window, keys, the memory card.
#include "playerpage.h"

#include "navigationbarwidget.h"
#include "playercontroller.h"
#include "playerlog.h"

#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/scenemanager.h>

#include <QEvent>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QTimer>

namespace {

constexpr int seekStepSeconds = 10;
constexpr qreal opacityInUse = 0.9;

toolkit::ApplicationWindow *activeWindow()
{
    return toolkit::Application::activeApplicationWindow();
}

} // namespace

bool PlayerPage::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::WindowBlocked:
        if (!m_wasPlaying)
            saveCurrentState();
        m_dialogGuard->stop();
        setControlsEnabled(false);
        break;
    case QEvent::WindowDeactivate:
        if (hasController("virtual bool PlayerPage::event(QEvent*)") && isPlaying()
            && !m_controller->isDisplayOff() && m_controller->hasPicture())
            pauseAndRemember();
        break;
    case QEvent::WindowUnblocked:
        windowUnblocked();
        break;
    case QEvent::WindowActivate:
        m_shareOpened = false;
        if (!activeWindow() || !activeWindow()->isMenuOpen())
            setControlsEnabled(true);
        break;
    default:
        break;
    }
    return ApplicationPage::event(event);
}

void PlayerPage::windowUnblocked()
{
    if (!hasController("virtual bool PlayerPage::event(QEvent*)"))
        return;
    if (m_dialogOpen)
        m_dialogGuard->start();
    else
        m_controller->setPauseWhenPlaying(false);
    const bool goesOn = m_wasPlaying && mayGoOn() && !m_shareOpened && !m_dialogOpen
        && m_savedState == AvloRenderer::Playing;
    if (goesOn && m_controller->state() == AvloRenderer::Paused) {
        m_controller->resume();
        m_wasPlaying = false;
    } else if (goesOn && m_controller->isPausing()) { // closed sooner than the renderer answers
        m_controller->resumeWhenPaused();
        m_wasPlaying = false;
    }
    m_shareOpened = false;
    setControlsEnabled(true);
}

// Somebody else let it go on after the page had paused it: there is nothing left that a menu or a sheet,
// which may be opened much later, over a video that the person has paused, would have to do.
void PlayerPage::rendererStateChanged(AvloRenderer::State state)
{
    const bool waits = m_dialogOpen || (activeWindow() && activeWindow()->sceneManager()->isBlocked());
    if (state == AvloRenderer::Playing && !waits)
        m_wasPlaying = false;
}

bool PlayerPage::mayGoOn() const
{
    return !isInSwitcher() && !m_minimized && !m_controller->isDeviceLocked()
        && !m_controller->isDisplayOff();
}

// Space presses the button that has the focus, in the bar, among the controls and in the options, and does
// nothing else.
bool PlayerPage::isButtonFocused() const
{
    QGraphicsItem *focus = scene() ? scene()->focusItem() : nullptr;
    return focus && qobject_cast<toolkit::Button *>(focus->toGraphicsObject());
}

void PlayerPage::keyEvent(QKeyEvent *eventData)
{
    if (!activeWindow() || activeWindow()->isMenuOpen() || isDialogShown())
        return;
    const bool pressed = eventData->type() == QEvent::KeyPress;
    if (m_videoWidget)
        m_videoWidget->keyEvent(eventData);
    switch (eventData->key()) {
    case Qt::Key_Backspace:
        backButton();
        break;
    case Qt::Key_Space: // once, however long it is held
        if (eventData->type() == QEvent::KeyRelease && !eventData->isAutoRepeat() && !isButtonFocused()
            && hasController("void PlayerPage::keyEvent(QKeyEvent*)"))
            m_controller->togglePause();
        break;
    case Qt::Key_Left:
        if (pressed && m_videoWidget)
            m_videoWidget->seekBy(-seekStepSeconds);
        break;
    case Qt::Key_Right:
        if (pressed && m_videoWidget)
            m_videoWidget->seekBy(seekStepSeconds);
        break;
    default:
        break;
    }
}

void PlayerPage::pageMinimized()
{
    m_minimized = true;
    if (!hasController("void PlayerPage::pageMinimized()"))
        return;
    m_controller->handleEvent(PlayerController::PageMinimized);
    if (!isShown())
        return;
    m_controller->setPendingAction(PlayerController::PauseWhenPlaying);
    disconnectBuffering();
    if (m_controller->state() != AvloRenderer::Stopped && m_controller->state() != AvloRenderer::Paused
        && m_controller->hasPicture())
        m_controller->pause();
}

void PlayerPage::pageMaximized()
{
    m_minimized = false;
    if (!hasController("void PlayerPage::pageMaximized()"))
        return;
    m_controller->handleEvent(PlayerController::PageMaximized);
    if (isShown()) {
        m_controller->setPendingAction(PlayerController::NoAction);
        connectBuffering();
    }
    if (activeWindow())
        m_controller->setXid(int(activeWindow()->effectiveWindowId()));
}

void PlayerPage::playerPageNotOnTop()
{
    toolkit::ApplicationWindow *window = activeWindow();
    if (window)
        window->setGlobalAlpha(1.0);
    navigationBar()->setOpacity(1.0);
    if (!hasController("void PlayerPage::playerPageNotOnTop()"))
        return;
    if (window && !window->isOnDisplay() && isPlaying() && !m_controller->isTvOut()
        && m_controller->hasPicture())
        m_controller->pause();
}

void PlayerPage::qlbOpened(bool open)
{
    m_qlbOpen = open;
    if (!hasController("void PlayerPage::qlbOpened(bool)"))
        return;
    m_controller->setQlbOpen(open);
    if (open && isPlaying() && !m_controller->isTvOut() && m_controller->hasPicture())
        m_controller->pause();
}

void PlayerPage::massStorageModeChanged(bool mounted)
{
    if (mounted) {
        returnFromMassStorageMode();
        return;
    }
    closeDialogs();
    navigationBar()->setOpacity(opacityInUse);
}

void PlayerPage::returnFromMassStorageMode()
{
    if (m_minimized || !hasController("void PlayerPage::returnFromMassStorageMode()"))
        return;
    m_controller->setPendingAction(PlayerController::NoAction);
    connectBuffering();
    m_controller->setControlsVisible(true);
    controlsVisibilityChanged(true);
    m_controller->handleEvent(PlayerController::BackFromMassStorage);
}

void PlayerPage::preUnmount()
{
    if (!hasController("void PlayerPage::preUnmount()") || m_controller->lastVideo().urn.isEmpty())
        return;
    // Nor does the end of a dialog or of the details let it go on: an open file holds the card.
    m_wasPlaying = false;
    if (m_savedState == AvloRenderer::Playing)
        m_savedState = AvloRenderer::Paused;
    m_controller->pause();
}
