// SPDX-License-Identifier: GPL-3.0-or-later
// What the dialogs of the player page have in common: how they begin, wait, and go without a result.
#include "playerpage.h"

#include "playercontroller.h"
#include "playerlog.h"

#include <fileops/editmanager.h>
#include <fileops/filemanager.h>
#include <fileops/saveasmanager.h>
#include <platform/media/playercontrols.h>
#include <platform/toolkit/applicationwindow.h>

#include <QTimer>

#include <utility>

// The video waits for the dialog; one that only begins to play is paused when it does.
bool PlayerPage::beginDialog(const char *function)
{
    if (!hasController(function) || m_dialogOpen)
        return false;
    if (isPlaying())
        pauseAndRemember();
    else
        m_controller->setPauseWhenPlaying(true);
    m_dialogOpen = true;
    m_dialogGuard->start();
    return true;
}

// There is a dialog that is still going away, and no other comes whose end the page could wait for.
void PlayerPage::refuseDialog(const char *function)
{
    qCWarning(lcPlayer, "%s Dialog already open!", function);
    m_dialogGuard->stop();
    m_dialogOpen = false;
    m_controller->setPauseWhenPlaying(false);
}

// The store does not answer, or knows the video no more: there is nothing to wait for. A dialog that is shown
// tells its end, and so does a deletion that was confirmed. It may have come before the menu was gone: the
// page was blocked all the time.
void PlayerPage::dialogNeverCame()
{
    if (!m_dialogOpen || isDialogUp() || isDeleting())
        return;
    qCWarning(lcPlayer, "the store does not tell of the video: no dialog");
    const bool goesOn = m_wasPlaying && m_savedState == AvloRenderer::Playing;
    closeDialogs();
    if (goesOn && m_controller && m_controller->state() == AvloRenderer::Paused)
        m_controller->resume();
}

// Whoever leaves the page has changed their mind: nothing comes up over another one.
void PlayerPage::leaveDialogs()
{
    if (m_dialogOpen)
        closeDialogs();
}

bool PlayerPage::isDeleting() const
{
    return m_fileManager && m_fileManager->isDeleting();
}

// A tap on play would begin a file that goes away below it.
void PlayerPage::setControlsAnswering(bool answer)
{
    if (m_videoWidget)
        m_videoWidget->controls()->setEnabled(answer);
}

// The file is being removed, and the page has something else to do: whoever lists the video is told, or the
// person.
void PlayerPage::leaveRemoval()
{
    FileManager *manager = m_fileManager.release();
    manager->setParent(this);
    disconnect(manager, &FileManager::deleteDone, this, &PlayerPage::deleteDone);
    connect(manager, &FileManager::deleteDone, this, [this, manager, path = m_deletePath](bool done) {
        if (done)
            Q_EMIT deleteFile(path);
        manager->deleteLater();
    });
}

bool PlayerPage::isDialogShown() const
{
    return m_dialogOpen || isDialogUp();
}

bool PlayerPage::isDialogUp() const
{
    return (m_fileManager && m_fileManager->isDialogOpen())
        || (m_editManager && m_editManager->isSheetDisplayed())
        || (m_saveAsManager && m_saveAsManager->isDialogOpen());
}

void PlayerPage::closeDialogs()
{
    // First: a dialog that goes unblocks the page, which must find nothing to go on with.
    m_dialogGuard->stop();
    m_dialogOpen = false;
    m_wasPlaying = false;
    if (toolkit::ApplicationWindow *shownIn = isShown() ? window() : nullptr)
        shownIn->closeMenu();
    if (isDeleting())
        leaveRemoval();
    if (m_fileManager) {
        m_fileManager->disconnect(this);
        m_fileManager->closeDialog();
        m_fileManager.reset();
    }
    if (m_editManager) {
        m_editManager->disconnect(this);
        m_editManager->closeSheet();
        delete std::exchange(m_editManager, nullptr);
    }
    if (m_saveAsManager) {
        m_saveAsManager->disconnect(this);
        m_saveAsManager->cancelSaveAsDeletion();
        delete std::exchange(m_saveAsManager, nullptr);
    }
    if (m_controller)
        m_controller->setPauseWhenPlaying(false);
}
