// SPDX-License-Identifier: GPL-3.0-or-later
#include "windoweventlistener.h"

#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationwindow.h>

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>

#include <memory>
#include <optional>

// Last: their macros are common words.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <xcb/xproto.h>

namespace {

constexpr auto PropertyName = "_SORELKIT_QLB_OPEN";

Display *display()
{
    auto *x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    return x11 ? x11->display() : nullptr;
}

// The property's first item; nothing when the window does not have the property.
std::optional<unsigned long> propertyOfWindow(Atom property)
{
    const auto *window = toolkit::Application::activeApplicationWindow();
    if (!window)
        return {};
    Atom type = 0;
    int format = 0;
    unsigned long items = 0;
    unsigned long left = 0;
    unsigned char *data = nullptr;
    if (XGetWindowProperty(display(), window->effectiveWindowId(), property, 0, 1, 0, XA_CARDINAL, &type,
                           &format, &items, &left, &data)
        != 0)
        return {};
    const std::unique_ptr<unsigned char, int (*)(void *)> owner(data, XFree);
    if (!data || items == 0 || format != 32)
        return {};
    return *reinterpret_cast<const unsigned long *>(data); // what has 32 bits comes as a long
}

} // namespace

// Looks at every event of the window system and handles none.
class QuickLaunchBarFilter : public QAbstractNativeEventFilter
{
public:
    QuickLaunchBarFilter() : m_property(display() ? XInternAtom(display(), PropertyName, 0) : 0)
    {
        qGuiApp->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *) override
    {
        if (m_property == 0 || !WindowEventListener::s_current || eventType != "xcb_generic_event_t")
            return false;
        const auto *event = static_cast<const xcb_generic_event_t *>(message);
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
            return false;
        if (reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom != m_property)
            return false;
        const std::optional<unsigned long> value = propertyOfWindow(m_property);
        if (!value)
            Q_EMIT WindowEventListener::s_current->QLBOpens(false);
        else if (*value != 0)
            Q_EMIT WindowEventListener::s_current->QLBOpens(true);
        return false;
    }

private:
    Atom m_property;
};

WindowEventListener *WindowEventListener::s_current = nullptr;

WindowEventListener::WindowEventListener(QObject *parent) : QObject(parent)
{
    s_current = this;
    static QuickLaunchBarFilter filter; // once for the process
}

WindowEventListener::~WindowEventListener()
{
    if (s_current == this)
        s_current = nullptr;
}
