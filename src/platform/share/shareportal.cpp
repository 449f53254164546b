// SPDX-License-Identifier: GPL-3.0-or-later
#include "shareportal.h"

#include <QDBusMetaType>
#include <QGuiApplication>
#include <QWidget>

using namespace Qt::Literals::StringLiterals;

QString SharePortal::busName()
{
    return u"org.freedesktop.portal.Desktop"_s;
}

QString SharePortal::objectPath()
{
    return u"/org/freedesktop/portal/desktop"_s;
}

QString SharePortal::emailInterface()
{
    return u"org.freedesktop.portal.Email"_s;
}

QString SharePortal::openUriInterface()
{
    return u"org.freedesktop.portal.OpenURI"_s;
}

PortalRequest *SharePortal::composeEmail(const QString &window, const QString &subject, const QString &body,
                                         const QList<QDBusUnixFileDescriptor> &attachments,
                                         QObject *parent) const
{
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    QVariantMap options{{u"subject"_s, subject}};
    if (!body.isEmpty())
        options.insert(u"body"_s, body);
    if (!attachments.isEmpty())
        options.insert(u"attachment_fds"_s, QVariant::fromValue(attachments));
    return new PortalRequest(m_session, emailInterface(), u"ComposeEmail"_s, {window}, options, parent);
}

PortalRequest *SharePortal::openFile(const QString &window, const QDBusUnixFileDescriptor &file,
                                     QObject *parent) const
{
    return new PortalRequest(m_session, openUriInterface(), u"OpenFile"_s,
                             {window, QVariant::fromValue(file)}, {{u"ask"_s, true}, {u"writable"_s, false}},
                             parent);
}

PortalRequest *SharePortal::openAddress(const QString &window, const QString &address, QObject *parent) const
{
    return new PortalRequest(m_session, openUriInterface(), u"OpenURI"_s, {window, address},
                             {{u"ask"_s, true}}, parent);
}

QString windowHandle(const QWidget *window)
{
    if (window == nullptr || QGuiApplication::platformName() != "xcb"_L1)
        return {};
    return u"x11:%1"_s.arg(window->effectiveWinId(), 0, 16);
}
