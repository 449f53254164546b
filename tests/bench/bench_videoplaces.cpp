// SPDX-License-Identifier: GPL-3.0-or-later
// bench_videoplaces seek|scrub CLIP WIDTHxHEIGHT PLACE ...: plays the clip in a window of that size, pauses
// and goes to each of the places (ms), one after the other: to the exact frame, or to the key frame under a
// finger that drags. Prints for each the ms from the call to the frame painted. bench_videoplaces drag CLIP
// WIDTHxHEIGHT PLACE ...: the finger moves on to the next place 60 times a second, whatever is shown. Prints
// the ms from each call to the frame that is painted next.
#include "videobenchwindow.h"

#include <platform/media/mediabackend.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QList>
#include <QTextStream>
#include <QTimer>
#include <QUrl>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto FingerInterval = 16ms;

class Bench : public QObject
{
public:
    Bench(VideoBenchWindow *window, const QString &mode, const QStringList &places)
        : m_window(window),
          m_backend(window->video()->backend()),
          m_places(places),
          m_mode(mode)
    {
        m_clock.start();
        m_finger.setInterval(FingerInterval);
        m_finger.setTimerType(Qt::PreciseTimer);
        connect(&m_finger, &QTimer::timeout, this, [this] { next(); });
        connect(m_backend, &MediaBackend::frameChanged, this, [this] { painted(); });
        connect(m_backend, &MediaBackend::paused, this, [this] { begin(); });
    }

    void run(const QString &uri)
    {
        m_window->video()->play(uri, 0);
        m_backend->pause();
    }

private:
    void begin()
    {
        if (std::exchange(m_begun, true))
            return;
        if (m_mode != "seek"_L1)
            m_backend->beginScrub();
        if (m_mode == "drag"_L1)
            m_finger.start();
        else
            next();
    }

    void next()
    {
        if (m_places.isEmpty()) {
            m_finger.stop();
            if (m_calls.isEmpty())
                QCoreApplication::quit();
            return;
        }
        const std::chrono::milliseconds place(m_places.takeFirst().toInt());
        m_calls.append(m_clock.nsecsElapsed());
        m_backend->seek(place,
                        m_mode == "seek"_L1 ? MediaBackend::SeekPrecision::Exact
                                            : MediaBackend::SeekPrecision::KeyFrame);
    }

    void painted()
    {
        if (m_calls.isEmpty())
            return;
        m_window->viewport()->repaint();
        for (const qint64 call : std::as_const(m_calls))
            QTextStream(stdout) << double(m_clock.nsecsElapsed() - call) / 1e6 << '\n';
        m_calls.clear();
        if (!m_finger.isActive()) {
            // In a turn of its own, as a finger's move would come.
            QMetaObject::invokeMethod(
                this, [this] { next(); }, Qt::QueuedConnection);
        }
    }

    VideoBenchWindow *m_window;
    MediaBackend *m_backend;
    QStringList m_places;
    QString m_mode;
    QElapsedTimer m_clock;
    QTimer m_finger;
    QList<qint64> m_calls; // whose frame is not painted yet
    bool m_begun = false;
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 5)
        return 2;
    VideoBenchWindow window(arguments.at(3));
    std::unique_ptr<Bench> bench;
    QObject::connect(window.video(), &VideoWidget::rendererReady, &window, [&] {
        bench = std::make_unique<Bench>(&window, arguments.at(1), arguments.mid(4));
        bench->run(QUrl::fromLocalFile(arguments.at(2)).toString());
    });
    return QApplication::exec();
}
