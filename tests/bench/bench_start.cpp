// SPDX-License-Identifier: GPL-3.0-or-later
// From the start of the program to the first list of videos on the screen, with the store already running:
// medians of five starts each with 1,000 and with 10,000 videos.
#include "support/storepeercontrol.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Starts = 5;
constexpr int Patience = 60000; // ms

// Milliseconds from the spawn to the line that the program writes when the list was painted.
double start(const QString &program)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"KESTREL_STARTUP_LOG"_s, u"1"_s);
    process.setProcessEnvironment(environment);
    process.setReadChannel(QProcess::StandardError);
    QElapsedTimer timer;
    timer.start();
    process.start(program, {});
    while (timer.elapsed() < Patience) {
        if (!process.canReadLine() && !process.waitForReadyRead(Patience))
            break;
        while (process.canReadLine()) {
            if (!process.readLine().contains("first list painted"))
                continue;
            const double elapsed = double(timer.nsecsElapsed()) / 1e6;
            process.kill();
            process.waitForFinished();
            return elapsed;
        }
    }
    process.kill();
    process.waitForFinished();
    qFatal("no list was painted");
}

void measure(const QString &program, int videos)
{
    StorePeerControl peer;
    if (!peer.start())
        qFatal("the store service did not start");
    peer.fill(videos);
    start(program); // warm
    std::vector<double> times;
    for (int i = 0; i < Starts; ++i)
        times.push_back(start(program));
    std::sort(times.begin(), times.end());
    std::printf("start first list, %d videos %.0f ms\n", videos, times[times.size() / 2]);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QString program = QCoreApplication::applicationDirPath() + u"/kestrel"_s;
    measure(program, 1000);
    measure(program, 10000);
}
