// SPDX-License-Identifier: GPL-3.0-or-later
// The buffer icon and the widget's busy state: each event of the player is one step.
#include "playercontroller.h"

#include "playerlog.h"

#include <iterator>

void PlayerController::handleEvent(int event)
{
    // By number, 0 first.
    static constexpr void (PlayerController::*steps[])() = {
        &PlayerController::indicatePlayRequest,    &PlayerController::indicatePlaying,
        &PlayerController::indicateError,          &PlayerController::indicateTransition,
        &PlayerController::indicateTransitionEnd,  &PlayerController::indicateMinimized,
        &PlayerController::indicateMaximized,      &PlayerController::indicateBack,
        &PlayerController::indicateBuffering,      &PlayerController::indicateBuffered,
        &PlayerController::indicateMassStorageEnd, &PlayerController::indicateIconHidden,
        &PlayerController::indicatePause,
    };
    static_assert(std::size(steps) == PausedReached + 1);

    // An error stays until something plays again: the page that goes and comes back moves nothing.
    if (m_lastEvent == ErrorHappened && (event == PageMinimized || event == PageMaximized)) {
        if (event == PageMaximized)
            m_minimized = false;
        return;
    }
    m_lastEvent = event;
    if (event < 0 || event >= int(std::size(steps))) {
        qCWarning(lcPlayer, "void PlayerController::handleEvent(int) Event doesn't exist");
        return;
    }
    const auto step
        = steps[event]; // by itself: in one expression the bounds check of GCC 12 misreads the index
    (this->*step)();
}

void PlayerController::indicatePlayRequest()
{
    if (m_state == AvloRenderer::Stopped)
        showBufferIcon();
    setBusy(true);
    m_indicatorShown = true;
}

void PlayerController::indicatePlaying()
{
    if (!m_held)
        setBusyOff();
    m_suppressBusyOff = false;
    m_indicatorShown = false;
}

void PlayerController::indicateError()
{
    setBusyOff();
    m_indicatorShown = false;
    Q_EMIT hideBufferIconRequested();
}

void PlayerController::indicateTransition()
{
    showBufferIcon();
    setBusy(true);
    m_transitioning = true;
}

void PlayerController::indicateTransitionEnd()
{
    Q_EMIT hideBufferIconRequested();
    if (!m_held)
        setBusyOff();
    m_suppressBusyOff = false;
    m_transitioning = false;
}

void PlayerController::indicateMinimized()
{
    Q_EMIT hideBufferIconRequested();
    m_minimized = true;
    setBusy(false);
    m_suppressBusyOff = false;
}

void PlayerController::indicateMaximized()
{
    m_minimized = false;
    if (m_transitioning) {
        showBufferIcon();
        setBusy(true);
    }
}

void PlayerController::indicateBack()
{
    Q_EMIT hideBufferIconRequested();
    m_indicatorShown = m_suppressBusyOff = m_held = false;
}

void PlayerController::indicateBuffering()
{
    showBufferIcon();
    setBusy(true);
    m_held = true;
}

void PlayerController::indicateBuffered()
{
    setBusyOff();
    Q_EMIT hideBufferIconRequested();
    m_held = false;
}

void PlayerController::indicateMassStorageEnd()
{
    if (!m_minimized)
        m_suppressBusyOff = true;
}

void PlayerController::indicateIconHidden()
{
    if (!m_minimized)
        setBusy(false);
}

void PlayerController::indicatePause()
{
    Q_EMIT hideBufferIconRequested();
    if (!m_minimized)
        setBusy(false);
}

void PlayerController::showBufferIcon()
{
    if (!m_minimized)
        Q_EMIT showBufferIconRequested();
}

void PlayerController::setBusy(bool busy)
{
    if (m_videoWidget)
        m_videoWidget->setBusy(busy);
}

void PlayerController::setBusyOff()
{
    if (!m_suppressBusyOff)
        setBusy(false);
}

void PlayerController::resetIndicatorFlags()
{
    m_indicatorShown = m_minimized = m_held = m_transitioning = m_suppressBusyOff = false;
}
