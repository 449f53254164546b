// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/applicationcontroller.h"
#include "details/detailspage.h"
#include "library/localvideospage.h"
#include "platform/media/nullmediabackend.h"
#include "platform/system/devicestate.h"
#include "platform/system/usernotice.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/theme.h"
#include "support/fakeshareservice.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"
#include "support/sceneitems.h"

#include <QObject>
#include <QTest>

#include <memory>

class FakeCalls : public CallMonitor
{
public:
    using CallMonitor::CallMonitor;
    [[nodiscard]] int getState() const override { return active; }
    static inline int active = 0;
};

class FakeLocks : public LockWatcher
{
public:
    using LockWatcher::LockWatcher;
    [[nodiscard]] int state(int) const override { return 0; }
};

class FakeNotices : public NotificationService
{
public:
    void publishDeviceError(const QString &message) override { messages.append(message); }
    QStringList messages;
};

[[nodiscard]] VideoInfo video(int number, uint position = 0);

// The controller in a window, over a store that answers as it is told and a player that a clock drives.
class ControllerFixture : public QObject
{
public:
    ControllerFixture(FakeSparqlStore &store, toolkit::ApplicationWindow &window)
        : m_store(store),
          m_window(window)
    {
    }

protected:
    void prepare();
    void clean();
    void start(const QString &address = QString(), bool serviceFramework = false);
    // The pages from the bottom to the top, by name.
    [[nodiscard]] QString stack() const;
    [[nodiscard]] LocalVideosPage *library() const { return m_controller->libraryPage(); }
    [[nodiscard]] PlayerPage *player() const { return m_controller->playerPage(); }
    [[nodiscard]] DetailsPage *details() const { return m_controller->detailsPage(); }
    // Identifiers of the videos whose details the store was asked for.
    [[nodiscard]] QStringList detailsAskedFor() const;
    [[nodiscard]] QString played() const;
    [[nodiscard]] NullMediaBackend *backend() const;
    // The first of those that stand in the window; null: none does.
    [[nodiscard]] toolkit::Banner *banner() const
    {
        return childOf<toolkit::Banner>(m_window.sceneManager()->root());
    }
    void tap(VideoInfo info) { Q_EMIT library()->showNowPlayingPage(info); }
    void look(QString address, int position = 0) { m_controller->processAndPlay(address, position); }
    // The player's timer, or the controller's, by name: its time is up.
    static void expire(QTimer *timer);
    void expect(const char *warning) { QTest::ignoreMessage(QtWarningMsg, warning); }

    FakeSparqlStore &m_store;
    toolkit::ApplicationWindow &m_window;
    FakeNotices m_notices;
    NullMediaBackend::Media m_media; // what every new player plays
    std::unique_ptr<ApplicationController> m_controller;
};

template <typename Test> int runControllerTest(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    toolkit::Theme::instance()->setReducedMotion(true);
    FakeThumbnailerClient::install();
    FakeSparqlStore store;
    toolkit::ApplicationWindow window;
    window.setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    QGuiApplication::setQuitOnLastWindowClosed(false);
    Test test(store, window);
    return QTest::qExec(&test, argc, argv);
}
