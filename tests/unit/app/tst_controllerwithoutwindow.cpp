// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/applicationcontroller.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationpage.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Without a window every step says so and does nothing else.
class ControllerWithoutWindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachStepWarns();
};

void ControllerWithoutWindowTest::eachStepWarns()
{
    ApplicationController controller(nullptr, true, {});
    const auto expect = [](const char *function) {
        QTest::ignoreMessage(
            QtWarningMsg,
            qPrintable(QString::fromLatin1(function) + u" Kestrel: Unable to get active window."_s));
    };
    expect("void ApplicationController::initObjects()");
    controller.initObjects();
    expect("void ApplicationController::raiseToTop()");
    controller.raiseToTop();
    expect("void ApplicationController::showMmcInfoPage()");
    controller.showMmcInfoPage();
    expect("void ApplicationController::hideMmcInfoPage()");
    controller.hideMmcInfoPage();
    toolkit::ApplicationPage page;
    expect("void ApplicationController::goToPage(ApplicationPage*)");
    controller.goToPage(&page);
    QVERIFY(controller.pageStack().isEmpty());
    // Nothing on the stack: no page is no page, whatever the window.
    QTest::ignoreMessage(
        QtWarningMsg,
        "void ApplicationController::goToPage(ApplicationPage*) Kestrel: Cannot go to page, toPage null.");
    controller.goToPage(nullptr);
    controller.showPlayerPage(); // no window, no player: nothing
    controller.showInfoBanner(u"message"_s);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    FakeThumbnailerClient::install();
    FakeSparqlStore store;
    ControllerWithoutWindowTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_controllerwithoutwindow.moc"
