// SPDX-License-Identifier: GPL-3.0-or-later
#include "compositoridlehold.h"

#include <QEvent>
#include <QGuiApplication>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <cstring>
#include <utility>

#include <wayland-client.h>

#include "idle-inhibit-unstable-v1.h"
extern "C" {
#include "idle-inhibit-unstable-v1.c"
}

using namespace Qt::Literals::StringLiterals;

namespace {

wl_display *compositor()
{
    const bool isWayland = qobject_cast<QGuiApplication *>(QCoreApplication::instance()) != nullptr
        && QGuiApplication::platformName().startsWith("wayland"_L1);
    if (!isWayland)
        return nullptr;
    return static_cast<wl_display *>(
        QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
}

wl_surface *surfaceOf(QWindow *window)
{
    if (window->handle() == nullptr || window->type() != Qt::Window || !window->isExposed())
        return nullptr;
    return static_cast<wl_surface *>(
        QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", window));
}

// A surface may lie where the one before it lay. 0: none.
uint32_t idOf(wl_surface *surface)
{
    return surface == nullptr ? 0 : wl_proxy_get_id(reinterpret_cast<wl_proxy *>(surface));
}

} // namespace

CompositorIdleHold::CompositorIdleHold(QObject *parent) : QObject(parent)
{
    wl_display *display = compositor();
    if (display == nullptr)
        return;
    static const wl_registry_listener listener{announced, withdrawn};
    m_registry = wl_display_get_registry(display);
    wl_registry_add_listener(m_registry, &listener, this);
}

CompositorIdleHold::~CompositorIdleHold()
{
    letGo();
    if (m_manager != nullptr)
        zwp_idle_inhibit_manager_v1_destroy(m_manager);
    if (m_registry != nullptr)
        wl_registry_destroy(m_registry);
}

void CompositorIdleHold::announced(void *self, wl_registry *registry, uint32_t name, const char *interface,
                                   uint32_t version)
{
    Q_UNUSED(version)
    auto *hold = static_cast<CompositorIdleHold *>(self);
    const wl_interface &wanted = zwp_idle_inhibit_manager_v1_interface;
    if (hold->m_manager != nullptr || std::strcmp(interface, wanted.name) != 0)
        return;
    hold->m_managerName = name;
    hold->m_manager
        = static_cast<zwp_idle_inhibit_manager_v1 *>(wl_registry_bind(registry, name, &wanted, 1));
    hold->take();
}

void CompositorIdleHold::withdrawn(void *self, wl_registry *registry, uint32_t name)
{
    Q_UNUSED(registry)
    auto *hold = static_cast<CompositorIdleHold *>(self);
    if (hold->m_manager == nullptr || hold->m_managerName != name)
        return;
    hold->letGo();
    zwp_idle_inhibit_manager_v1_destroy(std::exchange(hold->m_manager, nullptr));
}

void CompositorIdleHold::setWanted(bool wanted)
{
    if (m_registry == nullptr || std::exchange(m_wanted, wanted) == wanted)
        return;
    if (wanted) {
        QCoreApplication::instance()->installEventFilter(this);
        take();
    } else {
        QCoreApplication::instance()->removeEventFilter(this);
        letGo();
    }
}

// The inhibitor belongs to one surface, and windows change theirs: when they come back, when they get another
// scale.
bool CompositorIdleHold::eventFilter(QObject *watched, QEvent *event)
{
    const bool exposure = event->type() == QEvent::Expose;
    if (exposure || event->type() == QEvent::PlatformSurface) {
        auto *window = qobject_cast<QWindow *>(watched);
        if (window != nullptr && window == m_window && !(exposure && idOf(surfaceOf(window)) == m_surfaceId))
            letGo();
        if (window != nullptr && exposure)
            take();
    }
    return QObject::eventFilter(watched, event);
}

void CompositorIdleHold::take()
{
    if (!m_wanted || m_manager == nullptr || m_inhibitor != nullptr)
        return;
    const QWindowList windows = QGuiApplication::topLevelWindows();
    for (QWindow *window : windows) {
        if (wl_surface *surface = surfaceOf(window)) {
            m_window = window;
            m_surfaceId = idOf(surface);
            m_inhibitor = zwp_idle_inhibit_manager_v1_create_inhibitor(m_manager, surface);
            return;
        }
    }
}

void CompositorIdleHold::letGo()
{
    if (m_inhibitor != nullptr)
        zwp_idle_inhibitor_v1_destroy(std::exchange(m_inhibitor, nullptr));
    m_window.clear();
    m_surfaceId = 0;
}
