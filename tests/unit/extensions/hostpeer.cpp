// SPDX-License-Identifier: GPL-3.0-or-later
// A program with a page that has extensions: loads "tested.desktop", shows a video's details, paints them and
// runs until it is ended.
#include "hostingpage.h"

#include <QApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    ExtensionArea area(u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s);
    area.setInProcessFilter(QRegularExpression(u"tested.desktop"_s));
    HostingPage page(&area);
    area.init();
    page.show(ContentRecord(u"file:///home/user/Videos/a.mp4"_s, u"A film"_s, {}, {}));
    // What a window would ask for; whether one is exposed is the window manager's matter.
    const auto paint = [&page] {
        QImage picture(480, 854, QImage::Format_RGB32);
        QPainter painter(&picture);
        page.scene()->render(&painter);
    };
    QMetaObject::invokeMethod(&application, paint, Qt::QueuedConnection);
    if (application.arguments().contains(u"crash"_s))
        QMetaObject::invokeMethod(
            &application, [] { std::abort(); }, Qt::QueuedConnection);
    if (application.arguments().contains(u"quit"_s))
        QMetaObject::invokeMethod(
            &application, [] { QApplication::quit(); }, Qt::QueuedConnection);
    std::puts("runs");
    std::fflush(stdout);
    return QApplication::exec();
}
