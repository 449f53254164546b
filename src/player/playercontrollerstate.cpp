// SPDX-License-Identifier: GPL-3.0-or-later
// What the renderer and the device tell the player controller.
#include "playercontroller.h"

#include "playererrors.h"
#include "playerlog.h"

#include <data/thumbnailhelper.h>
#include <data/videoconstants.h>
#include <platform/system/devicestate.h>
#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationwindow.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int userInterfaceBacklight = 1;
constexpr int movingImageBacklight = 3;

toolkit::ApplicationWindow *window()
{
    return toolkit::Application::activeApplicationWindow();
}

} // namespace

void PlayerController::rendererStateChanged(AvloRenderer::State state)
{
    m_state = state;
    const bool goesOn = m_resumeWhenPaused && state == AvloRenderer::Paused;
    forgetCommand();
    followPlace();
    switch (int(state)) {
    case AvloRenderer::Stopped:
        setBacklight(userInterfaceBacklight);
        break;
    case AvloRenderer::Playing:
        setBacklight(movingImageBacklight);
        playingReached();
        break;
    case AvloRenderer::Paused:
        setBacklight(userInterfaceBacklight);
        handleEvent(PausedReached);
        if (goesOn)
            resume();
        break;
    case AvloRenderer::Transitioning:
        setBacklight(userInterfaceBacklight);
        handleEvent(TransitionBegan);
        break;
    default:
        setBacklight(userInterfaceBacklight);
        handleEvent(TransitionEnded);
        break;
    }
}

// What was asked for has arrived, or something else has.
void PlayerController::forgetCommand()
{
    m_resuming = m_pausing = m_resumeWhenPaused = false;
}

// Each reason to pause asks for itself, also when another has asked already.
void PlayerController::playingReached()
{
    handleEvent(TransitionEnded);
    if (m_minimized || m_qlbOpen)
        pause();
    else
        pauseUnlessWatched();
    actOnPendingAction();
    handleEvent(PlayingReached);
    if (!m_deviceLocked && !m_displayOff) {
        if (window() && window()->isInSwitcher()) {
            pause();
            return;
        }
        if (!m_pauseWhenPlaying)
            return;
    }
    pause();
}

void PlayerController::pauseUnlessWatched()
{
    if (window() && !window()->isOnDisplay())
        pause();
}

void PlayerController::actOnPendingAction()
{
    if (m_pendingAction == StopWhenPlaying)
        stop();
    else if (m_pendingAction == PauseWhenPlaying)
        pause();
}

void PlayerController::error(AvloError e)
{
    handleEvent(ErrorHappened);
    qCWarning(lcPlayer).noquote() << "void PlayerController::error(AvloError)" << e.code << e.message;
    const PlayerError meaning = playerErrorFor(e.code, callMonitor()->getState() != 0);
    if (m_state == AvloRenderer::Transitioning) // nothing was seen
        forgetPlace();
    else
        saveLastKnownPlace();
    if (!meaning.messageId)
        return;
    Q_EMIT rendererError(qtTrId(meaning.messageId));
    if (!meaning.critical)
        return;
    // Nobody waits for it to pause.
    if (m_state != AvloRenderer::Stopped) {
        stop();
        rendererStateChanged(AvloRenderer::Stopped);
    }
    Q_EMIT criticalError();
}

CallMonitor *PlayerController::callMonitor()
{
    if (!m_callMonitor)
        m_callMonitor = CallMonitor::create(this);
    return m_callMonitor;
}

void PlayerController::handleMetadataChange(QString metadata, QList<QVariant> values)
{
    if (metadata == PAUSED_THUMBNAIL_PROPERTY) {
        const QString uri = values.value(0).toString();
        const QString file = values.value(1).toString();
        if (file != m_pauseThumbnailUri && m_thumbnails->createPauseThumbnail(uri, file))
            Q_EMIT pauseThumbnailUpdated();
    } else if (metadata == "res-x"_L1 || metadata == "res-y"_L1) {
        m_hasPicture = true;
    }
}

bool PlayerController::isTvOut() const
{
    const QString route = m_videoRoute->value().toString();
    return route == ROUTE_BUILTIN_AND_TVOUT || route == ROUTE_TVOUT;
}

void PlayerController::tvOutvalueChanged()
{
    if (isTvOut())
        return;
    if (m_deviceLocked || m_displayOff || m_qlbOpen)
        pause();
    else
        pauseUnlessWatched();
}

// A clip without a picture goes on under the lock.
bool PlayerController::isPlayingPicture() const
{
    return m_hasPicture && m_state != AvloRenderer::Stopped && m_state != AvloRenderer::Paused;
}

void PlayerController::deviceLockStatusChanged(bool locked)
{
    const bool playsOnTvOnly = isTvOut() && m_displayOff;
    if (!playsOnTvOnly && locked && isPlayingPicture())
        pause();
    m_deviceLocked = locked;
}

void PlayerController::displayStatusChanged(bool on)
{
    m_displayOff = !on;
    if (!on) {
        Q_EMIT deviceDisplayStatusOff();
        return;
    }
    if (m_deviceLocked && isPlayingPicture())
        pause();
}

void PlayerController::setBacklight(int mode)
{
    if (!m_backlight)
        m_backlight.reset(BacklightControl::create());
    if (m_backlight)
        m_backlight->set(mode);
}
