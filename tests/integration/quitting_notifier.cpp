// SPDX-License-Identifier: GPL-3.0-or-later
// Publishes its argument and quits at once, as the program does when a call keeps it from playing.
#include <platform/system/usernotice.h>

#include <QCoreApplication>
#include <QTimer>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QTimer::singleShot(0, &application, [] {
        NotificationService::instance()->publishDeviceError(QCoreApplication::arguments().value(1));
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
