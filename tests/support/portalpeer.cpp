// SPDX-License-Identifier: GPL-3.0-or-later
// A desktop portal as a program that the session's bus can start: every e-mail is sent, every file is opened.
#include "fakeportal.h"

#include <QCoreApplication>

using namespace Qt::Literals::StringLiterals;

int main(int argc, char **argv)
{
    QCoreApplication program(argc, argv);
    // It goes with its bus.
    QDBusConnection::sessionBus().connect(QString(), u"/org/freedesktop/DBus/Local"_s,
                                          u"org.freedesktop.DBus.Local"_s, u"Disconnected"_s, &program,
                                          SLOT(quit()));
    FakePortal portal(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"));
    return portal.appear() ? QCoreApplication::exec() : 1;
}
