// SPDX-License-Identifier: GPL-3.0-or-later
#include "outputroute.h"

#include "videoroute.h"

#include <QGuiApplication>
#include <QScreen>

using namespace std::chrono_literals;

namespace {

// A compositor announces its screens before or after it has set the outputs; by then it is done with both.
constexpr auto SettleTime = 500ms;

} // namespace

OutputRoute::OutputRoute(const QString &sysRoot, QObject *parent) : QObject(parent), m_sysRoot(sysRoot)
{
    // One look for the many signals of one change.
    m_soon.setSingleShot(true);
    m_settled.setSingleShot(true);
    m_settled.setInterval(SettleTime);
    connect(&m_soon, &QTimer::timeout, this, &OutputRoute::look);
    connect(&m_settled, &QTimer::timeout, this, &OutputRoute::look);
    if (auto *application = qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        const auto follow = [this](QScreen *screen) {
            connect(screen, &QScreen::geometryChanged, this, &OutputRoute::lookSoon);
        };
        for (QScreen *screen : QGuiApplication::screens())
            follow(screen);
        connect(application, &QGuiApplication::screenAdded, this, follow);
        connect(application, &QGuiApplication::screenAdded, this, &OutputRoute::lookSoon);
        connect(application, &QGuiApplication::screenRemoved, this, &OutputRoute::lookSoon);
        connect(application, &QGuiApplication::primaryScreenChanged, this, &OutputRoute::lookSoon);
    }
    look();
}

void OutputRoute::lookSoon()
{
    m_soon.start();
    m_settled.start();
}

void OutputRoute::look()
{
    QList<ScreenArea> screens;
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        for (const QScreen *screen : QGuiApplication::screens())
            screens.append({screen->name(), screen->geometry()});
    }
    const QString route = videoRoute(screens, readDrmConnectors(m_sysRoot));
    if (std::exchange(m_route, route) != route)
        Q_EMIT changed();
}
