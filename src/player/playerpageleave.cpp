// SPDX-License-Identifier: GPL-3.0-or-later
// Leaving the player page: by the back button, at the end of a video, after an error.
#include "playerpage.h"

#include "playercontroller.h"
#include "playerlog.h"

#include <data/videoconstants.h>

#include <QCoreApplication>
#include <QTimer>

bool PlayerPage::hasPlaceToSave() const
{
    const VideoInfo &video = m_controller->lastVideo();
    return video.url.contains(MYDOCS_URL) || !video.urn.isEmpty();
}

void PlayerPage::handleBackButton()
{
    if (!hasController("void PlayerPage::handleBackButton()"))
        return;
    m_controller->disableOutputRectangle();
    Q_EMIT backButtonClicked();
}

void PlayerPage::backButton()
{
    if (!hasController("void PlayerPage::backButton()") || m_controller->stopAtEnd())
        return;
    leaveDialogs();
    keepRunning(); // a video from outside had ended; the person goes to the library instead
    m_controller->setStopAtEnd(true);
    disconnectBuffering();
    setControlsEnabled(false);
    if (hasPlaceToSave()) {
        m_controller->setPendingAction(PlayerController::StopWhenPlaying);
        m_backGuardTimer->start();
        m_savingDone = false;
    } else {
        m_controller->stop();
        m_savingDone = true; // nothing will tell of it
    }
    m_controller->handleEvent(PlayerController::BackPressed);
    Q_EMIT goBack();
    if (m_controller->state() == AvloRenderer::Playing) {
        m_controller->pause();
    } else {
        // No answer of the renderer is waited for; what is saved here tells that by itself.
        const bool told = m_controller->saveLastKnownPlace();
        m_backGuardTimer->stop();
        m_savingDone = true;
        if (!told)
            Q_EMIT savingReady();
    }
    setToolbarVisible(false);
}

void PlayerPage::playTimeSaved()
{
    if (!m_savingDone) {
        m_backGuardTimer->stop();
        m_savingDone = true;
    }
    Q_EMIT savingReady();
}

void PlayerPage::backButtonError()
{
    qCWarning(lcPlayer, "void PlayerPage::backButtonError() Timeout. Couldn't get reply from the renderer");
    const bool told = m_controller && m_controller->saveLastKnownPlace();
    m_savingDone = true;
    if (!told)
        Q_EMIT savingReady();
}

bool PlayerPage::keepRunning()
{
    if (!disconnect(this, &PlayerPage::savingReady, this, &PlayerPage::shutdown))
        return false;
    m_backGuardTimer->stop();
    return true;
}

void PlayerPage::quitWhenSaved()
{
    m_endedHideControls = true;
    connect(this, &PlayerPage::savingReady, this, &PlayerPage::shutdown, Qt::UniqueConnection);
    m_backGuardTimer->start();
}

void PlayerPage::playbackEnded()
{
    if (!hasController("void PlayerPage::playbackEnded()"))
        return;
    if (m_backButtonType != TvMainViewBackButton) {
        backButton();
        return;
    }
    if (!hasPlaceToSave())
        shutdown();
    quitWhenSaved();
}

void PlayerPage::playbackEndedByError()
{
    if (!hasController("void PlayerPage::playbackEndedByError()"))
        return;
    if (m_backButtonType != TvMainViewBackButton)
        backButton();
    else if (!m_controller->lastVideo().urn.isEmpty())
        quitWhenSaved();
}

void PlayerPage::shutdown()
{
    if (!hasController("void PlayerPage::shutdown()"))
        return;
    m_controller->stop();
    QCoreApplication::quit();
}
