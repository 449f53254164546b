// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"
#include "requestgate.h"

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class CallMonitor;
class DetailsPage;
class DisplayWatcher;
class KestrelInterfaceAdaptor;
class KestrelService;
class LocalVideosPage;
class LockWatcher;
class MediaBackend;
class MmcInfoPage;
class MmcMonitor;
class PlayerController;
class PlayerPage;
class PlayRecorder;
class PositionJournal;
class PowerPolicy;
class QGraphicsWidget;
class QKeyEvent;
class QTimer;
class RemoteControl;
class SettingsManager;
class ShareService;
class TrackerInterface;

namespace toolkit {
class ApplicationPage;
}

// Owns the pages and the player, is the only one that switches pages and that asks the player to play, and
// follows the device: locks, display, calls, memory card, settings.
class ApplicationController : public QObject
{
    Q_OBJECT

public:
    // Does nothing yet: init() runs on the first turn of the event loop. `startAddress` may be empty.
    ApplicationController(QObject *parent, bool serviceFramework, const QString &startAddress);
    ~ApplicationController() override;

    [[nodiscard]] LocalVideosPage *libraryPage() const { return m_libraryPage; }
    [[nodiscard]] PlayerPage *playerPage() const { return m_playerPage; }
    [[nodiscard]] PlayerController *playerController() const { return m_playerController; }
    [[nodiscard]] DetailsPage *detailsPage() const { return m_detailsPage; }
    [[nodiscard]] const QList<toolkit::ApplicationPage *> &pageStack() const { return m_pageStack; }
    // Whether a press of a remote button may start to play: not during a call, of which the person is told,
    // and nothing with a picture under a lock, unless on a TV.
    [[nodiscard]] bool admitsPlayback(bool withPicture);
    // Of the server that holds the library.
    void setLibraryReachable(bool reachable);

    // Forwards keys and window ids; swallows nothing.
    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void minimized();
    void maximized();
    void keyEvent(QKeyEvent *event);
    void mmcStatusChanged(bool mounted);
    void launched();
    void preUnmount();

public Q_SLOTS:
    void showPlayerPage();
    void raiseToTop();
    void goToLocalVideosPage();
    void init();
    void goToPage(toolkit::ApplicationPage *toPage);
    void goBack();
    void returnFromPlay();
    void returnToPlay();
    void initObjects();
    void initObjectsTimeout();
    void createDetailsPage();
    void initServices();
    // Of the video that plays.
    void showDetails();
    // Of a video in the library; `url` is the store's identifier of it.
    void showDetails(QString url);
    void shareVideo(const QString &fileUrl);
    void pauseThumbnailUpdated();
    void showExtensionView(QGraphicsWidget *content, const QString &title);
    void showInfoBanner(const QString &message);
    void showNotification(const QString &message);
    void delayedAccessPlayerPage();
    void refreshSettings();
    // The place in the video that played before is still being saved.
    bool playbackBlocked();
    void stopAndQuit();
    void deviceLockStatusChanged(int lock, int state);
    void deviceDisplayStateChanged(int state);
    void play(VideoInfo &info);
    void serviceFwPlayRequest(QString url, uint position);
    void initializeAvloShared();
    void processAndPlay(QString &url, int position);
    void trackerDataReady(VideoInfo info, int id);
    void delayedAutoUpdate();
    void accessPlayerPage(int playedTime, int id);
    void mmcStateChanged(bool available);
    void showMmcInfoPage();
    void hideMmcInfoPage();

private:
    // Applications.
    void connectLibraryPage();
    Q_INVOKABLE void setOrientation(int orientation);
    void leaveToLibrary();
    // Those that are neither the library nor the player are not seen again.
    void forgetPages(const QList<toolkit::ApplicationPage *> &pages);
    [[nodiscard]] bool isOnTop(const toolkit::ApplicationPage *page) const;
    // Null where there is none, and where `page` is not shown.
    [[nodiscard]] toolkit::ApplicationPage *pageBelow(const toolkit::ApplicationPage *page) const;
    [[nodiscard]] bool opensFromOutside() const;

    // Playing.
    void createPlayerPage();
    void connectPlayerPage();
    void processPlayRequest(VideoInfo &info);
    void refuseDuringCall();
    void playWithoutStore();
    void playLookedUp(VideoInfo &info);
    void startPending();
    void countPlay();
    void forgetPlayedTimeRequest();
    // The video on the player page is being left without its page: its place is kept. There is no time for
    // the still of the frame, which comes late.
    void savePlace();
    void takeServiceRequest(QString url, uint position);
    [[nodiscard]] bool isCallActive() const;

    // Device.
    void createLockWatcher();
    void createDisplayWatcher();
    void readDisplayState();
    void registerService();
    void connectWindow();
    void setUpMemoryCard();
    void tellLockState();
    void tellDisplayState();
    void showMmcInfoPageIfNeeded();
    [[nodiscard]] bool currentVideoNeedsCard() const;

    PlayerPage *m_playerPage = nullptr;
    PlayerController *m_playerController = nullptr;
    LocalVideosPage *m_libraryPage = nullptr;
    DetailsPage *m_detailsPage = nullptr;
    QList<toolkit::ApplicationPage *> m_pageStack; // the last is on top
    KestrelService *m_service = nullptr;
    KestrelInterfaceAdaptor *m_adaptor = nullptr;
    TrackerInterface *m_store;
    bool m_serviceFramework;
    bool m_initialised = false; // init() ran
    bool m_objectsInitialised = false;
    QString m_startAddress;
    bool m_playToCount = false; // the play asked for last has not begun
    PlayRecorder *m_playRecorder = nullptr; // comes with the player
    VideoInfo m_pendingVideo; // parked while the place in the one before is saved
    std::unique_ptr<ShareService> m_shareService;
    LockWatcher *m_lockWatcher = nullptr;
    CallMonitor *m_callMonitor = nullptr;
    RemoteControl *m_remoteControl = nullptr;
    DisplayWatcher *m_displayWatcher = nullptr;
    PowerPolicy *m_powerPolicy = nullptr;
    PositionJournal *m_journal;
    int m_deviceLockState = 2; // 1: locked, 2: unknown
    int m_keyLockState = 2;
    int m_displayState = 2; // 1: on
    bool m_playPending = false;
    SettingsManager *m_settings = nullptr;
    bool m_serviceRequest = false; // the playback was asked for over the bus
    int m_storeQueryId = 0;
    QString m_lookedUpUrl; // of m_storeQueryId
    uint m_lookedUpPosition = 0;
    QTimer *m_lookupGuard;
    MmcMonitor *m_mmcMonitor = nullptr;
    MmcInfoPage *m_mmcInfoPage = nullptr;
    bool m_mmcAvailable = true;
    bool m_displayStateRead = false;
    bool m_isLibraryReachable = true;
    int m_playedTimeQueryId = 0;
    QTimer *m_playedTimeGuard;
    std::unique_ptr<MediaBackend> m_sharedMedia;
    RequestGate m_playGate; // of requests over the bus
    RequestGate m_raiseGate;
};
