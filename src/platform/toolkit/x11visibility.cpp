// SPDX-License-Identifier: GPL-3.0-or-later
#include "x11visibility.h"

#include <QGuiApplication>

#include <X11/Xlib.h>
#include <xcb/xproto.h>

namespace toolkit {

X11Visibility::X11Visibility(WId window, std::function<void()> changed)
    : m_window(window),
      m_changed(std::move(changed))
{
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr || x11->display() == nullptr)
        return;
    // The window system asks for no visibility events by itself.
    XWindowAttributes attributes;
    if (XGetWindowAttributes(x11->display(), window, &attributes) == 0)
        return;
    XSelectInput(x11->display(), window, attributes.your_event_mask | VisibilityChangeMask);
    qGuiApp->installNativeEventFilter(this);
}

X11Visibility::~X11Visibility() = default; // the filter takes itself out

bool X11Visibility::nativeEventFilter(const QByteArray &eventType, void *message, qintptr *)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto *event = static_cast<const xcb_generic_event_t *>(message);
    if ((event->response_type & 0x7f) != XCB_VISIBILITY_NOTIFY)
        return false;
    const auto *visibility = reinterpret_cast<const xcb_visibility_notify_event_t *>(event);
    if (visibility->window != m_window)
        return false;
    const bool obscured = visibility->state == XCB_VISIBILITY_FULLY_OBSCURED;
    if (obscured != m_obscured) {
        m_obscured = obscured;
        m_changed();
    }
    return false;
}

} // namespace toolkit
