// SPDX-License-Identifier: GPL-3.0-or-later
// memory [VIDEOS]: what a library of 100,000 videos costs the program's process: the model's rows with a
// thumbnail path each, read from a store service over its connection, and the indexes of the look-ups.
// Resident memory after everything that was only needed on the way is given back.
#include <data/allvideosmodel.h>
#include <data/thumbnailpaths.h>
#include <data/videoconstants.h>
#include <data/videoinfo.h>

#include "support/storepeercontrol.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTimer>

#include <malloc.h>
#include <unistd.h>

#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

double residentMiB()
{
    malloc_trim(0);
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        qFatal("no memory figures");
    const double pages = statm.readAll().split(' ').value(1).toDouble();
    return pages * double(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

void loadInto(AllVideosModel &model)
{
    QEventLoop loop;
    QObject::connect(&model, &AllVideosModel::modelUpdated, &loop, &QEventLoop::quit);
    loop.exec();
    // The answer's own memory goes with its deferred deletion.
    QTimer::singleShot(0, &loop, &QEventLoop::quit);
    loop.exec();
}

void touch(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir home(u"/tmp/user-XXXXXX"_s); // about as long as a home is
    qputenv("HOME", home.path().toUtf8());
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"kestrel.*.info=false"_s);
    const int videos = argc > 1 ? QByteArray(argv[1]).toInt() : 100000;
    StorePeerControl peer;
    if (!peer.start())
        qFatal("the store service did not start");
    peer.fill(videos);

    // Every video has a thumbnail: the paths are among the longest texts of a row.
    QDir().mkpath(ThumbnailPaths::defaultFolder(THUMBNAIL_FLAVOR));
    for (int number = 0; number < videos; ++number) {
        const QString url = u"file:///home/user/MyDocs/clip%20"_s + QString::number(number) + u".mp4"_s;
        touch(ThumbnailPaths::defaultPath(url, THUMBNAIL_FLAVOR));
    }

    const double before = residentMiB();
    AllVideosModel model(nullptr);
    loadInto(model);
    if (model.rowCount() != videos)
        qFatal("%d rows instead of %d", model.rowCount(), videos);
    // Builds every index.
    const QString last = model.text(videos - 1, VideoColumn::Urn);
    if (model.urnForUrl(model.urlForUrn(last)) != last
        || model.text(0, VideoColumn::DefaultThumbnail).isEmpty())
        qFatal("the model is not as it should be");
    model.videosDeleted({-1});
    std::printf("memory %.0f MiB\n", residentMiB() - before);
    return 0;
}
