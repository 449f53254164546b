// SPDX-License-Identifier: GPL-3.0-or-later
// load [VIDEOS]: all rows of a library of 100,000 videos through the store layer into the model,
// beside a bare loop over the store library's cursor that looks at every cell. Both read from the same
// service process, over the same kind of connection. Prints the medians of seven runs each, taken in turn.
#include "support/storepeercontrol.h"
#include "barecursor.h"

#include "data/allvideosmodel.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int runs = 7;

// From the request, which a new model makes, to the model that stands filled.
int throughTheStoreLayer()
{
    const AllVideosModel model(nullptr);
    QEventLoop loop;
    QObject::connect(&model, &AllVideosModel::modelUpdated, &loop, &QEventLoop::quit);
    loop.exec();
    return model.rowCount();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double milliseconds(const std::function<int()> &work, int expectedRows)
{
    QElapsedTimer timer;
    timer.start();
    const int rows = work();
    const double elapsed = double(timer.nsecsElapsed()) / 1e6;
    if (rows != expectedRows)
        qFatal("%d rows instead of %d", rows, expectedRows);
    return elapsed;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(u"kestrel.*.info=false"_s);
    const int videos = argc > 1 ? QByteArray(argv[1]).toInt() : 100000;
    StorePeerControl peer;
    if (!peer.start())
        qFatal("the store service did not start");
    peer.fill(videos);

    const BareCursor bare;
    std::vector<double> layer;
    std::vector<double> loop;
    throughTheStoreLayer(); // both sides begin with a warm service
    for (int run = 0; run < runs; ++run) {
        loop.push_back(milliseconds([&] { return bare.run(); }, videos));
        layer.push_back(milliseconds([&] { return throughTheStoreLayer(); }, videos));
    }
    std::printf("load %.0f ms | bare cursor loop %.0f ms | ratio %.2f\n", median(layer), median(loop),
                median(layer) / median(loop));
    return 0;
}
