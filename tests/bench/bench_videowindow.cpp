// SPDX-License-Identifier: GPL-3.0-or-later
// bench_videowindow play CLIP WIDTHxHEIGHT: plays the clip to its end in a window of that size, prints its
// CPU seconds, the frames painted, and ends. bench_videowindow tap CLIP WIDTHxHEIGHT ROUNDS DELAY: prints for
// each round the ms from play() to the first frame painted; the first is played DELAY ms after the player is
// there.
#include "videobenchwindow.h"

#include <platform/media/mediabackend.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

#include <sys/resource.h>

using namespace Qt::Literals::StringLiterals;

namespace {

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Bench : public QObject
{
public:
    Bench(VideoWidget *video, toolkit::ApplicationWindow *window, const QString &uri)
        : m_video(video),
          m_window(window),
          m_uri(uri)
    {
    }

    void playToTheEnd()
    {
        connect(m_video->backend(), &MediaBackend::frameChanged, this, [this] { ++m_frames; });
        connect(m_video, &VideoWidget::endReached, this, [this] {
            QTextStream(stdout) << u"%1 %2\n"_s.arg(cpuSeconds(), 0, 'f', 2).arg(m_frames);
            QCoreApplication::quit();
        });
        m_video->play(m_uri, 0);
    }

    void tap(int rounds)
    {
        m_rounds = rounds;
        MediaBackend *backend = m_video->backend();
        connect(backend, &MediaBackend::frameChanged, this, [this] {
            if (!m_clock.isValid())
                return;
            m_window->viewport()->repaint();
            QTextStream(stdout) << double(m_clock.nsecsElapsed()) / 1e6 << '\n';
            m_clock.invalidate();
            m_video->stop();
        });
        connect(backend, &MediaBackend::stateChanged, this, [this](AvloRenderer::State state) {
            if (state == AvloRenderer::Stopped)
                nextTap();
        });
        nextTap();
    }

private:
    void nextTap()
    {
        if (m_rounds-- == 0) {
            QCoreApplication::quit();
            return;
        }
        m_video->reset();
        m_clock.start();
        m_video->play(m_uri, 0);
    }

    VideoWidget *m_video;
    toolkit::ApplicationWindow *m_window;
    QString m_uri;
    QElapsedTimer m_clock;
    int m_rounds = 0;
    int m_frames = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4)
        return 2;
    VideoBenchWindow window(arguments.at(3));
    Bench bench(window.video(), &window, QUrl::fromLocalFile(arguments.at(2)).toString());
    QObject::connect(window.video(), &VideoWidget::rendererReady, &bench, [&] {
        if (arguments.at(1) == "tap"_L1)
            QTimer::singleShot(arguments.value(5).toInt(), &bench,
                               [&] { bench.tap(arguments.value(4).toInt()); });
        else
            bench.playToTheEnd();
    });
    return QApplication::exec();
}
