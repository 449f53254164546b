// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "portalrequest.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QList>
#include <QString>

class QWidget;

// What xdg-desktop-portal does for sharing. Each request is made and has to be started by the caller after it
// has connected to it; it is a child of `parent`.
class SharePortal
{
public:
    explicit SharePortal(const QDBusConnection &session) : m_session(session) { }

    [[nodiscard]] static QString busName();
    [[nodiscard]] static QString objectPath();
    [[nodiscard]] static QString emailInterface();
    [[nodiscard]] static QString openUriInterface();

    // `window`: what the portal names its parent window, see windowHandle().
    [[nodiscard]] PortalRequest *composeEmail(const QString &window, const QString &subject,
                                              const QString &body,
                                              const QList<QDBusUnixFileDescriptor> &attachments,
                                              QObject *parent) const;
    // The person chooses the program.
    [[nodiscard]] PortalRequest *openFile(const QString &window, const QDBusUnixFileDescriptor &file,
                                          QObject *parent) const;
    [[nodiscard]] PortalRequest *openAddress(const QString &window, const QString &address,
                                             QObject *parent) const;

private:
    QDBusConnection m_session;
};

// "x11:" and the hexadecimal window id on X11; empty elsewhere, which leaves the dialog without a parent.
[[nodiscard]] QString windowHandle(const QWidget *window);
