// SPDX-License-Identifier: GPL-3.0-or-later
// Start and pages. Play requests: applicationcontrollerplay.cpp; details and sharing:
// applicationcontrollerdetails.cpp; device and window: applicationcontrollerdevice.cpp.
#include "applicationcontroller.h"

#include "applog.h"
#include "data/positionjournal.h"
#include "data/thumbnailhelper.h"
#include "data/trackerinterface.h"
#include "details/detailspage.h"
#include "details/extensionpage.h"
#include "library/localvideospage.h"
#include "mmcinfopage.h"
#include "platform/media/mediabackend.h"
#include "platform/system/usernotice.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QCoreApplication>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;
using toolkit::Application;
using toolkit::ApplicationWindow;

namespace {

constexpr int ObjectsDelay = 1500; // ms
constexpr int LibraryAngle = 270; // portrait
constexpr int PlayerAngle = 0; // the device's natural landscape

QTimer *guard(QObject *parent, const QString &name)
{
    auto *timer = new QTimer(parent);
    timer->setObjectName(name);
    timer->setSingleShot(true);
    return timer;
}

} // namespace

ApplicationController::ApplicationController(QObject *parent, bool serviceFramework,
                                             const QString &startAddress)
    : QObject(parent),
      m_store(TrackerInterface::instance()),
      m_serviceFramework(serviceFramework),
      m_startAddress(startAddress),
      m_journal(
          new PositionJournal(m_store, ThumbnailHelper::instance(), PositionJournal::defaultFolder(), this)),
      m_lookupGuard(guard(this, u"lookupGuard"_s)),
      m_playedTimeGuard(guard(this, u"playedTimeGuard"_s)),
      m_playGate(u"playGate"_s),
      m_raiseGate(u"raiseGate"_s)
{
    // The store answers neither a request that failed nor one for a place that it does not have.
    connect(m_lookupGuard, &QTimer::timeout, this, &ApplicationController::playWithoutStore);
    connect(m_playedTimeGuard, &QTimer::timeout, this,
            [this] { accessPlayerPage(int(m_pendingVideo.playPosition), m_playedTimeQueryId); });
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &ApplicationController::savePlace);
    QTimer::singleShot(0, this, &ApplicationController::init);
}

ApplicationController::~ApplicationController()
{
    delete m_mmcInfoPage;
    const QList<toolkit::ApplicationPage *> shown = std::exchange(m_pageStack, {});
    for (toolkit::ApplicationPage *page : shown)
        delete qobject_cast<ExtensionPage *>(page);
    delete m_detailsPage;
    delete m_playerPage;
    delete m_libraryPage;
}

void ApplicationController::init()
{
    m_initialised = true;
    m_journal->restore();
    if (opensFromOutside())
        initObjects();
    else
        goToLocalVideosPage();
}

bool ApplicationController::opensFromOutside() const
{
    return m_serviceFramework || !m_startAddress.isEmpty();
}

void ApplicationController::initObjectsTimeout()
{
    if (!m_objectsInitialised)
        initObjects();
}

void ApplicationController::goToLocalVideosPage()
{
    if (!m_libraryPage) {
        m_libraryPage = new LocalVideosPage;
        connectLibraryPage();
        QTimer::singleShot(ObjectsDelay, this, &ApplicationController::initObjectsTimeout);
        setUpMemoryCard();
    }
    setOrientation(0);
    m_libraryPage->hideEmptyFilter();
    goToPage(m_libraryPage);
}

