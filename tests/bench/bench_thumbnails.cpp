// SPDX-License-Identifier: GPL-3.0-or-later
// 24 clips of four seconds, half of them 1080p and half 720p, that have no thumbnail yet: the time until the
// real service, started for it, has reported the last one, beside ffmpegthumbnailer called for one file after
// the other.
#include "platform/thumbs/dbusthumbnailerclient.h"

#include "../support/testclips.h"

#include <QCoreApplication>
#include <QDBusInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QSize>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Clips = 24;
constexpr int Rounds = 3;
constexpr int MostMs = 120000;

QList<QUrl> makeClips(const QDir &folder)
{
    QStringList originals;
    for (const QSize size : {QSize(1920, 1080), QSize(1280, 720)}) {
        const QString path = folder.filePath(u"original-%1.mp4"_s.arg(size.height()));
        const QString error
            = TestClips::make(path,
                              {.width = size.width(),
                               .height = size.height(),
                               .seconds = 4,
                               .options = {u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"veryfast"_s}});
        if (!error.isEmpty())
            qFatal("%s", qPrintable(error));
        originals.append(path);
    }
    QList<QUrl> urls;
    for (int i = 0; i < Clips; ++i) {
        const QString path = folder.filePath(u"clip-%1.mp4"_s.arg(i));
        if (!QFile::copy(originals.at(i % originals.size()), path))
            qFatal("cannot copy a clip");
        urls.append(QUrl::fromLocalFile(path));
    }
    return urls;
}

void forgetThumbnails()
{
    QDir(QDir::homePath() + u"/.thumbnails"_s).removeRecursively();
}

// Ends the service, so that the next round starts it again.
void endService()
{
    QDBusInterface bus(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s, u"org.freedesktop.DBus"_s);
    const QDBusMessage pid = bus.call(u"GetConnectionUnixProcessID"_s, u"com.harrow.Kestrel.Thumbnailer"_s);
    if (pid.type() == QDBusMessage::ReplyMessage)
        QProcess::execute(u"kill"_s, {QString::number(pid.arguments().value(0).toUInt())});
    while (bus.call(u"NameHasOwner"_s, u"com.harrow.Kestrel.Thumbnailer"_s).arguments().value(0).toBool())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

double serviceSeconds(const QList<QUrl> &urls)
{
    forgetThumbnails();
    QElapsedTimer timer;
    timer.start();
    DBusThumbnailerClient client(QDBusConnection::sessionBus());
    QEventLoop loop;
    qsizetype done = 0;
    QObject::connect(&client, &ThumbnailerClient::thumbnail, &loop, [&] {
        if (++done == urls.size())
            loop.quit();
    });
    QObject::connect(&client, &ThumbnailerClient::error, &loop, [](const QString &message, const QUrl &url) {
        qFatal("%s: %s", qPrintable(url.toString()), qPrintable(message));
    });
    QTimer::singleShot(MostMs, &loop, [] { qFatal("no end of it"); });
    client.request(urls, {}, u"video-grid"_s);
    loop.exec();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

double peerSeconds(const QList<QUrl> &urls, const QDir &folder)
{
    QElapsedTimer timer;
    timer.start();
    for (const QUrl &url : urls) {
        const QStringList arguments = {u"-i"_s, url.toLocalFile(), u"-o"_s, folder.filePath(u"peer.jpeg"_s),
                                       u"-s"_s, u"960"_s,          u"-q"_s, u"8"_s};
        if (QProcess::execute(u"ffmpegthumbnailer"_s, arguments) != 0)
            qFatal("ffmpegthumbnailer failed");
    }
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (qEnvironmentVariableIsEmpty("KESTREL_THUMBNAILER_PROGRAM"))
        qputenv("KESTREL_THUMBNAILER_PROGRAM",
                (QCoreApplication::applicationDirPath() + u"/kestrel-thumbnailer"_s).toUtf8());
    const QTemporaryDir folder;
    const QList<QUrl> urls = makeClips(QDir(folder.path()));

    // The list of plug-ins is made once on a machine, as the peer's libraries are installed once: reported
    // apart.
    const double first = serviceSeconds(urls);
    endService();
    QList<double> ours;
    QList<double> peers;
    for (int round = 0; round < Rounds; ++round) {
        ours.append(serviceSeconds(urls));
        endService();
        peers.append(peerSeconds(urls, QDir(folder.path())));
    }
    std::printf("thumbnails %.3f s | ffmpegthumbnailer %.3f s | ratio %.2f\n", median(ours), median(peers),
                median(ours) / median(peers));
    std::fprintf(stderr, "the very first run on a machine: %.3f s\n", first);
    return 0;
}
