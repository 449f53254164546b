// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "playerfixture.h"

#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/scenemanager.h>
#include <player/navigationbarwidget.h>
#include <player/playeroverlay.h>
#include <player/playerpage.h>

#include <QKeyEvent>

struct PlayerPageProbe
{
    static QTimer *guard(PlayerPage &page) { return page.m_backGuardTimer; }
    static PlayerOverlay *overlay(PlayerPage &page) { return page.m_overlay; }
    static toolkit::Spinner *spinner(PlayerPage &page) { return page.m_bufferSpinner; }
    static toolkit::Label *label(PlayerPage &page) { return page.m_bufferStatusLabel; }
    static QTimer *dialogGuard(const PlayerPage &page) { return page.m_dialogGuard; }
    static FileManager *fileManager(const PlayerPage &page) { return page.m_fileManager.get(); }
    static EditManager *editManager(const PlayerPage &page) { return page.m_editManager; }
    static SaveAsManager *saveAsManager(const PlayerPage &page) { return page.m_saveAsManager; }
    static bool wasPlaying(PlayerPage &page) { return page.m_wasPlaying; }
    static AvloRenderer::State savedState(PlayerPage &page) { return page.m_savedState; }
    static bool shareOpened(PlayerPage &page) { return page.m_shareOpened; }
    static void setSavingDone(PlayerPage &page, bool done) { page.m_savingDone = done; }
    static void setWasPlaying(PlayerPage &page, bool was) { page.m_wasPlaying = was; }
    static void setDialogOpen(PlayerPage &page, bool open) { page.m_dialogOpen = open; }
    static void setShareOpened(PlayerPage &page, bool open) { page.m_shareOpened = open; }
    static void setSavedState(PlayerPage &page, AvloRenderer::State state) { page.m_savedState = state; }
};

// A page whose file systems are of the test's choice.
class StagedPlayerPage : public PlayerPage
{
public:
    using PlayerPage::PlayerPage;
    std::optional<quint32> type = 0xEF53;
    bool asksTheSystem = false;
    mutable QList<QByteArray> asked;

protected:
    std::optional<quint32> fileSystemType(const QByteArray &path) const override
    {
        asked.append(path);
        return asksTheSystem ? PlayerPage::fileSystemType(path) : type;
    }
};

// A player page on a window, over the player fixture. One window a process, one page a test.
class PlayerPageStage
{
protected:
    [[nodiscard]] bool openWindow()
    {
        m_window = std::make_unique<toolkit::ApplicationWindow>();
        m_window->setProfile(toolkit::ApplicationWindow::Profile::Desktop);
        m_window->showForProfile();
        return QTest::qWaitFor([this] { return m_window->isOnDisplay(); });
    }
    [[nodiscard]] bool showPage()
    {
        f.start();
        m_page = std::make_unique<StagedPlayerPage>(f.widget, f.controller.get());
        m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
        return QTest::qWaitFor(
            [this] { return f.widget->renderer() && m_page->isShown() && m_window->isOnDisplay(); });
    }
    void removePage()
    {
        m_window->closeMenu();
        f.controller.reset();
        m_page.reset(); // with the widget
        f.stop(false);
    }

    [[nodiscard]] bool play(const VideoInfo &video) { return f.playUntilItPlays(video); }
    void press(int key, QEvent::Type type = QEvent::KeyPress)
    {
        QKeyEvent event(type, key, Qt::NoModifier);
        m_page->keyEvent(&event);
    }
    void send(QEvent::Type type)
    {
        QEvent event(type);
        m_page->event(&event);
    }

    PlayerFixture f;
    std::unique_ptr<toolkit::ApplicationWindow> m_window;
    std::unique_ptr<StagedPlayerPage> m_page;
};
