// SPDX-License-Identifier: GPL-3.0-or-later
#include "startup.h"

#include "applicationcontroller.h"
#include "commandline.h"
#include "data/trackerinterface.h"
#include "data/videoconstants.h"
#include "endsignals.h"
#include "fileops/saveasmanager.h"
#include "kestrelapplicationservice.h"
#include "platform/servers/serverdrivers.h"
#include "platform/share/platformshareservice.h"
#include "platform/sparql/sparqldriver.h"
#include "platform/system/usernotice.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/componentcache.h"
#include "platform/toolkit/locale.h"
#include "serverlibrary.h"
#include "startuplog.h"

#include <QGestureRecognizer>
#include <QTimer>

#include <chrono>
#include <memory>

#include <malloc.h>

using namespace Qt::Literals::StringLiterals;
using toolkit::Application;
using toolkit::ApplicationWindow;
using toolkit::ComponentCache;

namespace {

constexpr auto ClearUpDelay = std::chrono::seconds(2); // whoever starts the program waits for other things

QStringList argumentList(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

std::unique_ptr<ApplicationWindow> takeWindow(bool serviceFramework)
{
    std::unique_ptr<ApplicationWindow> window(ComponentCache::applicationWindow());
    window->setStyleName(u"VideoApplicationWindow"_s);
    if (!serviceFramework) {
        window->setPortraitOrientation();
        window->lockOrientationAngle();
    }
    return window;
}

// What a file manager opens takes the road of a play request from the bus.
void acceptFiles(KestrelApplicationService *service, ApplicationController *controller)
{
    QObject::connect(service, &KestrelApplicationService::openRequested, controller,
                     [controller](const QString &address) {
                         // The call may have started the program: what a play request needs may come later.
                         controller->initObjects();
                         controller->serviceFwPlayRequest(address, 0);
                     });
    // After the controller's init(), which is on its way as this is.
    QTimer::singleShot(0, service, &KestrelApplicationService::releaseCalls);
}

// Before anything that reads the library.
std::unique_ptr<ServerLibrary> openServer()
{
    if (!TrackerInterface::isOnServer())
        return {};
    registerServerDrivers();
    auto server = std::make_unique<ServerLibrary>(TrackerInterface::trackerMode());
    server->follow(TrackerInterface::instance());
    return server;
}

void connectServer(ServerLibrary *server, ApplicationWindow *window, ApplicationController *controller)
{
    if (!server)
        return;
    server->follow(window);
    QObject::connect(server, &ServerLibrary::reachableChanged, controller,
                     &ApplicationController::setLibraryReachable);
}

// Every thread would get a heap of its own, up to eight a core, and every video starts a dozen threads: what
// they keep free for themselves would add up to several times what is used.
void shareHeaps()
{
#ifdef __GLIBC__
    mallopt(M_ARENA_MAX, 2);
#endif
}

} // namespace

int runKestrel(int argc, char **argv)
{
    shareHeaps();
    StartupLog startupLog;
    const CommandLine line = parseCommandLine(argumentList(argc, argv));
    for (const QString &mode : line.trackerModes)
        TrackerInterface::setTrackerMode(mode);

    KestrelApplicationService service;
    std::unique_ptr<Application> application(
        ComponentCache::application(argc, argv, APP_IDENTIFIER, &service));
    if (application->isRedirected())
        return 0;
    auto endSignals = std::make_unique<EndSignals>();

    toolkit::Locale locale;
    locale.installTrCatalog(u"video"_s);
    locale.installTrCatalog(u"music"_s);
    toolkit::Locale::setDefault(&locale);
    locale.connectSettings();

    ShareService::setFactory(&PlatformShareService::createOnDefaultBuses);
    std::unique_ptr<ApplicationWindow> window = takeWindow(line.serviceFramework);
    std::unique_ptr<ServerLibrary> server = openServer();
    auto controller
        = std::make_unique<ApplicationController>(nullptr, line.serviceFramework, line.startAddress);
    QObject::connect(&service, &KestrelApplicationService::relaunch, controller.get(),
                     &ApplicationController::raiseToTop);
    acceptFiles(&service, controller.get());
    QTimer::singleShot(ClearUpDelay, controller.get(), &SaveAsManager::clearUp);
    connectServer(server.get(), window.get(), controller.get());
    startupLog.watch(controller.get(), window.get());
    window->showForProfile();
    // Horizontal swipes reach the pages as ordinary movement.
    QGestureRecognizer::unregisterRecognizer(Qt::SwipeGesture);

    const int exitCode = Application::exec();
    // What was saved last is on its way to the store.
    sparqlWaitForUpdates();
    controller.reset();
    server.reset();
    window.reset();
    endSignals.reset();
    application.reset();
    return exitCode;
}
