// SPDX-License-Identifier: GPL-3.0-or-later
// What comes from outside: window, bus, locks, display, calls, settings, memory card.
#include "applicationcontroller.h"

#include "applog.h"
#include "data/mmcmonitor.h"
#include "data/videoconstants.h"
#include "details/detailspage.h"
#include "kestrelinterfaceadaptor.h"
#include "kestrelservice.h"
#include "library/localvideospage.h"
#include "mmcinfopage.h"
#include "platform/media/mediabackend.h"
#include "platform/media/rendererregistry.h"
#include "platform/system/devicestate.h"
#include "platform/system/settingsmanager.h"
#include "platform/system/usernotice.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/scenemanager.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"
#include "powerpolicy.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QEvent>
#include <QKeyEvent>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using toolkit::Application;
using toolkit::ApplicationWindow;

namespace {

enum Lock { DeviceLock = 0, KeyLock = 1 };
constexpr int Locked = 1;
constexpr int DisplayOn = 1;

// A name that is taken comes to this program when its owner ends, perhaps an instance that is just ending.
void takeServiceName(const QDBusConnection &bus)
{
    const QString name = u"com.harrow.orlan.sorelkit.KestrelService"_s;
    if (!bus.isConnected())
        return;
    const auto taken = bus.interface()->registerService(name, QDBusConnectionInterface::QueueService);
    if (!taken.isValid() || taken.value() != QDBusConnectionInterface::ServiceRegistered)
        qCWarning(appLog) << "void ApplicationController::registerService()"
                          << "Taken by another program, this one waits for it:" << qUtf8Printable(name);
}

} // namespace

void ApplicationController::initObjects()
{
    if (m_objectsInitialised)
        return;
    m_objectsInitialised = true;
    createLockWatcher();
    readDisplayState();
    registerService();
    connectWindow();
    refreshSettings();
    setUpMemoryCard();
    if (!m_startAddress.isEmpty())
        processAndPlay(m_startAddress, 0);
    m_callMonitor = CallMonitor::create(this);
    m_powerPolicy = new PowerPolicy(m_displayWatcher, this);
    if (m_playerController)
        m_powerPolicy->setPlayer(m_playerController, m_playerPage->videoWidget());
    if (!m_serviceFramework)
        QTimer::singleShot(0, this, &ApplicationController::initServices);
}

void ApplicationController::createLockWatcher()
{
    m_lockWatcher = LockWatcher::create(this);
    connect(m_lockWatcher, &LockWatcher::stateChanged, this, &ApplicationController::deviceLockStatusChanged);
    m_deviceLockState = m_lockWatcher->state(DeviceLock);
    m_keyLockState = m_lockWatcher->state(KeyLock);
}

void ApplicationController::createDisplayWatcher()
{
    if (m_displayWatcher)
        return;
    m_displayWatcher = DisplayWatcher::create(this);
    connect(m_displayWatcher, &DisplayWatcher::stateChanged, this,
            &ApplicationController::deviceDisplayStateChanged);
}

// Also for a player that is made before the rest of the device machinery.
void ApplicationController::readDisplayState()
{
    if (m_displayStateRead)
        return;
    createDisplayWatcher();
    m_displayState = m_displayWatcher->state();
    m_displayStateRead = true;
}

void ApplicationController::registerService()
{
    m_service = new KestrelService(this);
    m_adaptor = new KestrelInterfaceAdaptor(m_service);
    QDBusConnection bus = QDBusConnection::sessionBus();
    // The object first: whoever waits for the name calls at once.
    bus.registerObject(u"/"_s, m_service, QDBusConnection::ExportAdaptors);
    takeServiceName(bus);
    connect(m_service, &KestrelService::startPlayFromPosition, this,
            &ApplicationController::serviceFwPlayRequest);
    connect(m_service, &KestrelService::raise, this, &ApplicationController::raiseToTop);
    connect(m_service, &KestrelService::cancelled, this, &ApplicationController::stopAndQuit);
}

void ApplicationController::connectWindow()
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window) {
        qCWarning(appLog) << "void ApplicationController::initObjects()"
                          << "Kestrel: Unable to get active window.";
        return;
    }
    window->installEventFilter(this);
    window->viewport()->installEventFilter(this);
    connect(window, &ApplicationWindow::viewportReplaced, this,
            [this, window] { window->viewport()->installEventFilter(this); });
    connect(window, &ApplicationWindow::switcherEntered, this, &ApplicationController::minimized);
    connect(window, &ApplicationWindow::switcherExited, this, &ApplicationController::maximized);
    window->setToolbarView(ApplicationWindow::ToolbarView::Tab);
}

