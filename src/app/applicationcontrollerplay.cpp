// SPDX-License-Identifier: GPL-3.0-or-later
// The road of a play request: address, record, player.
#include "applicationcontroller.h"

#include "applog.h"
#include "data/playrecorder.h"
#include "data/thumbnailhelper.h"
#include "data/trackerinterface.h"
#include "kestrelservice.h"
#include "library/localvideospage.h"
#include "platform/media/rendererregistry.h"
#include "platform/media/videowidget.h"
#include "platform/system/devicestate.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "powerpolicy.h"
#include "remotecontrol.h"

#include <QCoreApplication>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int AutoUpdateDelay = 1500; // ms
constexpr int LookupGuard = 4000; // ms; twice what the store's driver takes to give up
constexpr int PlayedTimeGuard = 1000; // ms
// Paths end at 4,096 bytes, three characters each when they are escaped, and servers refuse less than this.
constexpr qsizetype LongestAddress = 65536;

} // namespace

void ApplicationController::createPlayerPage()
{
    if (!m_playerPage) {
        auto *videoWidget = new VideoWidget;
        m_playerController = new PlayerController(videoWidget, RendererRegistry::instance(), m_store,
                                                  ThumbnailHelper::instance(), this);
        m_playerController->setJournal(m_journal);
        m_playerPage = new PlayerPage(videoWidget, m_playerController);
        m_playerPage->setStyleName(u"KestrelPlayerPage"_s);
        connectPlayerPage();
        if (m_powerPolicy)
            m_powerPolicy->setPlayer(m_playerController, videoWidget);
        m_playRecorder = new PlayRecorder(this);
        m_remoteControl = new RemoteControl(this);
        m_remoteControl->setPlayer(m_playerController, videoWidget);
        refreshSettings();
        tellLockState();
        readDisplayState();
        tellDisplayState();
    }
    const bool leavingEndsProgram = opensFromOutside() || m_serviceRequest;
    m_playerPage->setBackButtonType(leavingEndsProgram ? PlayerPage::TvMainViewBackButton
                                                       : PlayerPage::NormalBackButton);
    m_playerController->setPendingAction(PlayerController::NoAction);
}

void ApplicationController::connectPlayerPage()
{
    if (m_libraryPage)
        connect(m_playerPage, &PlayerPage::deleteFile, m_libraryPage, &LocalVideosPage::deleteFile,
                Qt::UniqueConnection);
    connect(m_playerPage, &PlayerPage::goBack, this, &ApplicationController::returnFromPlay);
    connect(m_playerPage, &PlayerPage::shareVideo, this, &ApplicationController::shareVideo);
    connect(m_playerPage, &PlayerPage::showDetailsPage, this,
            qOverload<>(&ApplicationController::showDetails));
    connect(m_playerPage, &PlayerPage::playerError, this, &ApplicationController::showInfoBanner);
    connect(m_playerPage, &PlayerPage::notify, this, &ApplicationController::showInfoBanner);
    connect(m_playerController, &PlayerController::playbackIsStarted, this,
            &ApplicationController::countPlay);
    connect(this, &ApplicationController::minimized, m_playerPage, &PlayerPage::pageMinimized);
    connect(this, &ApplicationController::maximized, m_playerPage, &PlayerPage::pageMaximized,
            Qt::QueuedConnection);
    connect(this, &ApplicationController::preUnmount, m_playerPage, &PlayerPage::preUnmount);
    // A parked request also starts when the place could not be saved in time.
    connect(m_playerPage, &PlayerPage::savingReady, this, &ApplicationController::delayedAccessPlayerPage);
}

void ApplicationController::processAndPlay(QString &url, int position)
{
    Q_EMIT launched();
    if (url.isEmpty()) {
        qCWarning(appLog) << "void ApplicationController::processAndPlay(QString&, int)"
                          << "Empty url";
        return;
    }
    connect(m_store, &TrackerInterface::dataFromUrlFinished, this, &ApplicationController::trackerDataReady,
            Qt::UniqueConnection);
    m_lookedUpUrl = url;
    m_lookedUpPosition = uint(position);
    m_storeQueryId = m_store->dataFromUrl(url, uint(position));
    if (m_storeQueryId == 0)
        qCWarning(appLog) << "void ApplicationController::processAndPlay(QString&, int)"
                          << "Tracker query failed";
    m_lookupGuard->start(m_storeQueryId == 0 ? 0 : LookupGuard);
}

// What was asked for is played although the store tells nothing of it.
void ApplicationController::playWithoutStore()
{
    m_storeQueryId = 0;
    VideoInfo info;
    info.url = m_lookedUpUrl;
    info.playPosition = m_lookedUpPosition;
    playLookedUp(info);
}

// A position that was asked for counts more than the place saved last, perhaps of this very video just now.
void ApplicationController::playLookedUp(VideoInfo &info)
{
    if (m_lookedUpPosition != 0 && m_playerController && !isCallActive())
        m_playerController->forgetSavedPlace();
    play(info);
}

void ApplicationController::trackerDataReady(VideoInfo info, int id)
{
    if (id == 0 || id != m_storeQueryId)
        return;
    m_storeQueryId = 0;
    m_lookupGuard->stop();
    disconnect(m_store, &TrackerInterface::dataFromUrlFinished, this,
               &ApplicationController::trackerDataReady);
    playLookedUp(info);
}

bool ApplicationController::isCallActive() const
{
    return m_callMonitor && m_callMonitor->getState() != 0;
}

void ApplicationController::refuseDuringCall()
{
    const QString message = qtTrId("qtn_vide_error_call");
    if (m_pageStack.isEmpty()) {
        showNotification(message);
        QCoreApplication::quit();
        return;
    }
    showInfoBanner(message);
    if (m_libraryPage)
        m_libraryPage->setCallRefused(true);
}

