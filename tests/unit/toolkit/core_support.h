// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/theme.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// A window of a profile that stands on the display, whatever the screen.
inline std::unique_ptr<toolkit::ApplicationWindow> shownWindow(toolkit::ApplicationWindow::Profile profile)
{
    auto window = std::make_unique<toolkit::ApplicationWindow>();
    window->setProfile(profile);
    window->showForProfile();
    if (!QTest::qWaitForWindowExposed(window.get())
        || !QTest::qWaitFor([&window] { return window->isOnDisplay(); }))
        qWarning("the window does not come to the display");
    return window;
}

inline void setReducedMotion(bool reduced)
{
    toolkit::Theme::instance()->setReducedMotion(reduced);
}

// Runs a test with a home of its own.
#define KESTREL_TOOLKIT_TEST_MAIN(TestClass)                                                                 \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        QTemporaryDir home;                                                                                  \
        qputenv("HOME", home.path().toUtf8());                                                               \
        qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toUtf8());                        \
        qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toUtf8());                            \
        qunsetenv("KESTREL_PROFILE");                                                                        \
        QApplication application(argc, argv);                                                                \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