bool ApplicationController::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        Q_EMIT keyEvent(static_cast<QKeyEvent *>(event));
        break;
    case QEvent::KeyRelease:
        if (isOnTop(m_playerPage))
            Q_EMIT keyEvent(static_cast<QKeyEvent *>(event));
        break;
    case QEvent::WinIdChange:
        if (const auto *widget = qobject_cast<QWidget *>(watched);
            widget && widget->isWindow() && m_playerController)
            m_playerController->setXid(int(widget->effectiveWinId()));
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void ApplicationController::refreshSettings()
{
    if (!m_settings) {
        m_settings = SettingsManager::instance();
        connect(m_settings, &SettingsManager::settingsModified, this,
                &ApplicationController::refreshSettings);
    }
    if (m_playerController) {
        m_playerController->setStartMode(m_settings->playbackStartMode() != 0 ? 1 : 0);
        m_playerController->setDisplayMode(m_settings->playbackDisplayMode() != 0 ? 1 : 0);
    }
    const bool extensions = m_settings->onlineContentMode() == 1;
    if (extensions)
        createDetailsPage();
    if (m_detailsPage && extensions)
        m_detailsPage->loadExtensions();
    else if (m_detailsPage)
        m_detailsPage->unloadExtensions();
}

void ApplicationController::deviceLockStatusChanged(int lock, int state)
{
    if (lock == DeviceLock)
        m_deviceLockState = state;
    else if (lock == KeyLock)
        m_keyLockState = state;
    tellLockState();
}

void ApplicationController::tellLockState()
{
    if (m_playerController)
        m_playerController->deviceLockStatusChanged(m_deviceLockState == Locked || m_keyLockState == Locked);
}

void ApplicationController::deviceDisplayStateChanged(int state)
{
    m_displayState = state;
    tellDisplayState();
}

void ApplicationController::tellDisplayState()
{
    if (m_playerController)
        m_playerController->displayStatusChanged(m_displayState == DisplayOn);
}

void ApplicationController::showNotification(const QString &message)
{
    NotificationService::instance()->publishDeviceError(message);
}

void ApplicationController::setUpMemoryCard()
{
    m_mmcMonitor = MmcMonitor::instance();
    if (!m_mmcMonitor) {
        qCWarning(appLog) << "void ApplicationController::setUpMemoryCard()"
                          << "Video: Cannot get mmc state!";
        return;
    }
    m_mmcAvailable = MmcMonitor::isAvailable();
    connect(m_mmcMonitor, &MmcMonitor::mmcStateChanged, this, &ApplicationController::mmcStateChanged,
            Qt::UniqueConnection);
    connect(m_mmcMonitor, &MmcMonitor::preUnmount, this, &ApplicationController::preUnmount,
            Qt::UniqueConnection);
}

bool ApplicationController::currentVideoNeedsCard() const
{
    if (!m_playerController)
        return true;
    const VideoInfo &video = m_playerController->currentVideo();
    return !video.urn.isEmpty() || video.url.contains(MYDOCS_URL);
}

void ApplicationController::mmcStateChanged(bool available)
{
    m_mmcAvailable = available;
    if (isOnTop(m_playerPage))
        m_playerPage->massStorageModeChanged(available);
    Q_EMIT mmcStatusChanged(available);
    if (available)
        hideMmcInfoPage();
    else if (!isOnTop(m_playerPage) || currentVideoNeedsCard())
        showMmcInfoPage();
}

void ApplicationController::showMmcInfoPage()
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window) {
        qCWarning(appLog) << "void ApplicationController::showMmcInfoPage()"
                          << "Kestrel: Unable to get active window.";
        return;
    }
    if (!m_mmcInfoPage)
        m_mmcInfoPage = new MmcInfoPage;
    window->sceneManager()->showOverlayPage(m_mmcInfoPage);
}

void ApplicationController::hideMmcInfoPage()
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window) {
        qCWarning(appLog) << "void ApplicationController::hideMmcInfoPage()"
                          << "Kestrel: Unable to get active window.";
        return;
    }
    if (m_mmcInfoPage)
        window->sceneManager()->hideOverlayPage(m_mmcInfoPage);
}

// Loads what playing needs while the person looks at the list, so that the first tap does not wait for it.
void ApplicationController::initializeAvloShared()
{
    if (m_sharedMedia)
        return;
    // Kept: it gets ready on a thread of its own, and to let go of it is to wait for that.
    m_sharedMedia = RendererRegistry::createBackend();
    if (!m_sharedMedia)
        qCWarning(appLog) << "void ApplicationController::initializeAvloShared()"
                          << "AvloShared initialize failed! Check D-BUS";
}
