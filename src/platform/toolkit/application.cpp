// SPDX-License-Identifier: GPL-3.0-or-later
#include "application.h"

#include "applicationservice.h"
#include "applicationwindow.h"
#include "toolkitlog.h"

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

Q_LOGGING_CATEGORY(lcToolkit, "kestrel.toolkit")

Application::Application(int &argc, char **argv, const QString &identifier, ApplicationService *service)
    : QApplication(argc, argv),
      m_identifier(identifier)
{
    setApplicationName(identifier);
    if (service == nullptr)
        return;
    // The window system finds the program's icon and name by its desktop file.
    setDesktopFileName(service->serviceName());
    m_redirected = !service->registerOrRedirect();
    // On Wayland it is used when the first window shows; elsewhere only children would see it.
    if (!platformName().startsWith("wayland"_L1))
        qunsetenv("XDG_ACTIVATION_TOKEN");
}

Application::~Application() = default;

ApplicationWindow *Application::activeApplicationWindow()
{
    return ApplicationWindow::current();
}

} // namespace toolkit