bool ApplicationController::admitsPlayback(bool withPicture)
{
    if (isCallActive()) {
        refuseDuringCall();
        return false;
    }
    const bool locked = m_deviceLockState == 1 || m_keyLockState == 1;
    return !(locked && withPicture && !(m_playerController && m_playerController->isTvOut()));
}

void ApplicationController::play(VideoInfo &info)
{
    if (isCallActive()) {
        refuseDuringCall();
        return;
    }
    if (m_libraryPage)
        m_libraryPage->setCallRefused(false);
    createPlayerPage();
    processPlayRequest(info);
}

void ApplicationController::processPlayRequest(VideoInfo &info)
{
    m_playerPage->closeDialogs();
    connect(m_playerController, &PlayerController::pauseThumbnailUpdated, this,
            &ApplicationController::pauseThumbnailUpdated, Qt::UniqueConnection);
    if (m_service)
        m_service->notifyPlaybackStarted();
    QTimer::singleShot(AutoUpdateDelay, this, &ApplicationController::delayedAutoUpdate);
    forgetPlayedTimeRequest(); // of a video that was asked for before this one
    if (playbackBlocked()) {
        m_pendingVideo = info;
        m_playPending = true;
        return;
    }
    m_playPending = false;
    if (!m_playerController) {
        qCWarning(appLog) << "void ApplicationController::processPlayRequest(VideoInfo&)"
                          << "Controller not found!";
        return;
    }
    m_playToCount = true;
    m_playerController->play(info);
    goToPage(m_playerPage);
}

bool ApplicationController::playbackBlocked()
{
    if (!isOnTop(m_libraryPage)) {
        qCWarning(appLog) << "bool ApplicationController::playbackBlocked()"
                          << "Playing from unsupported page";
        return false;
    }
    const bool neverLeft = m_playerController && m_playerController->currentVideo().playPosition == 0;
    return !neverLeft && !(m_playerPage && m_playerPage->isSavingDone());
}

void ApplicationController::delayedAccessPlayerPage()
{
    if (!m_playPending)
        return;
    m_playPending = false;
    if (m_pendingVideo.urn.isEmpty()) {
        startPending(); // the store has no place in it
        return;
    }
    connect(m_store, &TrackerInterface::playedTimeFinished, this, &ApplicationController::accessPlayerPage,
            Qt::UniqueConnection);
    m_playedTimeQueryId = m_store->playedTime(m_pendingVideo.urn);
    if (m_playedTimeQueryId == 0)
        startPending();
    else
        m_playedTimeGuard->start(PlayedTimeGuard);
}

void ApplicationController::accessPlayerPage(int playedTime, int id)
{
    if (id == 0 || id != m_playedTimeQueryId || !m_playerPage)
        return;
    forgetPlayedTimeRequest();
    m_pendingVideo.playPosition = quint32(playedTime);
    startPending();
}

void ApplicationController::forgetPlayedTimeRequest()
{
    m_playedTimeQueryId = 0;
    m_playedTimeGuard->stop();
    disconnect(m_store, &TrackerInterface::playedTimeFinished, this,
               &ApplicationController::accessPlayerPage);
}

void ApplicationController::startPending()
{
    goToPage(m_playerPage);
    m_playToCount = true;
    if (m_playerController)
        m_playerController->play(m_pendingVideo);
    else
        qCWarning(appLog) << "void ApplicationController::accessPlayerPage(int, int)"
                          << "Controller not found!";
}

// Once for what was asked for, however late the renderer comes: what goes on after the details is no new
// play.
void ApplicationController::countPlay()
{
    if (!std::exchange(m_playToCount, false))
        return;
    const QString urn = m_playerController->currentVideo().urn;
    if (TrackerInterface::isOnServer())
        m_store->recordPlay(urn);
    else
        m_playRecorder->record(urn);
}

void ApplicationController::serviceFwPlayRequest(QString url, uint position)
{
    m_playGate.pass([this, url, position] { takeServiceRequest(url, position); });
}

void ApplicationController::takeServiceRequest(QString url, uint position)
{
    if (isCallActive()) {
        refuseDuringCall();
        return;
    }
    if (url.isEmpty()) {
        processAndPlay(url, int(position)); // says so; the pages stay as they are
        return;
    }
    if (url.size() > LongestAddress) {
        qCWarning(appLog) << "void ApplicationController::serviceFwPlayRequest(QString, uint)"
                          << "Address too long";
        return;
    }
    m_playPending = false; // asked for before
    forgetPlayedTimeRequest();
    savePlace();
    if (m_libraryPage)
        m_libraryPage->resetFilter();
    if (m_playerPage) {
        m_playerPage->closeDialogs();
        m_playerController->resetIndicatorFlags();
    }
    const bool playerComesBack = m_playerPage && !isOnTop(m_playerPage);
    const QList<toolkit::ApplicationPage *> left = std::exchange(m_pageStack, {});
    m_serviceRequest = true;
    createPlayerPage();
    if (playerComesBack) // until the store has answered, the last frame of another video would be seen
        m_playerPage->videoWidget()->reset();
    raiseToTop();
    processAndPlay(url, int(position));
    showPlayerPage();
    forgetPages(left);
}

void ApplicationController::delayedAutoUpdate()
{
    if (m_libraryPage && isOnTop(m_playerPage))
        m_libraryPage->setAutoUpdate(false);
}

void ApplicationController::stopAndQuit()
{
    if (m_playerController)
        m_playerController->stop(); // saves the place
    QCoreApplication::quit();
}

void ApplicationController::savePlace()
{
    if (m_playerController)
        m_playerController->saveLastKnownPlace();
}
