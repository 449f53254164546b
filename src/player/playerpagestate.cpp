// SPDX-License-Identifier: GPL-3.0-or-later
// What the player page shows of a playback, and what covers it: spinner, controls, menu, information.
#include "playerpage.h"

#include "navigationbarwidget.h"
#include "playercontroller.h"
#include "playerlog.h"
#include "playeroverlay.h"

#include <platform/media/percenttext.h>
#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/spinner.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal opacityUnderMenu = 0.3;
constexpr qreal spinnerZ = 20;

toolkit::ApplicationWindow *activeWindow()
{
    return toolkit::Application::activeApplicationWindow();
}

void warnNoWindow(const char *function)
{
    qCWarning(lcPlayer, "%s Kestrel: Unable to get active window.", function);
}

} // namespace

void PlayerPage::playbackIsStarted()
{
    m_endedHideControls = false;
    keepRunning(); // the video before had ended and was about to end the program; another came in time
    setControlsAnswering(true);
    // The widget hides its controls when a video begins; what lies over the picture goes with them.
    showComponents(m_videoWidget && m_videoWidget->controlsVisible());
}

void PlayerPage::buffering(float status)
{
    if (!hasController("void PlayerPage::buffering(float)"))
        return;
    if (status >= 100) {
        m_controller->handleEvent(PlayerController::BufferingFull);
        return;
    }
    m_controller->handleEvent(PlayerController::BufferingBelowFull);
    if (!m_bufferStatusLabel) {
        m_bufferStatusLabel = new toolkit::Label(this);
        m_bufferStatusLabel->setStyleName(u"CommonSingleTitleInverted"_s);
        m_bufferStatusLabel->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
        m_bufferStatusLabel->setAcceptedMouseButtons(Qt::NoButton);
        m_bufferStatusLabel->setZValue(spinnerZ);
    }
    m_bufferStatusLabel->setText(percentText(double(status) / 100));
    layOut();
    m_bufferStatusLabel->show();
}

void PlayerPage::showBufferIcon()
{
    m_bufferSpinner->setUnknownDuration(true);
    m_bufferSpinner->show();
}

void PlayerPage::hideBufferIcon()
{
    m_bufferSpinner->hide();
    m_bufferSpinner->reset();
    deleteBufferStatusLabel();
    if (hasController("void PlayerPage::hideBufferIcon()") && m_controller->suppressBusyOff())
        m_controller->handleEvent(PlayerController::BufferIconHidden);
}

void PlayerPage::deleteBufferStatusLabel()
{
    delete m_bufferStatusLabel;
}

void PlayerPage::controlsVisibilityChanged(bool visible)
{
    const bool shown = visible && !m_endedHideControls;
    m_endedHideControls = false;
    showComponents(shown);
    setToolbarVisible(shown);
    if (shown)
        setControlsEnabled(true);
}

// After an error that does not end the page nothing may be left to see on it: it shows what went wrong with,
// how to try again, and how to leave.
void PlayerPage::showWayOn()
{
    if (!m_controller || m_controller->state() != AvloRenderer::Stopped)
        return;
    const bool leaves = m_endedHideControls || m_controller->stopAtEnd();
    if (leaves || !isShown())
        return;
    m_controller->setControlsVisible(true);
    controlsVisibilityChanged(true);
}

void PlayerPage::saveCurrentState()
{
    if (hasController("void PlayerPage::saveCurrentState()"))
        m_savedState = isPlaying() ? AvloRenderer::Playing : m_controller->state();
}

void PlayerPage::pauseAndRemember()
{
    m_controller->pause();
    m_wasPlaying = true;
}

void PlayerPage::handleMenuClick()
{
    constexpr auto function = "void PlayerPage::handleMenuClick()";
    if (!hasController(function))
        return;
    toolkit::ApplicationWindow *window = activeWindow();
    if (!window) {
        warnNoWindow(function);
        return;
    }
    saveCurrentState();
    if (isPlaying())
        pauseAndRemember();
    setControlsEnabled(false);
    translateActions();
    window->openMenu();
    navigationBar()->setOpacity(opacityUnderMenu);
}

void PlayerPage::handleInfoButtonClick()
{
    if (!hasController("void PlayerPage::handleInfoButtonClick()") || m_controller->stopAtEnd())
        return;
    if (isPlaying()) {
        connect(this, &ApplicationPage::appeared, this, &PlayerPage::playerPageOnTop, Qt::UniqueConnection);
        if (m_videoWidget)
            m_videoWidget->setOutputRectangleOverride(true);
    }
    leaveDialogs();
    m_controller->setStopAtEnd(true);
    saveCurrentState();
    Q_EMIT showDetailsPage();
}

void PlayerPage::playerPageOnTop()
{
    disconnect(this, &ApplicationPage::appeared, this, &PlayerPage::playerPageOnTop);
    if (m_videoWidget)
        m_videoWidget->setOutputRectangleOverride(false);
}

void PlayerPage::resetSavedState()
{
    constexpr auto function = "void PlayerPage::resetSavedState()";
    if (!hasController(function))
        return;
    m_controller->setStopAtEnd(false);
    if (m_savedState == AvloRenderer::Playing) {
        if (m_controller->state() == AvloRenderer::Stopped) {
            VideoInfo video = m_controller->lastVideo();
            m_controller->play(video);
        } else if (m_controller->state() == AvloRenderer::Paused) {
            // Nobody sees it there; it waits until somebody says that it goes on.
            if (mayGoOn())
                m_controller->resume();
            m_wasPlaying = false;
        } else if (m_controller->isPausing() && mayGoOn()) { // back sooner than the renderer answers
            m_controller->resumeWhenPaused();
            m_wasPlaying = false;
        } else {
            qCWarning(lcPlayer, "%s Can't resume!", function);
        }
    }
    m_controller->setControlsVisible(false);
    // On the desktop the window stays as the person has it: it sees to that by itself.
    if (toolkit::ApplicationWindow *window = activeWindow())
        window->showFullScreen();
    else
        warnNoWindow(function);
    showComponents(false);
}
