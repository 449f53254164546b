// SPDX-License-Identifier: GPL-3.0-or-later
#include "cache1adaptor.h"
#include "thumbnailcache.h"
#include "thumbnailer.h"
#include "thumbnailer1adaptor.h"
#include "thumbnailerlog.h"
#include "unmountwatch.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int IdleMs = 60000;

// Tests have less time.
int milliseconds(const char *variable, int usual)
{
    const int ms = qEnvironmentVariableIntValue(variable);
    return ms > 0 ? ms : usual;
}

MediaWorkerPool::Limits limits()
{
    MediaWorkerPool::Limits limits;
    limits.wallMs = milliseconds("KESTREL_THUMBNAILER_FILE_MS", limits.wallMs);
    return limits;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"kestrel-thumbnailer"_s);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCCritical(thumbnailerLog, "no session bus: %ls", qUtf16Printable(bus.lastError().message()));
        return 1;
    }

    Thumbnailer thumbnailer(limits());
    ThumbnailCache cache(thumbnailer);
    new Thumbnailer1Adaptor(&thumbnailer);
    new Cache1Adaptor(&cache);
    const UnmountWatch unmountWatch(thumbnailer);
    bus.registerObject(u"/org/freedesktop/thumbnails/Thumbnailer1"_s, &thumbnailer);
    bus.registerObject(u"/org/freedesktop/thumbnails/Cache1"_s, &cache);
    const QString name = u"com.harrow.Kestrel.Thumbnailer"_s;
    if (!bus.registerService(name)) {
        qCInfo(thumbnailerLog, "%ls is served already", qUtf16Printable(name));
        return 0;
    }

    QTimer idle;
    idle.setInterval(milliseconds("KESTREL_THUMBNAILER_IDLE_MS", IdleMs));
    idle.setSingleShot(true);
    QObject::connect(&thumbnailer, &Thumbnailer::idleChanged, &idle, [&idle](bool isIdle) {
        if (isIdle)
            idle.start();
        else
            idle.stop();
    });
    // The name goes first: a request that comes now starts a new service instead of being lost with this one.
    // One that was already on its way keeps this process until it is answered.
    QObject::connect(&idle, &QTimer::timeout, &thumbnailer, [&] {
        bus.unregisterService(name);
        QTimer::singleShot(0, &thumbnailer, [&] {
            if (thumbnailer.isIdle())
                QCoreApplication::quit();
        });
        QObject::connect(&thumbnailer, &Thumbnailer::idleChanged, &application, [](bool isIdle) {
            if (isIdle)
                QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
        });
    });
    idle.start();
    return QCoreApplication::exec();
}
