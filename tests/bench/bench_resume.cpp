// SPDX-License-Identifier: GPL-3.0-or-later
// bench_resume [ROUNDS]: 200 (or ROUNDS) resumes at random places of clips in all pairs of codec and
// container of the tests, whose frames tell their numbers. Prints how many frames the first picture is away
// from the one that was left, at worst, and how long after play() the picture of the pause is painted.
#include "videobenchwindow.h"

#include <unit/media/exactclips.h>

#include <platform/media/mediabackend.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr int Rounds = 200;
constexpr int Patience = 20000; // ms
constexpr double StillLimit = 100; // ms
constexpr int FrameLimit = 1;

class Bench : public QObject
{
public:
    explicit Bench(VideoBenchWindow *window) : m_window(window), m_backend(window->video()->backend())
    {
        m_backend->setStillOnPause(true);
        connect(m_backend, &MediaBackend::frameChanged, this, [this] { painted(); });
        connect(m_backend, &MediaBackend::paused, &m_loop, [this] { m_loop.exit(0); });
        connect(&m_patience, &QTimer::timeout, &m_loop, [this] { m_loop.exit(1); });
        connect(m_backend, &MediaBackend::failed, &m_loop, [this] { m_loop.exit(1); });
    }

    // False: it failed, or nothing came.
    [[nodiscard]] bool resume(const QString &uri, std::chrono::microseconds place)
    {
        m_window->video()->play(uri, 0);
        m_backend->seek(place, MediaBackend::SeekPrecision::Exact);
        m_backend->pause();
        if (!wait())
            return false;
        const int left = shown();
        const auto second = uint(m_backend->position() / 1s);
        m_window->video()->stop();
        m_window->video()->reset();
        m_clock.start();
        m_window->video()->play(uri, second);
        m_backend->pause();
        if (!wait())
            return false;
        errors.append(qAbs(shown() - left));
        m_window->video()->stop();
        return true;
    }

    QList<int> errors; // frames
    QList<double> stills; // ms

private:
    [[nodiscard]] bool wait()
    {
        m_patience.start(Patience);
        const bool answered = m_loop.exec() == 0;
        m_patience.stop();
        return answered;
    }

    [[nodiscard]] int shown() const { return testclips::frameNumber(m_backend->frame().image); }

    void painted()
    {
        if (!m_clock.isValid())
            return;
        m_window->viewport()->repaint();
        stills.append(double(m_clock.nsecsElapsed()) / 1e6);
        m_clock.invalidate();
    }

    VideoBenchWindow *m_window;
    MediaBackend *m_backend;
    QEventLoop m_loop;
    QTimer m_patience;
    QElapsedTimer m_clock;
};

int report(Bench &bench, int rounds)
{
    std::sort(bench.errors.begin(), bench.errors.end());
    std::sort(bench.stills.begin(), bench.stills.end());
    if (bench.errors.size() < rounds || bench.stills.size() < rounds)
        return 1;
    const int worst = bench.errors.last();
    const auto exact = bench.errors.count(0);
    const double median = bench.stills.at(bench.stills.size() / 2);
    const double p95 = bench.stills.at(bench.stills.size() * 95 / 100);
    QTextStream out(stdout);
    const auto line = [&](const QString &name, double value, const char *unit, double limit) {
        out << QStringLiteral("%1 %2 %3 | limit %4 %3 | ratio %5\n")
                   .arg(name)
                   .arg(value, 0, 'f', 0)
                   .arg(QLatin1String(unit))
                   .arg(limit, 0, 'f', 0)
                   .arg(value / limit, 0, 'f', 2);
    };
    line(QStringLiteral("resume worst of %1, %2 of them exact,").arg(rounds).arg(exact), worst, "frames",
         FrameLimit);
    line(QStringLiteral("resume-still median"), median, "ms", StillLimit);
    line(QStringLiteral("resume-still p95"), p95, "ms", StillLimit);
    return worst <= FrameLimit && p95 <= StillLimit ? 0 : 1;
}

int run(VideoBenchWindow *window, int rounds)
{
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("source.mkv"));
    if (!exactclips::makeSource(source))
        return 2;
    QStringList clips;
    for (const exactclips::Pair &pair : exactclips::pairs()) {
        clips.append(folder.filePath(QString::fromLatin1(pair.file)));
        if (!exactclips::make(source, pair, clips.last()))
            return 2;
    }
    Bench bench(window);
    QRandomGenerator random(11);
    for (int round = 0; round < rounds; ++round) {
        const QString clip = clips.at(round % clips.size());
        if (!bench.resume(testclips::address(clip),
                          std::chrono::microseconds(random.bounded(4'000'000, 9'500'000)))) {
            QTextStream(stderr) << "bench_resume: nothing to see of " << clip << '\n';
            return 1;
        }
        if (bench.errors.last() > FrameLimit)
            QTextStream(stderr) << "bench_resume: " << bench.errors.last() << " frames in " << clip << '\n';
    }
    return report(bench, rounds);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    VideoBenchWindow window(QStringLiteral("1920x1080"));
    const int rounds = QCoreApplication::arguments().value(1, QString::number(Rounds)).toInt();
    QObject::connect(window.video(), &VideoWidget::rendererReady, &window, [&] {
        QMetaObject::invokeMethod(
            &window, [&] { QCoreApplication::exit(run(&window, rounds)); }, Qt::QueuedConnection);
    });
    return QApplication::exec();
}
