// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/popup.h"
#include "platform/toolkit/scenemanager.h"
#include "platform/toolkit/theme.h"
#include "support/fakedevice.h"
#include "support/fakesparqldriver.h"
#include "support/sceneitems.h"

#include <QGraphicsWidget>
#include <QTest>

#include <memory>

// A page in a real window, over a store that answers as a test says.
class FileOpsFixture
{
public:
    FileOpsFixture()
    {
        toolkit::Theme::instance()->setReducedMotion(true);
        locale.installTrCatalog(QStringLiteral("video"));
        toolkit::Locale::setDefault(&locale);
        fakes::Usb::install();
    }
    ~FileOpsFixture()
    {
        page.reset();
        window.reset();
        fakes::Usb::remove();
        toolkit::Locale::setDefault(nullptr);
    }

    bool show()
    {
        window = std::make_unique<toolkit::ApplicationWindow>();
        window->setProfile(toolkit::ApplicationWindow::Profile::Desktop);
        page = std::make_unique<toolkit::ApplicationPage>();
        page->appear(window.get(), toolkit::Appearance::Immediate);
        window->showForProfile();
        return QTest::qWaitForWindowActive(window.get());
    }
    void hide()
    {
        page.reset();
        window.reset();
    }

    // What stands over the page, when it is of this kind.
    template <typename Kind> [[nodiscard]] Kind *popup() const
    {
        return window ? activePopup<Kind>(*window) : nullptr;
    }
    [[nodiscard]] int lastStatement() const { return int(store.statements().size()) - 1; }

    FakeSparqlStore store;
    toolkit::Locale locale;
    std::unique_ptr<toolkit::ApplicationWindow> window;
    std::unique_ptr<toolkit::ApplicationPage> page;
};

#define KESTREL_FILEOPS_TEST_MAIN(TestClass)                                                                 \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);                      \
        FileOpsFixture fixture;                                                                              \
        TestClass test(fixture);                                                                             \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
