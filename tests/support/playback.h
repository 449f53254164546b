// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/gst/gstmediabackend.h>

#include <QElapsedTimer>
#include <QStringList>
#include <QTest>

#include <functional>

// One video in the real back end, and what happened to it. Many of them run side by side.
class Playback
{
public:
    explicit Playback(const QString &uri, uint start = 0)
    {
        backend.setOutput(QSize(160, 120), false, 0);
        QObject::connect(&backend, &MediaBackend::failed, &backend, [this](const AvloError &error) {
            code = error.code;
            message = error.message;
            log(QStringLiteral("error%1").arg(error.code));
        });
        QObject::connect(&backend, &MediaBackend::complained, &backend,
                         [this](const AvloError &error) { complaints.append(error.code); });
        QObject::connect(&backend, &MediaBackend::endReached, &backend,
                         [this] { log(QStringLiteral("end")); });
        QObject::connect(&backend, &MediaBackend::frameChanged, &backend, [this] { ++frames; });
        QObject::connect(&backend, &MediaBackend::bufferingChanged, &backend, [this](float percent) {
            if (percents.isEmpty() || !qFuzzyCompare(percents.last(), percent))
                percents.append(percent);
        });
        QObject::connect(&backend, &MediaBackend::stateChanged, &backend, [this](AvloRenderer::State state) {
            if (state == AvloRenderer::Playing)
                log(QStringLiteral("playing"));
        });
        m_clock.start();
        backend.play(uri, start);
    }

    [[nodiscard]] bool hasPlayed() const { return events.contains(QStringLiteral("playing")); }
    // Neither plays nor will.
    [[nodiscard]] bool isOver() const { return overAfter >= 0; }
    [[nodiscard]] bool waitUntilOver(int patience)
    {
        return QTest::qWaitFor([this] { return isOver(); }, patience);
    }
    [[nodiscard]] bool waitUntilPlaying(int patience)
    {
        return QTest::qWaitFor([this] { return backend.state() == AvloRenderer::Playing || isOver(); },
                               patience)
            && !isOver();
    }
    [[nodiscard]] QString story() const
    {
        return QStringLiteral("%1; %2 frames, %3 ms, %4 %5")
            .arg(events.join(u' '), QString::number(frames), QString::number(overAfter),
                 backend.uri().left(100), message.left(300));
    }

    GstMediaBackend backend;
    QStringList events; // "playing", "end", "error300"
    QList<float> percents;
    QList<int> complaints;
    QString message;
    int code = 0; // of the error
    int frames = 0;
    qint64 overAfter = -1; // ms; since play()

private:
    void log(const QString &event)
    {
        events.append(event);
        if (event != QStringLiteral("playing"))
            overAfter = m_clock.elapsed();
    }

    QElapsedTimer m_clock;
};
