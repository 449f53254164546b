// SPDX-License-Identifier: GPL-3.0-or-later
#include "componentcache.h"

#include "application.h"
#include "applicationwindow.h"

namespace toolkit {

Application *ComponentCache::application(int &argc, char **argv, const QString &identifier,
                                         ApplicationService *service)
{
    return new Application(argc, argv, identifier, service);
}

ApplicationWindow *ComponentCache::applicationWindow()
{
    return new ApplicationWindow;
}

} // namespace toolkit
