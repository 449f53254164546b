// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace toolkit {

class Application;
class ApplicationService;
class ApplicationWindow;

// Hands out the application and the window, so that a process that was started ahead of its use could keep
// them ready. The caller owns what it gets.
class ComponentCache
{
public:
    [[nodiscard]] static Application *application(int &argc, char **argv, const QString &identifier,
                                                  ApplicationService *service);
    [[nodiscard]] static ApplicationWindow *applicationWindow();
};

} // namespace toolkit