void ApplicationController::connectLibraryPage()
{
    connect(m_libraryPage, &LocalVideosPage::goBackClicked, this, &ApplicationController::goBack);
    connect(m_libraryPage, &LocalVideosPage::showNowPlayingPage, this, &ApplicationController::play);
    connect(m_libraryPage, &LocalVideosPage::shareVideo, this, &ApplicationController::shareVideo);
    connect(m_libraryPage, &LocalVideosPage::showDetailsPage, this,
            qOverload<QString>(&ApplicationController::showDetails));
    connect(m_store, qOverload<QList<QStringList>>(&TrackerInterface::videosChanged), this,
            &ApplicationController::delayedAccessPlayerPage);
    connect(this, &ApplicationController::keyEvent, m_libraryPage, &LocalVideosPage::keyEvent);
    connect(m_libraryPage, &LocalVideosPage::localContentCreated, this, &ApplicationController::initObjects);
    connect(m_libraryPage, &LocalVideosPage::localContentCreated, this,
            &ApplicationController::initializeAvloShared);
    connect(m_libraryPage, &LocalVideosPage::handleError, this, &ApplicationController::showInfoBanner);
    connect(this, &ApplicationController::mmcStatusChanged, m_libraryPage, &LocalVideosPage::mmcStateChanged);
    m_libraryPage->setLibraryReachable(m_isLibraryReachable);
    if (m_playerPage)
        connect(m_playerPage, &PlayerPage::deleteFile, m_libraryPage, &LocalVideosPage::deleteFile,
                Qt::UniqueConnection);
}

void ApplicationController::setLibraryReachable(bool reachable)
{
    m_isLibraryReachable = reachable;
    if (m_libraryPage)
        m_libraryPage->setLibraryReachable(reachable);
}

bool ApplicationController::isOnTop(const toolkit::ApplicationPage *page) const
{
    return page && !m_pageStack.isEmpty() && m_pageStack.last() == page;
}

toolkit::ApplicationPage *ApplicationController::pageBelow(const toolkit::ApplicationPage *page) const
{
    const qsizetype index = m_pageStack.lastIndexOf(page);
    return index > 0 ? m_pageStack.at(index - 1) : nullptr;
}

void ApplicationController::goToPage(toolkit::ApplicationPage *toPage)
{
    if (!toPage) {
        qCWarning(appLog) << "void ApplicationController::goToPage(ApplicationPage*)"
                          << "Kestrel: Cannot go to page, toPage null.";
        return;
    }
    if (isOnTop(toPage))
        return;
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window) {
        qCWarning(appLog) << "void ApplicationController::goToPage(ApplicationPage*)"
                          << "Kestrel: Unable to get active window.";
        return;
    }
    if (toPage == m_playerPage) {
        m_playerPage->setControlsEnabled(true);
        connect(this, &ApplicationController::keyEvent, m_playerPage, &PlayerPage::keyEvent,
                Qt::UniqueConnection);
        if (!m_pageStack.isEmpty())
            m_pageStack.last()->hide();
        setOrientation(1);
        m_playerController->setControlsVisible(false);
        m_pageStack.append(toPage);
        toPage->appear(window, toolkit::Appearance::Immediate);
    } else if (toPage == m_libraryPage) {
        m_pageStack.append(toPage);
        toPage->appear(window, toolkit::Appearance::Immediate);
    } else {
        if (m_playerPage)
            disconnect(this, &ApplicationController::keyEvent, m_playerPage, &PlayerPage::keyEvent);
        m_pageStack.append(toPage);
        toPage->appear(window);
    }
    if (!m_mmcAvailable && (toPage != m_playerPage || currentVideoNeedsCard()))
        showMmcInfoPage();
}

void ApplicationController::setOrientation(int orientation)
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (orientation != 0 && orientation != 1) {
        qCWarning(appLog) << "void ApplicationController::setOrientation(int)"
                          << "Kestrel: Invalid orientation.";
        return;
    }
    if (window && orientation == 1)
        window->setOrientationAngle(PlayerAngle, ApplicationWindow::Transition::Immediate);
    else if (window)
        window->setOrientationAngle(LibraryAngle, ApplicationWindow::Transition::Animated);
    if (m_libraryPage)
        m_libraryPage->setOrientation(orientation);
    if (window)
        window->lockOrientationAngle();
}

