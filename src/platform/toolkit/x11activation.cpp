// SPDX-License-Identifier: GPL-3.0-or-later
#include "x11activation.h"

#include <QGuiApplication>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <cstring>

namespace toolkit {

namespace {

Display *x11Display()
{
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 == nullptr ? nullptr : x11->display();
}

Atom atom(Display *display, const char *name)
{
    return XInternAtom(display, name, False);
}

bool isSupported(Display *display, Atom feature)
{
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char *data = nullptr;
    constexpr long longest = 4096;
    if (XGetWindowProperty(display, DefaultRootWindow(display), atom(display, "_NET_SUPPORTED"), 0, longest,
                           False, XA_ATOM, &type, &format, &count, &rest, &data)
            != Success
        || data == nullptr)
        return false;
    const Atom *const atoms = reinterpret_cast<Atom *>(data);
    const bool found = format == 32 && std::find(atoms, atoms + count, feature) != atoms + count;
    XFree(data);
    return found;
}

QByteArray quoted(QByteArray text)
{
    text.replace('\\', "\\\\").replace('"', "\\\"");
    return '"' + text + '"';
}

} // namespace

bool x11Activate(WId window, quint32 time)
{
    Display *const display = x11Display();
    if (display == nullptr)
        return false;
    const Atom message = atom(display, "_NET_ACTIVE_WINDOW");
    if (!isSupported(display, message))
        return false;
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = message;
    event.xclient.format = 32;
    event.xclient.data.l[0] = 1; // an application asks
    event.xclient.data.l[1] = long(time);
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureNotifyMask | SubstructureRedirectMask,
               &event);
    XFlush(display);
    return true;
}

// A text in pieces of twenty bytes, as the startup notification protocol has it.
void x11EndStartup(const QByteArray &startupId)
{
    Display *const display = x11Display();
    if (display == nullptr)
        return;
    const Window root = DefaultRootWindow(display);
    const Window sender = XCreateSimpleWindow(display, root, -10, -10, 1, 1, 0, 0, 0);
    QByteArray text = "remove: ID=" + quoted(startupId);
    text.append('\0');
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = sender;
    event.xclient.message_type = atom(display, "_NET_STARTUP_INFO_BEGIN");
    event.xclient.format = 8;
    constexpr qsizetype piece = sizeof event.xclient.data.b;
    for (qsizetype at = 0; at < text.size(); at += piece) {
        std::memset(event.xclient.data.b, 0, piece);
        std::memcpy(event.xclient.data.b, text.constData() + at, size_t(std::min(piece, text.size() - at)));
        XSendEvent(display, root, False, PropertyChangeMask, &event);
        event.xclient.message_type = atom(display, "_NET_STARTUP_INFO");
    }
    XDestroyWindow(display, sender);
    XFlush(display);
}

} // namespace toolkit
