// SPDX-License-Identifier: GPL-3.0-or-later
#include "nonetwork.h"
#include "poolmediareader.h"
#include "storeadaptor.h"
#include "storelog.h"
#include "storeservice.h"
#include "unmountwatch.h"

#include "platform/system/settingsmanager.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTimer>

#include <glib-unix.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_lockRetryMs = 100;
constexpr int s_lockRetries = 50;
constexpr int s_longestEndMs = 2000;
constexpr int s_unmountWatchDelayMs = 3000; // not while the first client waits

const QString &busName()
{
    static const QString name = u"com.harrow.Kestrel.Store"_s;
    return name;
}

QStringList givenRoots(const QCommandLineParser &parser, const QCommandLineOption &option)
{
    QStringList roots;
    const QStringList values = parser.values(option);
    for (const QString &value : values)
        roots.append(QDir::cleanPath(QDir::current().absoluteFilePath(value)));
    return roots;
}

QStringList standardRoots()
{
    QStringList roots;
    const QString videos = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    // The home folder itself stands for "none".
    if (QDir::cleanPath(videos) != QDir::homePath())
        roots.append(videos);
    const QString documents = u"/home/user/MyDocs"_s;
    if (QDir(documents).exists())
        roots.append(documents);
    return roots;
}

int handOver(const QStringList &roots)
{
    QDBusInterface running(busName(), u"/com/harrow/Kestrel/Store"_s, busName());
    for (const QString &root : roots) {
        const QDBusReply<void> reply = running.call(u"AddRoot"_s, root);
        if (!reply.isValid()) {
            qCWarning(lcStore, "the running service did not take %s: %s", qUtf8Printable(root),
                      qUtf8Printable(reply.error().message()));
            return 1;
        }
    }
    return 0;
}

// One process writes a database, also when two sessions of a user run. The lock ends with the process.
bool lockDatabase(const StorePaths &paths)
{
    QDir().mkpath(QFileInfo(paths.lock).path());
    const int lock = ::open(QFile::encodeName(paths.lock).constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    for (int i = 0; lock >= 0 && i < s_lockRetries; ++i) {
        if (::flock(lock, LOCK_EX | LOCK_NB) == 0)
            return true;
        // A predecessor may still be putting its things away.
        g_usleep(s_lockRetryMs * 1000);
    }
    qCWarning(lcStore, "another process of this user has the database");
    return false;
}

gboolean endCleanly(gpointer data)
{
    auto *service = static_cast<StoreService *>(data);
    QDBusConnection::sessionBus().unregisterService(busName());
    auto *poll = new QTimer(service);
    QObject::connect(poll, &QTimer::timeout, service, [service, poll] {
        if (!service->isIdle())
            return;
        poll->stop();
        service->end();
        QTimer::singleShot(Database::endMs, qApp, &QCoreApplication::quit);
    });
    poll->start(20);
    QTimer::singleShot(s_longestEndMs, qApp, &QCoreApplication::quit);
    return G_SOURCE_CONTINUE;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"kestrel-store"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTREL_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Keeps the metadata store of the videos in step with their files and serves it."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption rootOption(u"root"_s, u"Also look for videos below this folder."_s, u"folder"_s);
    parser.addOption(rootOption);
    const QCommandLineOption noIndexOption(
        u"no-desktop-index"_s, u"Read all files here, also those that the desktop's file index knows."_s);
    parser.addOption(noIndexOption);
    parser.process(application);
    const QStringList roots = givenRoots(parser, rootOption);

    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCWarning(lcStore, "no session bus: %s", qUtf8Printable(bus.lastError().message()));
        return 1;
    }
    if (!giveUpNetwork())
        qCWarning(lcStore, "the kernel does not let this process give up the network");

    const StorePaths paths = StorePaths::ofUser();
    StoreService service(paths, [] { return std::make_unique<PoolMediaReader>(); });
    if (!parser.isSet(noIndexOption) && SettingsManager::instance()->useDesktopIndex())
        service.followDesktopIndex();
    new StoreAdaptor(&service);
    bus.registerObject(u"/com/harrow/Kestrel/Store"_s, &service);
    if (!bus.registerService(busName()))
        return handOver(roots);
    bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                u"Disconnected"_s, &application, SLOT(quit()));
    g_unix_signal_add(SIGTERM, &endCleanly, &service);
    g_unix_signal_add(SIGINT, &endCleanly, &service);
    if (!lockDatabase(paths) || !service.start())
        return 1;
    for (const QString &root : standardRoots() + roots)
        service.addRoot(root);
    QTimer::singleShot(s_unmountWatchDelayMs, &service, [&service] {
        auto *watch = new UnmountWatch(&service);
        QObject::connect(watch, &UnmountWatch::aboutToUnmount, &service, &StoreService::releaseFolder);
    });
    return QCoreApplication::exec();
}