void ApplicationController::goBack()
{
    if (m_pageStack.isEmpty()) {
        qCWarning(appLog) << "void ApplicationController::goBack()"
                          << "page list empty, can't go back!";
        QCoreApplication::quit();
        return;
    }
    toolkit::ApplicationPage *leaving = m_pageStack.last();
    const bool toTheLibrary
        = opensFromOutside() || m_serviceRequest || (m_detailsPage && m_pageStack.contains(m_detailsPage));
    if (leaving == m_playerPage && toTheLibrary)
        leaveToLibrary();
    auto *asking = qobject_cast<toolkit::ApplicationPage *>(sender());
    toolkit::ApplicationPage *previous = pageBelow(asking ? asking : m_pageStack.last());
    if (leaving == m_detailsPage && m_playerPage && previous == m_playerPage)
        connect(this, &ApplicationController::keyEvent, m_playerPage, &PlayerPage::keyEvent,
                Qt::UniqueConnection);
    if (leaving == m_playerPage)
        m_playerController->setPauseWhenPlaying(false);
    if (m_pageStack.size() > 1)
        m_pageStack.removeLast();
    leaving->dismiss();
    if (!m_pageStack.contains(leaving))
        forgetPages({leaving});
}

// Behind the player lies the library, from now on as if the person had opened the video there.
void ApplicationController::leaveToLibrary()
{
    m_serviceRequest = false;
    m_serviceFramework = false;
    m_startAddress.clear();
    const QList<toolkit::ApplicationPage *> left = std::exchange(m_pageStack, {});
    goToLocalVideosPage();
    m_playerPage->setBackButtonType(PlayerPage::NormalBackButton);
    forgetPages(left);
}

// Pages beneath others in the window's own history would come back when those above are dismissed.
void ApplicationController::forgetPages(const QList<toolkit::ApplicationPage *> &pages)
{
    for (toolkit::ApplicationPage *page : pages) {
        if (page == m_libraryPage || page == m_playerPage)
            continue;
        page->dismiss();
        if (!qobject_cast<ExtensionPage *>(page))
            continue;
        if (page->isVisible()) // on its way out
            connect(page, &toolkit::ApplicationPage::disappeared, page, &QObject::deleteLater);
        else
            page->deleteLater();
    }
}

void ApplicationController::returnFromPlay()
{
    setOrientation(0);
    if (m_libraryPage)
        m_libraryPage->setAutoUpdate(true);
    if (m_playerPage)
        disconnect(this, &ApplicationController::keyEvent, m_playerPage, &PlayerPage::keyEvent);
    goBack();
}

void ApplicationController::returnToPlay()
{
    if (m_pageStack.isEmpty() || !m_playerPage || pageBelow(m_pageStack.last()) != m_playerPage) {
        goBack();
        return;
    }
    m_playerPage->setControlsEnabled(true);
    setOrientation(1);
    goBack();
    if (m_playerController)
        m_playerController->setControlsVisible(false);
    m_playerPage->resetSavedState();
}

void ApplicationController::raiseToTop()
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window) {
        qCWarning(appLog) << "void ApplicationController::raiseToTop()"
                          << "Kestrel: Unable to get active window.";
        return;
    }
    // Started to wait for calls, and called without anything to play: there is something to see all the same.
    if (m_initialised && m_pageStack.isEmpty() && m_storeQueryId == 0 && !m_serviceRequest)
        goToLocalVideosPage();
    m_raiseGate.pass([] {
        if (ApplicationWindow *current = Application::activeApplicationWindow())
            current->raiseToFront();
    });
}

void ApplicationController::showPlayerPage()
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window || !m_playerPage)
        return;
    m_playerController->handleEvent(PlayerController::PlayRequested);
    m_playerPage->videoWidget()->setFrame(QString());
    m_playerPage->appear(window, toolkit::Appearance::Immediate);
    window->activateWindow();
    window->raise();
    window->setOrientationAngle(PlayerAngle, ApplicationWindow::Transition::Immediate);
    if (!m_mmcAvailable && currentVideoNeedsCard())
        showMmcInfoPage();
}

void ApplicationController::showInfoBanner(const QString &message)
{
    ApplicationWindow *window = Application::activeApplicationWindow();
    if (!window)
        return;
    auto *banner = new toolkit::Banner;
    banner->setStyleName(u"SystemBanner"_s);
    banner->setTitle(message);
    banner->appear(window);
}
